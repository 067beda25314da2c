#pragma once
// CdlgFind: Edit, Find... of the address space editor. The user types part
// of a name or path, or a pattern with '*' and '?'; the matches over the
// whole address space are listed with path, data type and value while the
// user types. A click on a match, or "Go to" (Enter: the selected match, or
// else the first), closes the dialog with that match chosen.
#include <windows.h>

#include <string>
#include <vector>

#include "addressspace/AddressSpaceSearch.h"
#include "common/Window.h"
#include "common/ui/DialogAnchors.h"
#include "common/ui/ReportList.h"

class CdlgFind : public CL::CDialog, private CL::IReportRows {
public:
    explicit CdlgFind(const CAddressSpaceSearch& search);

    // In: the text shown first. Out (IDOK): the text, its matches (indices
    // of the search's entries) and the position of the chosen one in them.
    std::wstring query;
    std::vector<size_t> matches;
    size_t chosen = 0;

    // IDOK (a match chosen) or IDCANCEL.
    INT_PTR DoModal(HWND owner);

    // The line above the list for a number of matches.
    static std::wstring CountText(size_t count, bool empty);

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    size_t RowCount() const override { return matches.size(); }
    std::wstring CellText(size_t row, int column) const override;

    void Search();
    void Choose(size_t row);

    const CAddressSpaceSearch& m_search;
    CL::CReportList m_list;
    CL::CDialogAnchors m_anchors;
};
