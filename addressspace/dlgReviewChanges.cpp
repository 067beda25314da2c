#include "addressspace/dlgReviewChanges.h"

#include <commctrl.h>
#include <commdlg.h>

#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceFiles.h"
#include "addressspace/ReplaceModelCommand.h"
#include "addressspace/RevertDifferences.h"
#include "common/Csv.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ReplacingFile.h"
#include "common/Text.h"
#include "common/ui/ClipboardText.h"
#include "common/ui/FileDialog.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

namespace {

const wchar_t kCsvFilter[] = L"CSV files (*.csv)\0*.csv\0All files (*.*)\0*.*\0";

std::wstring FileNameOf(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

} // namespace

CdlgReviewChanges::CdlgReviewChanges(CAddressSpaceDocument& document, ReviewServices services)
    : m_document(&document), m_services(std::move(services))
{
}

CdlgReviewChanges::CdlgReviewChanges(ModelPtr before, std::wstring beforeLabel, ModelPtr after,
                                     std::wstring afterLabel, ReviewServices services)
    : m_services(std::move(services)), m_source(Source::Fixed), m_before(std::move(before)),
      m_beforeLabel(std::move(beforeLabel)), m_after(std::move(after)), m_afterLabel(std::move(afterLabel))
{
    m_services.save = nullptr;
    m_services.serverNow = nullptr;
}

void CdlgReviewChanges::StartWithFile(std::wstring path)
{
    m_filePath = std::move(path);
    m_source = Source::File;
}

void CdlgReviewChanges::CompareEditorWith(ModelPtr before, std::wstring label)
{
    m_given = std::move(before);
    m_givenLabel = std::move(label);
    m_source = Source::Given;
}

INT_PTR CdlgReviewChanges::DoModal(HWND owner)
{
    return CDialog::DoModal(owner, IDD_REVIEW_CHANGES);
}

HWND CdlgReviewChanges::Create(HWND owner)
{
    return CDialog::Create(owner, IDD_REVIEW_CHANGES);
}

CdlgReviewChanges::ModelPtr CdlgReviewChanges::After() const
{
    return Editing() ? m_document->Model() : m_after;
}

BOOL CdlgReviewChanges::OnInitDialog()
{
    Log(3, "CdlgReviewChanges::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        m_list.Attach(GetDlgItem(IDC_REVIEW_LIST));
        m_list.SetColumns(CReviewRows::Columns());
        m_list.SetRows(&m_rows);
        ::SetDlgItemTextW(Hwnd(), IDC_REVIEW_FILTER, m_services.filter.c_str());
        const bool editing = Editing();
        ::ShowWindow(GetDlgItem(IDC_REVIEW_FILE), editing ? SW_SHOW : SW_HIDE);
        ::ShowWindow(GetDlgItem(IDC_REVIEW_REVERT), editing ? SW_SHOW : SW_HIDE);
        ::ShowWindow(GetDlgItem(IDC_REVIEW_SAVE), editing && m_services.save ? SW_SHOW : SW_HIDE);
        m_anchors.Add(IDC_REVIEW_SOURCE, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_REVIEW_FILE, CL::CDialogAnchors::kRight);
        m_anchors.Add(IDC_REVIEW_FILTER, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_REVIEW_SUMMARY, CL::CDialogAnchors::kStretchX);
        m_anchors.Add(IDC_REVIEW_LIST, CL::CDialogAnchors::kStretchX | CL::CDialogAnchors::kStretchY);
        m_anchors.Add(IDC_REVIEW_IMPACT, CL::CDialogAnchors::kStretchX | CL::CDialogAnchors::kBottom);
        for (int id : {IDC_REVIEW_REVERT, IDC_REVIEW_COPY, IDC_REVIEW_EXPORT})
            m_anchors.Add(id, CL::CDialogAnchors::kBottom);
        for (int id : {IDC_REVIEW_SAVE, IDCANCEL})
            m_anchors.Add(id, CL::CDialogAnchors::kRight | CL::CDialogAnchors::kBottom);
        m_anchors.Capture(Hwnd());
        Source start = m_source;
        if (start == Source::File && !m_filePath.empty()) {
            if (!ShowFile(m_filePath))
                start = Source::MyChanges;
            else
                start = Source::File;
        }
        if (start != Source::File && !ShowSource(start))
            ShowSource(Source::MyChanges);
    });
    return TRUE;
}

