#include "app/AddressSpaceEditor.h"

#include "addressspace/AddressSpaceFiles.h"
#include "addressspace/dlgReviewChanges.h"
#include "app/AboutDlg.h"
#include "common/ChangeJournal.h"
#include "common/historian/Historian.h"
#include "common/historian/HistorianSummaryOf.h"
#include "config/Settings.h"

namespace CL {

CAddressSpaceEditor::CAddressSpaceEditor(CHistorian& historian, CAddressSpaceExchange exchange)
    : m_historian(historian), m_frame(std::move(exchange))
{
    // Every address space given to the server is kept and journalled.
    m_recorder = std::make_shared<CChangeRecorder>(m_frame.Exchange().ExchangeFile(), CChangeJournal::Instance());
    m_frame.Exchange().SetObserver(m_recorder);
    m_frame.SetHistoryHook(MakeHistoricalDataHook(historian));
    m_frame.SetHistorianSummary([&historian](const std::vector<std::wstring>& itemIds,
                                             const std::vector<std::wstring>& branchPaths) {
        return ReadSummaryOf(historian, itemIds, branchPaths);
    });
    m_frame.SetAboutHook([](HWND owner) {
        CAboutDlg dialog;
        dialog.DoModal(owner);
    });
}

CAddressSpaceExchange CAddressSpaceEditor::InstalledServerExchange()
{
    return CAddressSpaceExchange([] { return g_Settings.ServiceName; },
                                 CAddressSpaceExchange::ExchangeFilePath(GetInstallationFolderPath(L"")));
}

CAddressSpaceEditor::~CAddressSpaceEditor()
{
    if (m_loop)
        m_loop->RemoveMessageFilter(this);
    m_frame.DestroyWindow();
}

void CAddressSpaceEditor::SetHistoricalDataOpener(HistoricalDataOpener opener)
{
    m_frame.SetHistoryHook(MakeHistoricalDataHook(m_historian, std::move(opener)));
}

HWND CAddressSpaceEditor::Window() const
{
    return m_frame.IsWindow() ? m_frame.Hwnd() : nullptr;
}

bool CAddressSpaceEditor::PrepareOpen()
{
    return m_frame.Exchange().LoadFromServer(m_frame.Document());
}

bool CAddressSpaceEditor::Create()
{
    if (!m_frame.Create())
        return false;
    // The accelerators work through the program's loop (none in tests).
    if (!m_loop && CMessageLoop::Current()) {
        m_loop = CMessageLoop::Current();
        m_loop->AddMessageFilter(this);
    }
    return true;
}

void CAddressSpaceEditor::ReloadFromFile()
{
    m_frame.Exchange().ReloadFromFile(m_frame.Document());
}

void CAddressSpaceEditor::RestoreVersion(const std::wstring& file)
{
    m_frame.RestoreVersion(file);
    m_recorder->NoteRestored(file);
}

namespace {

std::wstring FileName(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? path : path.substr(slash + 1);
}

// A review with only the historian's impact to ask for (read-only).
ReviewServices ReadOnlyServices(CMainFrame& frame)
{
    ReviewServices services;
    services.historianSummary = frame.MakeReviewServices().historianSummary;
    return services;
}

} // namespace

void CAddressSpaceEditor::CompareWithVersion(const std::wstring& file)
{
    m_frame.ReviewChangesAgainst(LoadAddressSpaceFile(file), L"Version " + FileName(file));
}

void CAddressSpaceEditor::CompareVersionWithServer(HWND owner, const std::wstring& file)
{
    CAddressSpaceDocument::ModelPtr version = LoadAddressSpaceFile(file);
    CAddressSpaceDocument::ModelPtr server = m_frame.Exchange().FetchFromServer();
    if (!server)
        return;
    CdlgReviewChanges dialog(std::move(version), L"Version " + FileName(file), std::move(server),
                             CdlgReviewChanges::kServerNow, ReadOnlyServices(m_frame));
    dialog.DoModal(owner);
}

void CAddressSpaceEditor::CompareVersions(HWND owner, const std::wstring& older, const std::wstring& newer)
{
    CdlgReviewChanges dialog(LoadAddressSpaceFile(older), L"Version " + FileName(older), LoadAddressSpaceFile(newer),
                             L"Version " + FileName(newer), ReadOnlyServices(m_frame));
    dialog.DoModal(owner);
}

bool CAddressSpaceEditor::PreTranslateMessage(MSG& msg)
{
    return m_frame.PreTranslateMessage(msg);
}

} // namespace CL
