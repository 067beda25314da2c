#pragma once
// CDBExplorerFilterBar: the bar above the explorer's list with the filter
// text box ("Filter:"), a child dialog from the template
// IDD_DBEXPLORER_FILTER. Each change of the text is passed to onChanged; the
// text box stretches with the bar.
#include <windows.h>

#include <functional>
#include <string>

#include "common/Window.h"

class CDBExplorerFilterBar : public CL::CDialog {
public:
    // Creates the bar as a child of the frame; NULL on failure.
    HWND Create(HWND frame);

    HWND Edit() const;
    std::wstring Text() const;
    void SetText(const std::wstring& text);
    // The bar's height in pixels (its template's height).
    int Height() const { return m_height; }
    // Moves the text box into place for the keyboard: focused, text selected.
    void Focus();

    std::function<void(const std::wstring&)> onChanged;

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void StretchEdit(int width);

    int m_height = 0;
    int m_editRightMargin = 0;
};