void CdlgReviewChanges::FillSourceCombo()
{
    m_filling = true;
    const HWND combo = GetDlgItem(IDC_REVIEW_SOURCE);
    ::SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    auto add = [&](const std::wstring& text, Source source) {
        const LRESULT at = ::SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        ::SendMessageW(combo, CB_SETITEMDATA, static_cast<WPARAM>(at), static_cast<LPARAM>(source));
        if (source == m_source)
            ::SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(at), 0);
    };
    if (!Editing()) {
        add(m_beforeLabel + L" \x2192 " + m_afterLabel, Source::Fixed);
        ::EnableWindow(combo, FALSE);
    } else {
        add(kMyChanges, Source::MyChanges);
        if (m_services.serverNow)
            add(kServerNow, Source::ServerNow);
        if (m_file)
            add(L"File: " + FileNameOf(m_filePath), Source::File);
        if (m_given)
            add(m_givenLabel, Source::Given);
    }
    m_filling = false;
}

bool CdlgReviewChanges::ShowSource(Source source)
{
    ModelPtr before;
    std::wstring label;
    switch (source) {
    case Source::Fixed:
        before = m_before;
        label = m_beforeLabel;
        break;
    case Source::MyChanges:
        if (!Editing())
            return false;
        before = m_document->Baseline();
        label = L"the address space as last loaded or saved";
        break;
    case Source::ServerNow: {
        if (!Editing() || !m_services.serverNow)
            return false;
        CL::CWaitCursor wait;
        before = m_services.serverNow();
        label = L"the server now";
        break;
    }
    case Source::File:
        before = m_file;
        label = FileNameOf(m_filePath);
        break;
    case Source::Given:
        before = m_given;
        label = m_givenLabel;
        break;
    }
    if (!before) {
        FillSourceCombo();   // the previous choice stays selected
        return false;
    }
    m_source = source;
    m_before = std::move(before);
    m_beforeLabel = std::move(label);
    FillSourceCombo();
    Recompute();
    return true;
}

bool CdlgReviewChanges::ShowFile(const std::wstring& path)
{
    ModelPtr file;
    {
        CL::CWaitCursor wait;
        file = CL::LoadAddressSpaceFile(path);
    }
    m_filePath = path;
    m_file = std::move(file);
    return ShowSource(Source::File);
}

void CdlgReviewChanges::LoadHistorian(const AddressSpaceDifferences& differences)
{
    m_summary.clear();
    m_historianOpened = false;
    if (m_historianFailed || !m_services.historianSummary)
        return;
    std::vector<std::wstring> itemIds, branchPaths;
    CHistorianImpact::Concerned(differences, itemIds, branchPaths);
    try {
        CL::CWaitCursor wait;
        m_summary = m_services.historianSummary(itemIds, branchPaths);
        m_historianOpened = true;
    } catch (...) {
        // The review goes on without the figures; the column says so.
        Log(1, "Review Changes: the historian cannot be opened" + MV_POS());
        m_summary.clear();
        m_historianFailed = true;
    }
}

void CdlgReviewChanges::Recompute()
{
    CL::CWaitCursor wait;
    const ModelPtr after = After();
    AddressSpaceDifferences differences = CompareAddressSpaces(*m_before, *after);
    const bool server = m_source == Source::ServerNow;
    if (server)
        MarkOrigins(differences, CompareAddressSpaces(*m_document->Baseline(), *after),
                    CompareAddressSpaces(*m_document->Baseline(), *m_before));
    m_counts = SummarizeDifferences(differences);
    bool affects = false;
    for (const AddressSpaceDifference& d : differences)
        if (CHistorianImpact::Affects(d)) {
            affects = true;
            break;
        }
    // The historian is asked only when some row concerns archived values.
    if (affects)
        LoadHistorian(differences);
    const bool known = m_historianOpened || !affects;
    const CHistorianImpact impact(m_summary);
    if (!affects)
        m_impactText = L"No archived values are concerned: no item is removed, renamed or moved, none stops being "
                       L"archived or gets another data type.";
    else if (!m_historianOpened)
        m_impactText = L"The historian database cannot be opened: the values archived for these items are not shown.";
    else {
        m_impactText = CHistorianImpact::SummaryText(impact.Total(differences));
        if (m_impactText.empty())
            m_impactText = L"The items concerned have no archived values.";
        else
            m_impactText += L" Nothing is deleted.";
    }
    m_rows.Assign(std::move(differences), impact, known ? std::wstring() : std::wstring(kNoHistorian), server);
    m_rows.SetFilter(CL::ItemText(Hwnd(), IDC_REVIEW_FILTER));
    m_list.Reset(true);
    ShowTexts();
    UpdateButtons();
}

