#include "config/dlgOptions.h"

#include <objbase.h>

#include <algorithm>
#include <vector>

#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "common/ui/WaitCursor.h"
#include "config/ClsidText.h"
#include "config/NumberText.h"
#include "config/SettingsApply.h"
#include "config/dlgDbOptions.h"
#include "res/resource.h"

namespace {

using CL::Checked;
using CL::ItemText;
using CL::SetChecked;

constexpr wchar_t kCaption[] = L"Options";
constexpr wchar_t kAnswerCaption[] = L"Ok";
constexpr wchar_t kInUseFormat[] =
    L"The '%ls' is probably used. Using this clsid here may damage the system. Please, specify unused clsid.";
constexpr wchar_t kRestartQuestion[] =
    L"To apply new options the OPC server must be restarted (and all the OPC clients will be "
    L"disconnected).\r\n\r\nDo you want to continue?";
constexpr wchar_t kAppliedFormat[] =
    L"The new settings were successfully applied. \r\n\r\nPrevious settings were saved in %ls";

constexpr wchar_t kCcmClsidField[] = L"CCM Server CLSID";
constexpr const wchar_t* kLoggingLevels[] = {L"Error", L"Warning", L"Info", L"Debug", L"Trace"};
constexpr long kHighestLoggingLevel = 4;
constexpr long kFallbackLoggingLevel = 1;


void SetItemText(HWND dialog, int id, const std::wstring& text)
{
    ::SetDlgItemTextW(dialog, id, text.c_str());
}

void Enable(HWND dialog, int id, bool on)
{
    ::EnableWindow(::GetDlgItem(dialog, id), on);
}

// The connection string without the line breaks that its multi-line edit
// may have taken from pasted text.
std::wstring OneLine(std::wstring text)
{
    std::replace(text.begin(), text.end(), L'\r', L' ');
    std::replace(text.begin(), text.end(), L'\n', L' ');
    return CL::TrimWhiteSpace(text);
}

bool IsPort(const std::wstring& text, long& port)
{
    long value = 0;
    if (!CL::ParseSignedDecimal(text, value) || value < 1 || value > 65535)
        return false;
    port = value;
    return true;
}

std::wstring NotAClsid(const wchar_t* field)
{
    return CL::Format(L"The '%ls' is not a valid CLSID.\r\n\r\nPlease, enter it in the form "
                      L"{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX} or press \"New\".",
                      field);
}

std::wstring NotAPort(const wchar_t* server)
{
    return CL::Format(L"The port of the %ls must be a whole number from 1 to 65535.", server);
}

const wchar_t* RetentionFieldName(int id)
{
    switch (id) {
    case IDC_ED_KEEP_NUMBER:
        return L"Keep the last ... values.";
    case IDC_ED_KEEP_MINUTES:
        return L"Keep values for the last ... minutes.";
    default:
        return L"Delete the oldest ... % of the values of every single OPC item.";
    }
}

} // namespace

const CdlgOptions::ServerRow CdlgOptions::kServerRows[3] = {
    {IDC_CH_ENABLE_DA, IDC_ED_DA_CLSID, IDC_BT_NEW_DA_CLSID, &CdlgOptions::m_daEnabled, &CSettings::DAServer_CLSID,
     L"OPC DA Server CLSID"},
    {IDC_CH_ENABLE_HDA, IDC_ED_HDA_CLSID, IDC_BT_NEW_HDA_CLSID, &CdlgOptions::m_hdaEnabled,
     &CSettings::HDAServer_CLSID, L"OPC HDA Server CLSID"},
    {IDC_CH_ENABLE_AE, IDC_ED_AE_CLSID, IDC_BT_NEW_AE_CLSID, &CdlgOptions::m_aeEnabled, &CSettings::AEServer_CLSID,
     L"OPC AE Server CLSID"},
};

CdlgOptions::CdlgOptions(CL::IServerControl& server, std::wstring installationFolder)
    : m_server(server), m_folder(std::move(installationFolder))
{
}

std::wstring CdlgOptions::DefaultFolder()
{
    return GetInstallationFolderPath(L"");
}

INT_PTR CdlgOptions::DoModal(HWND owner)
{
    return CL::CDialog::DoModal(owner, IDD_OPTIONS);
}

