#pragma once
// CdlgHistData: the modal dialog "Historical data" that shows the archived
// values of one item within a time period ("Show data") and saves them to
// an XML file ("Save data..."). The opener sets the item ID and, when it
// knows them, the initial From and To (local time); a bound of 0 is not
// given: From becomes an hour ago and To now.
//
// Reading: From and To + one second (the last second shown is included)
// are converted from local time to UTC and passed to the historian's range
// read with the two check boxes as the bound flags and the "Retrieve max"
// number as the maximum count (0: no limit).
//
// Beyond that: when a read stopped at the maximum, the window says where the
// values go on ("More values follow after <time>") and "Next" shows the next
// maximum-count values after the last one shown. "Save data..." writes XML
// or CSV (by the file type or the extension typed). Ctrl+C and the list's
// right-click menu copy the selected rows as tab-separated text, Ctrl+A
// selects all. Reads and saves that run long show their progress in the
// status line and stop on Esc or "Cancel".
#include <windows.h>

#include <memory>
#include <string>

#include "common/Window.h"
#include "common/historian/HistorianValues.h"
#include "common/ui/DialogAnchors.h"
#include "common/ui/ReportList.h"
#include "common/ui/SplitBar.h"
#include "common/ui/WorkProgress.h"
#include "historian/HistDataRows.h"
#include "historian/TrendChart.h"

namespace CL {
class CHistorian;
}

class CdlgHistData : public CL::CDialog {
public:
    explicit CdlgHistData(CL::CHistorian& historian);

    std::wstring m_itemId;
    double m_from = 0.0;            // OLE date, local time; 0: an hour ago
    double m_to = 0.0;              // OLE date, local time; 0: now
    int m_useFrom = BST_CHECKED;    // check box states; outside 0..2 taken as 0
    int m_useTo = BST_CHECKED;
    unsigned m_maxCount = 1000;     // 0: no limit

    INT_PTR DoModal(HWND owner);

    // The rows the list shows (for the window's users and tests).
    const CL::CHistDataRows& Rows() const { return m_rows; }
    const CL::CReportList& List() const { return m_list; }
    // The trend chart of the values below the list.
    CL::CTrendChart& Chart() { return m_chart; }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void OnBnClickedBtnRefresh();
    void OnClickedOpenFile();
    void OnBnClickedChkFrom();
    void OnBnClickedChkTo();
    void OnBnClickedChkChart();
    void OnBnClickedBtnNext();
    void OnCopy();
    void OnSelectAll();
    void OnListKey(WORD key);
    void OnLVRClick(POINT screen);
    LRESULT OnColumnClick(const NMHDR* header);
    void OnSysColorChange();
    void OnDpiChanged() override;
    bool OnNotify(const NMHDR* header, LRESULT* result);

    void InitControls();
    void PresetBound(int checkId, int pickerId, int state, DATE date);
    void SyncPicker(int checkId, int pickerId);
    // Places the list and, when shown, the bar and the chart below it in
    // the list's anchored area: the chart keeps its height as the window is
    // resized (the list takes the difference) until the bar is dragged.
    void ArrangeChart();
    void OnSplitBarDrag(int top);
    // Reads the controls into the dialog's state and the item's values
    // within them from the historian; stoppedEarly when the read failed
    // part way (what was read before is kept).
    CL::CHistorianValues Read(bool& stoppedEarly);
    // Reads the controls into the dialog's state.
    void ReadControls();
    // Shows the values read (rows, chart, status and what follows them).
    void ShowValues(const std::shared_ptr<const CL::CHistorianValues>& values, bool more);
    void ClearValues();
    // The values after the last one shown, at most the maximum count;
    // more tells whether yet more follow.
    std::shared_ptr<const CL::CHistorianValues> ReadAfterShown(CL::CWorkProgress& progress, bool& more);
    // Progress of a read in the status line, Esc and "Cancel" to stop it.
    std::unique_ptr<CL::CWorkProgress> StartProgress();
    void SetStatus(const std::wstring& text);
    // The save-file dialog; empty when the user cancels.
    std::wstring AskExportFile(int* filterIndex) const;

    CL::CHistorian& m_historian;
    CL::CReportList m_list;
    CL::CHistDataRows m_rows;
    std::shared_ptr<const CL::CHistorianValues> m_shown;   // the values the list shows
    size_t m_sameTimeBefore = 0;   // values at the first shown time on pages before
    CL::CTrendChart m_chart;
    CL::CSplitBar m_splitBar;
    int m_chartHeight = 0;   // pixels; 0: not yet placed
    CL::CDialogAnchors m_anchors;
};

// Runs the historical data window for one item, with From an hour ago and To
// now (the caller has made sure that the database can be opened).
void RunHistoricalData(HWND owner, CL::CHistorian& historian, const std::wstring& itemId);

// Opens the historical data window for one item, with From an hour ago and
// To now, after checking that the historian database can be opened; when it
// cannot, shows "The HDA database is not accessible." (caption "OPC HDA
// Database Explorer") instead. The address space editor's entry point.
void ShowHistoricalData(HWND owner, CL::CHistorian& historian, const std::wstring& itemId);