std::wstring CdlgReviewChanges::SummaryText() const
{
    const size_t total = m_rows.Differences().size();
    std::wstring text;
    if (total == 0) {
        text = L"No differences from " + m_beforeLabel + L".";
    } else {
        text = CL::Format(L"%zu difference(s) from %ls: %zu added, %zu removed, %zu changed, %zu moved.", total,
                          m_beforeLabel.c_str(), m_counts.added, m_counts.removed, m_counts.changed, m_counts.moved);
        if (m_source == Source::ServerNow) {
            size_t server = 0;
            for (const AddressSpaceDifference& d : m_rows.Differences())
                if (d.origin == DifferenceOrigin::Server)
                    ++server;
            text += CL::Format(L" %zu changed on the server since the editor loaded it", server);
            text += m_counts.conflicts
                        ? CL::Format(L"; %zu conflict(s): Save overrides the server's change.", m_counts.conflicts)
                        : std::wstring(L"; no conflicts.");
        }
        if (m_rows.RowCount() != total)
            text += CL::Format(L" %zu shown.", m_rows.RowCount());
    }
    return text;
}

void CdlgReviewChanges::ShowTexts()
{
    ::SetDlgItemTextW(Hwnd(), IDC_REVIEW_SUMMARY, SummaryText().c_str());
    ::SetDlgItemTextW(Hwnd(), IDC_REVIEW_IMPACT, m_impactText.c_str());
}

void CdlgReviewChanges::UpdateButtons()
{
    const bool rows = m_rows.RowCount() > 0;
    ::EnableWindow(GetDlgItem(IDC_REVIEW_REVERT), Editing() && rows);
    ::EnableWindow(GetDlgItem(IDC_REVIEW_COPY), rows);
    ::EnableWindow(GetDlgItem(IDC_REVIEW_EXPORT), rows);
    if (Editing())
        ::EnableWindow(GetDlgItem(IDC_REVIEW_SAVE), m_document->IsDirty());
}

size_t CdlgReviewChanges::RevertRows(const std::vector<size_t>& rows)
{
    if (!Editing() || rows.empty())
        return 0;
    std::vector<const AddressSpaceDifference*> chosen;
    for (size_t row : rows)
        chosen.push_back(&m_rows.At(row));
    CL::CWaitCursor wait;
    // Made on a copy: the editor changes in one step, or not at all.
    ModelPtr model = CL::CopyAddressSpace(*m_document->Model());
    const size_t reverted = RevertDifferences(*model, *m_before, chosen);
    if (reverted == 0)
        return 0;
    CEditCommand& command = m_document->Execute(std::make_unique<CReplaceModelCommand>(
        *m_document, std::move(model), CL::Format(L"Revert %zu change(s)", reverted)));
    if (m_services.edited)
        m_services.edited(command);
    Recompute();
    return reverted;
}

std::wstring CdlgReviewChanges::SelectionText() const
{
    std::vector<size_t> rows = m_list.SelectedRows();
    if (rows.empty())
        for (size_t i = 0; i < m_list.DisplayCount(); ++i)
            rows.push_back(m_list.SourceRowAt(i));
    return CL::ReportRowsText(m_list, rows);
}

std::string CdlgReviewChanges::CsvText() const
{
    std::wstring text;
    std::vector<std::wstring> fields;
    for (const CL::ReportColumn& column : CReviewRows::Columns())
        fields.push_back(column.title);
    text += CL::CsvRecord(fields);
    for (size_t i = 0; i < m_list.DisplayCount(); ++i) {
        const size_t row = m_list.SourceRowAt(i);
        for (int column = 0; column < CReviewRows::kColumnCount; ++column)
            fields[static_cast<size_t>(column)] = m_rows.CellText(row, column);
        text += CL::CsvRecord(fields);
    }
    return "\xEF\xBB\xBF" + CL::ToUtf8(text);
}