BOOL CdlgOptions::OnInitDialog()
{
    Log(3, "CdlgOptions::OnInitDialog" + MV_POS());
    CL::RunReported([this] {
        const HICON icon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
        ::SendMessageW(Hwnd(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
        Init();
    });
    return TRUE;
}

// The logging levels, then the settings record copied into the dialog: a
// server kind is enabled exactly when its CLSID is not the null GUID.
void CdlgOptions::Init()
{
    Log(3, "CdlgOptions::Init" + MV_POS());
    const HWND levels = GetDlgItem(IDC_CB_LOGGING_LEVEL);
    ::SendMessageW(levels, CB_RESETCONTENT, 0, 0);
    for (const wchar_t* level : kLoggingLevels)
        ::SendMessageW(levels, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(level));
    m_values = m_initial ? *m_initial : g_Settings;
    m_retention = CDbRetention::From(m_values);
    ShowValues();
    EnableDependentControls();
}

bool CdlgOptions::OnCommand(WORD id, WORD code, HWND /*control*/)
{
    if (code != BN_CLICKED)
        return false;
    switch (id) {
    case IDC_RBT_INTERNALDB:
    case IDC_RBT_SQLSERVER:
        OnBnClickedRbtInternaldb();
        return true;
    case IDC_BT_DBOPTIONS:
        OnClickedDbOptions();
        return true;
    case IDC_CH_ENABLE_DA:
        OnBnClickedEnableDA();
        return true;
    case IDC_CH_ENABLE_HDA:
        OnBnClickedEnableHDA();
        return true;
    case IDC_CH_ENABLE_AE:
        OnBnClickedEnableAE();
        return true;
    case IDC_CH_ENABLE_XMLDA:
        OnBnClickedEnableXmlDa();
        return true;
    case IDC_CH_ENABLE_UA:
        OnBnClickedEnableUa();
        return true;
    case IDC_CH_START_CCM:
        // The CCM file name follows its check box like the other dependents.
        Log(3, "CdlgOptions::OnBnClickedStartCcm" + MV_POS());
        CL::RunReported([this] { EnableDependentControls(); });
        return true;
    case IDC_BT_NEW_DA_CLSID:
        OnClickedNewDaClsid();
        return true;
    case IDC_BT_NEW_HDA_CLSID:
        OnClickedNewHdaClsid();
        return true;
    case IDC_BT_NEW_AE_CLSID:
        OnClickedNewAeClsid();
        return true;
    case IDC_BT_NEW_CCM_CLSID:
        OnClickedNewCcmClsid();
        return true;
    case IDC_BT_DEFAULTS:
        OnClickedDefaults();
        return true;
    case IDOK:
        OnClickedOK();
        return true;
    case IDCANCEL:
        OnClickedCancel();
        return true;
    default:
        return false;
    }
}

void CdlgOptions::OnBnClickedRbtInternaldb()
{
    Log(3, "CdlgOptions::OnBnClickedRbtInternaldb" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

// The small dialog edits the dialog's copy of the retention values; they
// reach the settings only with this dialog's OK.
void CdlgOptions::OnClickedDbOptions()
{
    Log(3, "CdlgOptions::OnClickedDbOptions" + MV_POS());
    CL::RunReported([this] {
        CdlgDbOptions dialog(m_retention);
        if (dialog.DoModal(Hwnd()) == IDOK)
            m_retention = dialog.Values();
    });
}

void CdlgOptions::OnBnClickedEnableDA()
{
    Log(3, "CdlgOptions::OnBnClickedEnableDA" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

void CdlgOptions::OnBnClickedEnableHDA()
{
    Log(3, "CdlgOptions::OnBnClickedEnableHDA" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

void CdlgOptions::OnBnClickedEnableAE()
{
    Log(3, "CdlgOptions::OnBnClickedEnableAE" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

void CdlgOptions::OnBnClickedEnableXmlDa()
{
    Log(3, "CdlgOptions::OnBnClickedEnableXmlDa" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

void CdlgOptions::OnBnClickedEnableUa()
{
    Log(3, "CdlgOptions::OnBnClickedEnableUa" + MV_POS());
    CL::RunReported([this] { EnableDependentControls(); });
}

void CdlgOptions::OnClickedNewDaClsid()
{
    Log(3, "CdlgOptions::OnClickedNewDaClsid" + MV_POS());
    CL::RunReported([this] { SetNewClsid(IDC_ED_DA_CLSID); });
}

void CdlgOptions::OnClickedNewHdaClsid()
{
    Log(3, "CdlgOptions::OnClickedNewHdaClsid" + MV_POS());
    CL::RunReported([this] { SetNewClsid(IDC_ED_HDA_CLSID); });
}

void CdlgOptions::OnClickedNewAeClsid()
{
    Log(3, "CdlgOptions::OnClickedNewAeClsid" + MV_POS());
    CL::RunReported([this] { SetNewClsid(IDC_ED_AE_CLSID); });
}

void CdlgOptions::OnClickedNewCcmClsid()
{
    Log(3, "CdlgOptions::OnClickedNewCcmClsid" + MV_POS());
    CL::RunReported([this] { SetNewClsid(IDC_ED_CCM_CLSID); });
}

// The documented defaults of every key go into the controls (and into the
// copy the database maintenance dialog edits); nothing is saved before OK.
void CdlgOptions::OnClickedDefaults()
{
    Log(3, "CdlgOptions::OnClickedDefaults" + MV_POS());
    CL::RunReported([this] {
        m_values = CSettings();
        m_retention = CDbRetention::From(m_values);
        ShowValues();
        EnableDependentControls();
    });
}

void CdlgOptions::OnClickedOK()
{
    Log(3, "CdlgOptions::OnClickedOK" + MV_POS());
    CL::RunReported([this] {
        CSettings values = m_values;
        if (std::optional<InputProblem> problem = TakeValues(values)) {
            Refuse(*problem);
            return;
        }
        m_values = values;
        if (std::optional<InputProblem> inUse = FindClsidInUse(values)) {
            Refuse(*inUse);
            return;
        }
        if (::MessageBoxW(Hwnd(), kRestartQuestion, kAnswerCaption, MB_YESNOCANCEL | MB_ICONWARNING) != IDYES)
            return;
        Apply(values);
    });
}

void CdlgOptions::OnClickedCancel()
{
    Log(3, "CdlgOptions::OnClickedCancel" + MV_POS());
    CL::RunReported([this] { EndDialog(IDCANCEL); });
}

void CdlgOptions::ShowValues()
{
    const HWND dialog = Hwnd();
    ::CheckRadioButton(dialog, IDC_RBT_INTERNALDB, IDC_RBT_SQLSERVER,
                       m_values.CustomADOConnection ? IDC_RBT_SQLSERVER : IDC_RBT_INTERNALDB);
    SetItemText(dialog, IDC_ED_ADOCONNECTION, m_values.ADOConnection);
    SetItemText(dialog, IDC_ED_TITLE, m_values.Title);
    SetItemText(dialog, IDC_ED_SERVICENAME, m_values.ServiceName);
    for (const ServerRow& row : kServerRows) {
        const GUID& clsid = m_values.*row.clsid;
        this->*row.enabled = !::IsEqualGUID(clsid, GUID_NULL);
        SetChecked(dialog, row.check, this->*row.enabled);
        SetItemText(dialog, row.edit, this->*row.enabled ? CL::ClsidText(clsid) : std::wstring());
    }
    SetItemText(dialog, IDC_ED_CCM_CLSID, CL::ClsidText(m_values.CcmServer_CLSID));
    SetChecked(dialog, IDC_CH_START_CCM, m_values.StartCCM);
    SetItemText(dialog, IDC_ED_CCM, m_values.CCM);
    SetChecked(dialog, IDC_CH_START_EMPTY, m_values.StartEmpty);
    SetChecked(dialog, IDC_CH_MAP_ITEMS, m_values.MapItemsToFiles);
    SetChecked(dialog, IDC_CH_ENABLE_XMLDA, m_values.EnableXmlDa);
    SetItemText(dialog, IDC_ED_XMLDA_PORT, std::to_wstring(m_values.XmlDaPort));
    SetChecked(dialog, IDC_CH_ENABLE_UA, m_values.EnableUa);
    SetItemText(dialog, IDC_ED_UA_PORT, std::to_wstring(m_values.UaPort));
    // A level above the highest shows as the highest; a negative one selects nothing.
    const long level = std::min(m_values.TraceLevel, kHighestLoggingLevel);
    ::SendDlgItemMessageW(dialog, IDC_CB_LOGGING_LEVEL, CB_SETCURSEL, static_cast<WPARAM>(level), 0);
}

void CdlgOptions::EnableDependentControls()
{
    const HWND dialog = Hwnd();
    Enable(dialog, IDC_ED_ADOCONNECTION, Checked(dialog, IDC_RBT_SQLSERVER));
    Enable(dialog, IDC_ED_CCM, Checked(dialog, IDC_CH_START_CCM));
    Enable(dialog, IDC_ED_XMLDA_PORT, Checked(dialog, IDC_CH_ENABLE_XMLDA));
    Enable(dialog, IDC_ED_UA_PORT, Checked(dialog, IDC_CH_ENABLE_UA));
    for (const ServerRow& row : kServerRows) {
        const bool on = Checked(dialog, row.check);
        Enable(dialog, row.edit, on);
        Enable(dialog, row.newButton, on);
    }
}

std::optional<CdlgOptions::InputProblem> CdlgOptions::TakeValues(CSettings& values)
{
    const HWND dialog = Hwnd();
    values.CustomADOConnection = Checked(dialog, IDC_RBT_SQLSERVER);
    values.ADOConnection = OneLine(ItemText(dialog, IDC_ED_ADOCONNECTION));
    if (values.CustomADOConnection && values.ADOConnection.empty())
        return InputProblem{IDC_ED_ADOCONNECTION, L"The 'OLEDB connection string' must not be empty when the "
                                                  L"Ms SQL Server database is chosen."};
    if (m_retention.BadNumberField != 0)
        return InputProblem{IDC_BT_DBOPTIONS,
                            CL::Format(L"The number of '%ls' in the Database Maintenance Options is not a "
                                       L"number.\r\n\r\nPlease, correct it there.",
                                       RetentionFieldName(m_retention.BadNumberField))};
    m_retention.StoreInto(values);

    values.Title = CL::TrimWhiteSpace(ItemText(dialog, IDC_ED_TITLE));
    if (values.Title.empty())
        return InputProblem{IDC_ED_TITLE, L"The 'Title' must not be empty."};
    values.ServiceName = CL::TrimWhiteSpace(ItemText(dialog, IDC_ED_SERVICENAME));
    if (values.ServiceName.empty() || values.ServiceName.find_first_of(L"/\\") != std::wstring::npos)
        return InputProblem{IDC_ED_SERVICENAME,
                            L"The 'Service Name' must not be empty and must not contain '/' or '\\'."};
    if (std::optional<InputProblem> problem = TakeServerClsids(values))
        return problem;

    values.StartCCM = Checked(dialog, IDC_CH_START_CCM);
    values.CCM = CL::TrimWhiteSpace(ItemText(dialog, IDC_ED_CCM));
    if (values.StartCCM && values.CCM.empty())
        return InputProblem{IDC_ED_CCM, L"The 'CCM file name' must not be empty when CCM is started after the "
                                        L"OPC server."};
    values.StartEmpty = Checked(dialog, IDC_CH_START_EMPTY);
    values.MapItemsToFiles = Checked(dialog, IDC_CH_MAP_ITEMS);
    if (std::optional<InputProblem> problem = TakePorts(values))
        return problem;

    const LRESULT level = ::SendDlgItemMessageW(dialog, IDC_CB_LOGGING_LEVEL, CB_GETCURSEL, 0, 0);
    values.TraceLevel = (level >= 0 && level <= kHighestLoggingLevel) ? static_cast<long>(level)
                                                                       : kFallbackLoggingLevel;
    return std::nullopt;
}

// A disabled server's CLSID is the null GUID whatever its edit holds.
std::optional<CdlgOptions::InputProblem> CdlgOptions::TakeServerClsids(CSettings& values)
{
    const HWND dialog = Hwnd();
    for (const ServerRow& row : kServerRows) {
        this->*row.enabled = Checked(dialog, row.check);
        GUID clsid = GUID_NULL;
        if (this->*row.enabled && !CL::ParseClsid(ItemText(dialog, row.edit), clsid))
            return InputProblem{row.edit, NotAClsid(row.field)};
        values.*row.clsid = clsid;
    }
    if (!CL::ParseClsid(ItemText(dialog, IDC_ED_CCM_CLSID), values.CcmServer_CLSID))
        return InputProblem{IDC_ED_CCM_CLSID, NotAClsid(kCcmClsidField)};
    return std::nullopt;
}

// A port is checked only while its server is enabled; the port edit of a
// disabled server keeps the value it had when its text is not a port.
std::optional<CdlgOptions::InputProblem> CdlgOptions::TakePorts(CSettings& values)
{
    const HWND dialog = Hwnd();
    values.EnableXmlDa = Checked(dialog, IDC_CH_ENABLE_XMLDA);
    if (!IsPort(ItemText(dialog, IDC_ED_XMLDA_PORT), values.XmlDaPort) && values.EnableXmlDa)
        return InputProblem{IDC_ED_XMLDA_PORT, NotAPort(L"OPC XML DA Server")};
    values.EnableUa = Checked(dialog, IDC_CH_ENABLE_UA);
    if (!IsPort(ItemText(dialog, IDC_ED_UA_PORT), values.UaPort) && values.EnableUa)
        return InputProblem{IDC_ED_UA_PORT, NotAPort(L"OPC UA Server")};
    return std::nullopt;
}

// A CLSID that differs from the one in force and is registered belongs to
// other software. One that did not change is the product's own registration
// and is never checked.
std::optional<CdlgOptions::InputProblem> CdlgOptions::FindClsidInUse(const CSettings& values) const
{
    struct Candidate {
        GUID CSettings::*clsid;
        int edit;
        const wchar_t* field;
    };
    static const Candidate kOrder[] = {
        {&CSettings::HDAServer_CLSID, IDC_ED_HDA_CLSID, L"OPC HDA Server CLSID"},
        {&CSettings::AEServer_CLSID, IDC_ED_AE_CLSID, L"OPC AE Server CLSID"},
        {&CSettings::DAServer_CLSID, IDC_ED_DA_CLSID, L"OPC DA Server CLSID"},
        {&CSettings::CcmServer_CLSID, IDC_ED_CCM_CLSID, kCcmClsidField},
    };
    for (const Candidate& candidate : kOrder) {
        const GUID& clsid = values.*candidate.clsid;
        if (::IsEqualGUID(clsid, g_Settings.*candidate.clsid) || ::IsEqualGUID(clsid, GUID_NULL))
            continue;
        if (CL::IsClsidRegistered(clsid))
            return InputProblem{candidate.edit, CL::Format(kInUseFormat, candidate.field)};
    }
    return std::nullopt;
}

void CdlgOptions::Refuse(const InputProblem& problem)
{
    Log(2, "Options refused: " + CL::Narrow(problem.text) + MV_POS());
    ::MessageBoxW(Hwnd(), problem.text.c_str(), kCaption, MB_OK | MB_ICONWARNING);
    FocusControl(problem.control);
}

void CdlgOptions::FocusControl(int id)
{
    const HWND control = GetDlgItem(id);
    ::SendMessageW(Hwnd(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    wchar_t className[16] = {};
    ::GetClassNameW(control, className, 16);
    if (CL::EqualsNoCase(className, L"Edit"))
        ::SendMessageW(control, EM_SETSEL, 0, -1);
}

void CdlgOptions::SetNewClsid(int edit)
{
    SetItemText(Hwnd(), edit, CL::NewClsidText());
}

// The heavy part: any failure goes to the error report and the dialog
// stays open, with the steps done so far left as they are.
void CdlgOptions::Apply(const CSettings& values)
{
    {
        CL::CWaitCursor wait;
        m_backupPath = CSettingsApply(m_server, m_folder).Apply(values);
    }
    m_applied = true;
    ::MessageBoxW(Hwnd(), CL::Format(kAppliedFormat, m_backupPath.c_str()).c_str(), kAnswerCaption,
                  MB_OK | MB_ICONINFORMATION);
    EndDialog(IDOK);
}
