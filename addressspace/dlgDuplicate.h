#pragma once
// CdlgDuplicate: Edit, Duplicate... asks how many copies of the item to
// make (1 to 10,000) and shows the names they will get.
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "common/Window.h"

class CdlgDuplicate : public CL::CDialog {
public:
    // The names that `count` copies get (shown as a preview).
    using Namer = std::function<std::vector<std::wstring>(size_t count)>;

    CdlgDuplicate(std::wstring itemName, Namer namer);

    // In and out (IDOK): the number of copies.
    size_t count = 1;

    INT_PTR DoModal(HWND owner);

    // The preview line for these names.
    static std::wstring Preview(const std::vector<std::wstring>& names);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    // The typed number, or 0 when it is not 1 to 10,000.
    size_t TypedCount() const;
    void UpdatePreview();

    std::wstring m_itemName;
    Namer m_namer;
};