bool CdlgReviewChanges::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    switch (id) {
    case IDC_REVIEW_SOURCE:
        if (code == CBN_SELCHANGE && !m_filling)
            OnSourceChosen();
        return true;
    case IDC_REVIEW_FILTER:
        if (code == EN_CHANGE && m_list.Hwnd()) {
            m_rows.SetFilter(CL::ItemText(Hwnd(), IDC_REVIEW_FILTER));
            m_list.Reset(true);
            ShowTexts();
            UpdateButtons();
        }
        return true;
    case IDC_REVIEW_FILE: OnCompareWithFile(); return true;
    case IDC_REVIEW_REVERT: OnRevert(); return true;
    case IDC_REVIEW_COPY: OnCopy(); return true;
    case IDC_REVIEW_EXPORT: OnExport(); return true;
    case IDC_REVIEW_SAVE: OnSave(); return true;
    case IDCANCEL:
    case IDOK:
        EndDialog(IDCANCEL);
        return true;
    default:
        return false;
    }
}

void CdlgReviewChanges::OnSourceChosen()
{
    Log(3, "CdlgReviewChanges::OnSourceChosen" + MV_POS());
    CL::RunReported([this] {
        const HWND combo = GetDlgItem(IDC_REVIEW_SOURCE);
        const LRESULT at = ::SendMessageW(combo, CB_GETCURSEL, 0, 0);
        if (at == CB_ERR)
            return;
        const auto source = static_cast<Source>(::SendMessageW(combo, CB_GETITEMDATA, static_cast<WPARAM>(at), 0));
        if (!ShowSource(source))
            FillSourceCombo();
    });
}

void CdlgReviewChanges::OnCompareWithFile()
{
    Log(3, "CdlgReviewChanges::OnCompareWithFile" + MV_POS());
    CL::RunReported([this] {
        const std::wstring filter = CL::AddressSpaceFileFilter();
        if (!CL::AskOpenFileName(Hwnd(), filter.c_str(), L"Compare with File", m_openPath, std::size(m_openPath)))
            return;
        ShowFile(m_openPath);
    });
}

void CdlgReviewChanges::OnRevert()
{
    Log(3, "CdlgReviewChanges::OnRevert" + MV_POS());
    CL::RunReported([this] {
        const std::vector<size_t> rows = m_list.SelectedRows();
        if (rows.empty()) {
            ::MessageBoxW(Hwnd(), L"Select the rows to revert first.", kTitle, MB_OK | MB_ICONINFORMATION);
            return;
        }
        RevertRows(rows);
    });
}

void CdlgReviewChanges::OnCopy()
{
    Log(3, "CdlgReviewChanges::OnCopy" + MV_POS());
    CL::RunReported([this] { CL::SetClipboardText(Hwnd(), SelectionText()); });
}

void CdlgReviewChanges::OnExport()
{
    Log(3, "CdlgReviewChanges::OnExport" + MV_POS());
    CL::RunReported([this] {
        const std::wstring path = CL::AskSaveFileName(Hwnd(), kCsvFilter, L"csv", L"Changes.csv");
        if (path.empty())
            return;
        CL::CWaitCursor wait;
        CL::CReplacingFile file(path, L"Export CSV");
        file.Write(CsvText());
        file.Commit();
    });
}

void CdlgReviewChanges::OnSave()
{
    Log(3, "CdlgReviewChanges::OnSave" + MV_POS());
    CL::RunReported([this] {
        if (!Editing() || !m_services.save)
            return;
        m_services.save();
        // Saved: the editor's address space is now the server's.
        if (!m_document->IsDirty())
            ShowSource(Source::MyChanges);
        else
            UpdateButtons();
    });
}

INT_PTR CdlgReviewChanges::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_anchors.OnMessage(message, lParam))
        return TRUE;
    switch (message) {
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        LRESULT result = 0;
        if (m_list.OnNotify(header, &result)) {
            ::SetWindowLongPtrW(Hwnd(), DWLP_MSGRESULT, result);
            return TRUE;
        }
        if (header->hwndFrom == m_list.Hwnd() && header->code == LVN_KEYDOWN) {
            const auto* key = reinterpret_cast<const NMLVKEYDOWN*>(lParam);
            const bool control = (::GetKeyState(VK_CONTROL) & 0x8000) != 0;
            if (control && key->wVKey == 'C')
                OnCopy();
            else if (control && key->wVKey == 'A')
                m_list.SelectAll();
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
