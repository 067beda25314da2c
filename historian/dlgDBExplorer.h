#pragma once
// CdlgDBExplorer: the "OPC HDA Database Explorer" frame window. It lists
// every item archived in the historian database with the span and number of
// its values, and lets the user refresh the list, delete all values, delete
// the values of the selected items within a time period (the time period
// dialog), and open the historical data window for one item. Toolbar and
// right-click menu carry the same commands; the list sorts by a clicked
// column. A filter box above the list narrows it to the matching item IDs
// (Ctrl+F moves there); refresh, sort, selection, copy and delete work on the
// rows shown.
//
// The window is created on demand (Create) and may be closed and created
// again; the object lives as long as its owner.
#include <windows.h>

#include <functional>
#include <string>

#include "common/Window.h"
#include "common/ui/FrameBars.h"
#include "common/ui/ReportList.h"
#include "historian/DBExplorerFilterBar.h"
#include "historian/DBExplorerRows.h"
#include "historian/DeletionJournal.h"

class CdlgTimePeriod;

namespace CL {
class CHistorian;
}

class CdlgDBExplorer : public CL::CWindow {
public:
    explicit CdlgDBExplorer(CL::CHistorian& historian);

    // The product name the title starts with ("<name> OPC HDA Database Explorer").
    void SetProductName(const std::wstring& name) { m_productName = name; }
    // Runs the about box for the "About" command (nothing when unset).
    std::function<void(HWND owner)> onAbout;
    // Opens the change history over the explorer (its menu's "Change History...").
    std::function<void(HWND owner)> onChangeHistory;

    // Creates the window (hidden; the caller shows it). Returns its HWND or NULL.
    HWND Create();

    std::wstring Title() const;
    const CL::CDBExplorerRows& Rows() const { return m_rows; }
    const CL::CReportList& List() const { return m_list; }
    const CL::CFrameBars& Bars() const { return m_bars; }
    CDBExplorerFilterBar& FilterBar() { return m_filterBar; }
    // "Cancel" at the right end of the status bar, shown only while long
    // work (an export) runs.
    HWND CancelButton() const { return m_cancel; }

    // The window's keys before they are dispatched (the program's message
    // loop calls it): Ctrl+F and Alt+L to the filter box, and the filter
    // box's Enter, Down, Esc and Tab. Returns true when the message was used.
    bool PreTranslateMessage(MSG& msg);

protected:
    const wchar_t* ClassName() const override { return L"MorvaneDBExplorer"; }
    void PrepareClass(WNDCLASSEXW& wc) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LRESULT OnCreate();
    void OnSize();
    void CreateCancelButton();
    void PlaceCancelButton();
    bool OnNotify(const NMHDR* header, LRESULT* result);
    void OnCommand(WORD id);
    void OnRefresh();
    void OnDeleteAll();
    void OnChangeHistory();
    void OnDelete();
    void OnShowData();
    void OnAbout();
    LRESULT OnColumnClick(const NMHDR* header);
    void OnLVRClick(POINT screen);
    // Where the right-click menu opens for a WM_CONTEXTMENU position.
    POINT ContextMenuPoint(LPARAM lParam) const;
    void OnSysColorChange();
    void OnGetInfoTip(NMLVGETINFOTIPW* tip) const;
    void OnListKey(WORD key);
    void OnFilterChanged(const std::wstring& text);
    void OnExport();
    // Reads and writes every value of the items within the period; false
    // when the user cancelled (nothing written then).
    bool ExportItems(const std::vector<std::wstring>& itemIds, const CdlgTimePeriod& period, const std::wstring& path,
                     int filterIndex, size_t& valueCount);
    void OnFind();
    void OnCopy();
    void OnSelectAll();
    bool OnFilterKey(const MSG& msg);
    void ShowCount();

    void Refresh();
    // The deletion of every item as it stands before Delete all.
    CL::CDeletion DeletionOfAll() const;
    // Records a deletion in the change journal with the counts after it.
    void JournalDeleted(CL::CDeletion deletion);
    // Source rows of the selected lines; shows "Nothing is selected" and
    // gives none when there are none.
    std::vector<size_t> SelectionOrSay();
    bool Ask(const wchar_t* question);

    CL::CHistorian& m_historian;
    std::wstring m_productName = L"Varnel";
    CL::CFrameBars m_bars;
    CL::CReportList m_list;
    CDBExplorerFilterBar m_filterBar;
    CL::CDBExplorerRows m_rows;
    bool m_refreshed = false;   // the last refresh read the summary
    HWND m_cancel = nullptr;   // a child of the status bar, destroyed with it
};
