#include "addressspace/dlgFind.h"

#include "addressspace/ItemRows.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

CdlgFind::CdlgFind(const CAddressSpaceSearch& search) : m_search(search) {}

INT_PTR CdlgFind::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_FIND);
}

std::wstring CdlgFind::CountText(size_t count, bool empty)
{
    if (empty)
        return L"Type part of a name or path, or a pattern with * and ?.";
    if (count == 0)
        return L"No branch or item matches.";
    return CL::Format(L"%zu match(es):", count);
}

BOOL CdlgFind::OnInitDialog()
{
    Log(3, "CdlgFind::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        m_list.Attach(GetDlgItem(IDC_FIND_RESULTS));
        // The list is spoken with the count of matches above it.
        CL::CAccessibleName::SetLabel(m_list, GetDlgItem(IDC_FIND_COUNT), L"Matches");
        m_list.SetColumns({{L"Path", 260}, {L"Data type", 110}, {L"Value", 120}});
        m_list.SetRows(this);
        m_anchors.Add(IDC_FIND_TEXT, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_FIND_COUNT, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_FIND_RESULTS, CL::CDialogAnchors::kStretchX | CL::CDialogAnchors::kStretchY);
        m_anchors.Add(IDOK, CL::CDialogAnchors::kRight | CL::CDialogAnchors::kBottom);
        m_anchors.Add(IDCANCEL, CL::CDialogAnchors::kRight | CL::CDialogAnchors::kBottom);
        m_anchors.Capture(Hwnd());
        // Setting the text runs the first search through EN_CHANGE.
        ::SetDlgItemTextW(Hwnd(), IDC_FIND_TEXT, query.c_str());
        Search();
        ::SendDlgItemMessageW(Hwnd(), IDC_FIND_TEXT, EM_SETSEL, 0, -1);
    });
    return TRUE;
}

void CdlgFind::Search()
{
    query = CL::WindowText(GetDlgItem(IDC_FIND_TEXT));
    matches = m_search.Find(query);
    m_list.Reset(true);
    ::SetDlgItemTextW(Hwnd(), IDC_FIND_COUNT, CountText(matches.size(), query.empty()).c_str());
    ::EnableWindow(GetDlgItem(IDOK), !matches.empty());
}

void CdlgFind::Choose(size_t row)
{
    chosen = row;
    EndDialog(IDOK);
}

bool CdlgFind::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    switch (id) {
    case IDC_FIND_TEXT:
        if (code == EN_CHANGE) {
            Log(3, "CdlgFind::OnFindTextChange" + MV_POS());
            CL::RunReported([this] { Search(); });
        }
        return true;
    case IDOK:
        Log(3, "CdlgFind::OnGoTo" + MV_POS());
        CL::RunReported([this] {
            if (matches.empty())
                return;
            const std::vector<size_t> selected = m_list.SelectedRows();
            Choose(selected.empty() ? m_list.SourceRowAt(0) : selected.front());
        });
        return true;
    case IDCANCEL:
        EndDialog(IDCANCEL);
        return true;
    default:
        return false;
    }
}

INT_PTR CdlgFind::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_anchors.OnMessage(message, lParam))
        return TRUE;
    switch (message) {
    case WM_NOTIFY: {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        LRESULT result = 0;
        if (m_list.OnNotify(header, &result)) {
            ::SetWindowLongPtrW(Hwnd(), DWLP_MSGRESULT, result);
            return TRUE;
        }
        if (header->idFrom == IDC_FIND_RESULTS && header->code == NM_CLICK) {
            const int line = reinterpret_cast<NMITEMACTIVATE*>(header)->iItem;
            if (line >= 0) {
                Log(3, "CdlgFind::OnResultClick" + MV_POS());
                CL::RunReported([this, line] { Choose(m_list.SourceRowAt(static_cast<size_t>(line))); });
            }
            return TRUE;
        }
        return FALSE;
    }
    case WM_SYSCOLORCHANGE:
        m_list.OnSysColorChange();
        return FALSE;
    default:
        return CDialog::DialogProc(message, wParam, lParam);
    }
}

std::wstring CdlgFind::CellText(size_t row, int column) const
{
    const CAddressSpaceSearch::Entry& entry = m_search.At(matches.at(row));
    if (column == 0)
        return entry.path;
    if (!entry.item)
        return column == 1 ? L"(branch)" : L"";
    const auto cells = CItemRows::Cells(*entry.item);
    return column == 1 ? cells[CItemRows::kDataType] : cells[CItemRows::kCurrentValue];
}
