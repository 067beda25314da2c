// The options dialog on the test display: what opening shows, the enabling
// rules of dependent controls, the "New" and "Defaults" buttons, the checks
// of OK (input, CLSIDs in use, the restart question) and the apply sequence
// against a scripted server control, the real process runner and a scripted
// service control manager.
#include <gtest/gtest.h>
#include <windows.h>
#include <objbase.h>

#include <set>
#include <thread>

#include "OptionsTestSupport.h"
#include "app/ServerProcessControl.h"
#include "config/ClsidText.h"
#include "config/Settings.h"
#include "config/dlgOptions.h"
#include "common/ProcessRun.h"
#include "common/Text.h"
#include "res/resource.h"
#include "support/FakeServiceManager.h"
#include "support/LogCapture.h"
#include "support/SettingsFileXml.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

using namespace std::chrono_literals;

namespace {

constexpr wchar_t kRestartQuestion[] =
    L"To apply new options the OPC server must be restarted (and all the OPC clients will be "
    L"disconnected).\r\n\r\nDo you want to continue?";
constexpr wchar_t kAppliedPrefix[] =
    L"The new settings were successfully applied. \r\n\r\nPrevious settings were saved in ";

std::wstring InUseText(const std::wstring& field)
{
    return L"The '" + field +
           L"' is probably used. Using this clsid here may damage the system. Please, specify unused clsid.";
}

// A class identifier registered under HKEY_CLASSES_ROOT\CLSID for the life
// of the object, as another program's class would be.
class RegisteredClsid {
public:
    RegisteredClsid()
    {
        ::CoCreateGuid(&m_clsid);
        m_key = L"CLSID\\" + CL::ClsidText(m_clsid);
        HKEY key = nullptr;
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CLASSES_ROOT, m_key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                                    nullptr),
                  ERROR_SUCCESS);
        if (key)
            ::RegCloseKey(key);
    }
    ~RegisteredClsid() { ::RegDeleteKeyW(HKEY_CLASSES_ROOT, m_key.c_str()); }
    const GUID& Clsid() const { return m_clsid; }
    std::wstring Text() const { return CL::ClsidText(m_clsid); }

private:
    GUID m_clsid = GUID_NULL;
    std::wstring m_key;
};

// The answers a test gives: the restart question gets `restartAnswer`,
// every other box OK. Every box is recorded.
class Answers {
public:
    explicit Answers(int restartAnswer = IDYES)
        : m_answerer([restartAnswer](const test::MessageBoxInfo& box) {
              return box.text == kRestartQuestion ? restartAnswer : IDOK;
          })
    {
    }
    std::vector<test::MessageBoxInfo> Seen() const { return m_answerer.Seen(); }
    std::vector<std::wstring> Texts() const
    {
        std::vector<std::wstring> texts;
        for (const test::MessageBoxInfo& box : Seen())
            texts.push_back(box.text);
        return texts;
    }

private:
    test::MessageBoxAnswerer m_answerer;
};

// The dialog (modeless and hidden, so that the box answerer leaves it alone)
// over a scripted server control and a fresh installation folder.
class OptionsDialog : public testing::Test {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override { g_Settings = CSettings(); }
    void TearDown() override { g_Settings = CSettings(); }

    HWND Open()
    {
        const HWND hwnd = dialog.Create(nullptr, IDD_OPTIONS);
        EXPECT_NE(hwnd, nullptr);
        return hwnd;
    }
    std::wstring Text(int id) const { return test::ItemText(dialog, id); }
    void SetText(int id, const std::wstring& text) { test::SetItemText(dialog, id, text); }
    void Click(int id) { test::Click(dialog, id); }
    bool Checked(int id) const { return test::IsChecked(dialog, id); }
    bool Enabled(int id) const { return test::IsEnabled(dialog, id); }
    int FocusedId() const { return ::GetDlgCtrlID(::GetFocus()); }
    bool SettingsFileWritten() const { return test::FileExists(folder.File(CL::kSettingsFileName)); }

    test::ComApartment com;
    test::TempDir folder;
    test::FakeServerControl server{folder.Path()};
    CdlgOptions dialog{server, folder.Path()};
};

std::wstring Call(const std::wstring& what, const std::wstring& subject)
{
    return what + L" " + subject;
}

} // namespace

// ---- opening ---------------------------------------------------------------

TEST_F(OptionsDialog, OpeningShowsEveryKeyOfTheSettings)
{
    g_Settings.Title = L"Northfield";
    g_Settings.ServiceName = L"NorthfieldOpc";
    g_Settings.CustomADOConnection = true;
    g_Settings.ADOConnection = L"Provider=SQLOLEDB.1;Data Source=DB1";
    g_Settings.StartCCM = true;
    g_Settings.CCM = L"ccm.exe";
    g_Settings.StartEmpty = true;
    g_Settings.MapItemsToFiles = true;
    g_Settings.EnableXmlDa = false;
    g_Settings.XmlDaPort = 9090;
    g_Settings.EnableUa = true;
    g_Settings.UaPort = 4840;
    g_Settings.TraceLevel = 2;
    Open();
    EXPECT_EQ(Text(IDC_ED_TITLE), L"Northfield");
    EXPECT_EQ(Text(IDC_ED_SERVICENAME), L"NorthfieldOpc");
    EXPECT_TRUE(Checked(IDC_RBT_SQLSERVER));
    EXPECT_FALSE(Checked(IDC_RBT_INTERNALDB));
    EXPECT_EQ(Text(IDC_ED_ADOCONNECTION), L"Provider=SQLOLEDB.1;Data Source=DB1");
    EXPECT_TRUE(Checked(IDC_CH_START_CCM));
    EXPECT_EQ(Text(IDC_ED_CCM), L"ccm.exe");
    EXPECT_TRUE(Checked(IDC_CH_START_EMPTY));
    EXPECT_TRUE(Checked(IDC_CH_MAP_ITEMS));
    EXPECT_FALSE(Checked(IDC_CH_ENABLE_XMLDA));
    EXPECT_EQ(Text(IDC_ED_XMLDA_PORT), L"9090");
    EXPECT_TRUE(Checked(IDC_CH_ENABLE_UA));
    EXPECT_EQ(Text(IDC_ED_UA_PORT), L"4840");
    EXPECT_EQ(Text(IDC_CB_LOGGING_LEVEL), L"Info");
    EXPECT_TRUE(Checked(IDC_CH_ENABLE_DA));
    EXPECT_EQ(Text(IDC_ED_DA_CLSID), CL::ClsidText(CL::kDefaultDAServerClsid));
    EXPECT_EQ(Text(IDC_ED_HDA_CLSID), CL::ClsidText(CL::kDefaultHDAServerClsid));
    EXPECT_EQ(Text(IDC_ED_AE_CLSID), CL::ClsidText(CL::kDefaultAEServerClsid));
    EXPECT_EQ(Text(IDC_ED_CCM_CLSID), CL::ClsidText(CL::kDefaultCcmServerClsid));
}

TEST_F(OptionsDialog, ClsidsAreShownInUpperCaseRegistryForm)
{
    Open();
    const std::wstring text = Text(IDC_ED_DA_CLSID);
    ASSERT_EQ(text.size(), 38u);
    EXPECT_EQ(text, L"{6E2D1A41-3B7C-4F8E-9A51-0C4D2B7E8A01}");
}

struct NullClsidCase {
    const char* name;
    GUID CSettings::*clsid;
    int check;
    int edit;
    int newButton;
};

class NullClsid : public OptionsDialog, public testing::WithParamInterface<NullClsidCase> {};

TEST_P(NullClsid, ShowsThatServerDisabledWithAnEmptyEdit)
{
    const NullClsidCase c = GetParam();
    g_Settings.*c.clsid = GUID_NULL;
    Open();
    EXPECT_FALSE(Checked(c.check));
    EXPECT_EQ(Text(c.edit), L"");
    EXPECT_FALSE(Enabled(c.edit));
    EXPECT_FALSE(Enabled(c.newButton));
}

INSTANTIATE_TEST_SUITE_P(
    DaHdaAe, NullClsid,
    testing::Values(NullClsidCase{"DA", &CSettings::DAServer_CLSID, IDC_CH_ENABLE_DA, IDC_ED_DA_CLSID, IDC_BT_NEW_DA_CLSID},
                    NullClsidCase{"HDA", &CSettings::HDAServer_CLSID, IDC_CH_ENABLE_HDA, IDC_ED_HDA_CLSID,
                                  IDC_BT_NEW_HDA_CLSID},
                    NullClsidCase{"AE", &CSettings::AEServer_CLSID, IDC_CH_ENABLE_AE, IDC_ED_AE_CLSID,
                                  IDC_BT_NEW_AE_CLSID}),
    [](const testing::TestParamInfo<NullClsidCase>& info) { return std::string(info.param.name); });

TEST_F(OptionsDialog, NullCcmClsidIsStillShown)
{
    g_Settings.CcmServer_CLSID = GUID_NULL;
    Open();
    EXPECT_EQ(Text(IDC_ED_CCM_CLSID), L"{00000000-0000-0000-0000-000000000000}");
    EXPECT_TRUE(Enabled(IDC_ED_CCM_CLSID));
}

TEST_F(OptionsDialog, LoggingListHoldsTheFiveLevelsInOrder)
{
    Open();
    const HWND list = ::GetDlgItem(dialog, IDC_CB_LOGGING_LEVEL);
    ASSERT_EQ(::SendMessageW(list, CB_GETCOUNT, 0, 0), 5);
    const wchar_t* expected[] = {L"Error", L"Warning", L"Info", L"Debug", L"Trace"};
    for (int i = 0; i < 5; ++i) {
        wchar_t text[32] = {};
        ::SendMessageW(list, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
        EXPECT_STREQ(text, expected[i]);
    }
}

TEST_F(OptionsDialog, LoggingLevelSevenInTheFileIsShownAsTrace)
{
    const std::string xml = test::SettingsFileXml({{"TraceLevel", "7"}});
    test::WriteFileBytes(folder.File(CL::kSettingsFileName), xml);
    LoadSettingsFrom(folder.File(CL::kSettingsFileName), g_Settings);
    ASSERT_EQ(g_Settings.TraceLevel, 7);
    Open();
    EXPECT_EQ(::SendDlgItemMessageW(dialog, IDC_CB_LOGGING_LEVEL, CB_GETCURSEL, 0, 0), 4);
    EXPECT_EQ(Text(IDC_CB_LOGGING_LEVEL), L"Trace");
}

TEST_F(OptionsDialog, OpeningEnablesEachDependentControlWithItsChoice)
{
    g_Settings.CustomADOConnection = false;
    g_Settings.StartCCM = false;
    g_Settings.EnableXmlDa = false;
    g_Settings.EnableUa = true;
    Open();
    EXPECT_FALSE(Enabled(IDC_ED_ADOCONNECTION));
    EXPECT_FALSE(Enabled(IDC_ED_CCM));
    EXPECT_FALSE(Enabled(IDC_ED_XMLDA_PORT));
    EXPECT_TRUE(Enabled(IDC_ED_UA_PORT));
    EXPECT_TRUE(Enabled(IDC_ED_DA_CLSID));
    EXPECT_TRUE(Enabled(IDC_BT_NEW_DA_CLSID));
}

// ---- clicks ----------------------------------------------------------------

TEST_F(OptionsDialog, ChoosingSqlServerEnablesTheConnectionStringAndInternalDisablesIt)
{
    Open();
    ASSERT_FALSE(Enabled(IDC_ED_ADOCONNECTION));
    Click(IDC_RBT_SQLSERVER);
    EXPECT_TRUE(Checked(IDC_RBT_SQLSERVER));
    EXPECT_FALSE(Checked(IDC_RBT_INTERNALDB));
    EXPECT_TRUE(Enabled(IDC_ED_ADOCONNECTION));
    Click(IDC_RBT_INTERNALDB);
    EXPECT_TRUE(Checked(IDC_RBT_INTERNALDB));
    EXPECT_FALSE(Enabled(IDC_ED_ADOCONNECTION));
}

TEST_F(OptionsDialog, EachServerBoxEnablesItsClsidEditAndNewButton)
{
    Open();
    const int rows[][3] = {{IDC_CH_ENABLE_DA, IDC_ED_DA_CLSID, IDC_BT_NEW_DA_CLSID},
                           {IDC_CH_ENABLE_HDA, IDC_ED_HDA_CLSID, IDC_BT_NEW_HDA_CLSID},
                           {IDC_CH_ENABLE_AE, IDC_ED_AE_CLSID, IDC_BT_NEW_AE_CLSID}};
    for (const auto& row : rows) {
        Click(row[0]);
        EXPECT_FALSE(Checked(row[0]));
        EXPECT_FALSE(Enabled(row[1]));
        EXPECT_FALSE(Enabled(row[2]));
        Click(row[0]);
        EXPECT_TRUE(Enabled(row[1]));
        EXPECT_TRUE(Enabled(row[2]));
    }
}

TEST_F(OptionsDialog, PortAndCcmBoxesEnableTheirEdits)
{
    Open();
    Click(IDC_CH_ENABLE_XMLDA);
    EXPECT_FALSE(Enabled(IDC_ED_XMLDA_PORT));
    Click(IDC_CH_ENABLE_XMLDA);
    EXPECT_TRUE(Enabled(IDC_ED_XMLDA_PORT));
    Click(IDC_CH_ENABLE_UA);
    EXPECT_FALSE(Enabled(IDC_ED_UA_PORT));
    Click(IDC_CH_START_CCM);
    EXPECT_TRUE(Enabled(IDC_ED_CCM));
    Click(IDC_CH_START_CCM);
    EXPECT_FALSE(Enabled(IDC_ED_CCM));
}

TEST_F(OptionsDialog, NewPutsAFreshClsidInRegistryFormIntoItsEdit)
{
    Open();
    const int pairs[][2] = {{IDC_BT_NEW_DA_CLSID, IDC_ED_DA_CLSID},
                            {IDC_BT_NEW_HDA_CLSID, IDC_ED_HDA_CLSID},
                            {IDC_BT_NEW_AE_CLSID, IDC_ED_AE_CLSID},
                            {IDC_BT_NEW_CCM_CLSID, IDC_ED_CCM_CLSID}};
    std::set<std::wstring> seen;
    for (const auto& pair : pairs) {
        const std::wstring before = Text(pair[1]);
        Click(pair[0]);
        const std::wstring after = Text(pair[1]);
        GUID parsed = GUID_NULL;
        EXPECT_TRUE(CL::ParseClsid(after, parsed)) << CL::Narrow(after);
        EXPECT_EQ(after, CL::ClsidText(parsed)) << "upper-case registry form";
        EXPECT_NE(after, before);
        seen.insert(after);
    }
    EXPECT_EQ(seen.size(), 4u);
    EXPECT_EQ(server.calls.size(), 0u);
}

// ---- Defaults --------------------------------------------------------------

TEST_F(OptionsDialog, DefaultsPutsTheDocumentedDefaultsIntoTheControlsAndSavesNothing)
{
    g_Settings.Title = L"Northfield";
    g_Settings.ServiceName = L"NorthfieldOpc";
    g_Settings.CustomADOConnection = true;
    g_Settings.ADOConnection = L"Provider=SQLOLEDB.1";
    g_Settings.DAServer_CLSID = GUID_NULL;
    g_Settings.EnableXmlDa = false;
    g_Settings.XmlDaPort = 1;
    g_Settings.UaPort = 2;
    g_Settings.TraceLevel = 4;
    g_Settings.StartEmpty = true;
    const CSettings before = g_Settings;
    Open();
    Click(IDC_BT_DEFAULTS);
    EXPECT_EQ(Text(IDC_ED_TITLE), L"Varnel");
    EXPECT_EQ(Text(IDC_ED_SERVICENAME), L"Morvane");
    EXPECT_TRUE(Checked(IDC_RBT_INTERNALDB));
    EXPECT_FALSE(Enabled(IDC_ED_ADOCONNECTION));
    EXPECT_EQ(Text(IDC_ED_ADOCONNECTION), L"");
    EXPECT_TRUE(Checked(IDC_CH_ENABLE_DA));
    EXPECT_TRUE(Enabled(IDC_ED_DA_CLSID));
    EXPECT_EQ(Text(IDC_ED_DA_CLSID), CL::ClsidText(CL::kDefaultDAServerClsid));
    EXPECT_TRUE(Checked(IDC_CH_ENABLE_XMLDA));
    EXPECT_EQ(Text(IDC_ED_XMLDA_PORT), L"8082");
    EXPECT_EQ(Text(IDC_ED_UA_PORT), L"8083");
    EXPECT_EQ(Text(IDC_CB_LOGGING_LEVEL), L"Warning");
    EXPECT_FALSE(Checked(IDC_CH_START_EMPTY));
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_FALSE(SettingsFileWritten());
    EXPECT_EQ(g_Settings.Title, before.Title);
    EXPECT_EQ(g_Settings.ServiceName, before.ServiceName);
    EXPECT_TRUE(server.calls.empty());
}

// ---- OK: what is stored ----------------------------------------------------

TEST_F(OptionsDialog, UncheckingDaStoresTheNullGuidAndReopeningShowsItUncheckedAndEmpty)
{
    Answers answers;
    Open();
    Click(IDC_CH_ENABLE_DA);
    Click(IDC_BT_NEW_HDA_CLSID);   // a fresh, unregistered HDA CLSID
    const std::wstring hda = Text(IDC_ED_HDA_CLSID);
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied()) << answers.Seen().size() << " boxes";
    EXPECT_TRUE(::IsEqualGUID(g_Settings.DAServer_CLSID, GUID_NULL));
    EXPECT_EQ(CL::ClsidText(g_Settings.HDAServer_CLSID), hda);
    CSettings onDisk;
    LoadSettingsFrom(folder.File(CL::kSettingsFileName), onDisk);
    EXPECT_TRUE(::IsEqualGUID(onDisk.DAServer_CLSID, GUID_NULL));

    CdlgOptions again(server, folder.Path());
    ASSERT_TRUE(again.Create(nullptr, IDD_OPTIONS));
    EXPECT_FALSE(test::IsChecked(again, IDC_CH_ENABLE_DA));
    EXPECT_EQ(test::ItemText(again, IDC_ED_DA_CLSID), L"");
    EXPECT_FALSE(test::IsEnabled(again, IDC_ED_DA_CLSID));
}

TEST_F(OptionsDialog, OkStoresEveryControlIntoTheSettings)
{
    Answers answers;
    Open();
    SetText(IDC_ED_TITLE, L"  Northfield ");
    SetText(IDC_ED_SERVICENAME, L"NorthfieldOpc");
    Click(IDC_RBT_SQLSERVER);
    SetText(IDC_ED_ADOCONNECTION, L"Provider=SQLOLEDB.1;Data Source=DB1");
    Click(IDC_CH_START_CCM);
    SetText(IDC_ED_CCM, L"ccm.exe");
    Click(IDC_CH_START_EMPTY);
    Click(IDC_CH_MAP_ITEMS);
    SetText(IDC_ED_XMLDA_PORT, L"9090");
    Click(IDC_CH_ENABLE_UA);
    ::SendDlgItemMessageW(dialog, IDC_CB_LOGGING_LEVEL, CB_SETCURSEL, 3, 0);
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    EXPECT_EQ(g_Settings.Title, L"Northfield");
    EXPECT_EQ(g_Settings.ServiceName, L"NorthfieldOpc");
    EXPECT_TRUE(g_Settings.CustomADOConnection);
    EXPECT_EQ(g_Settings.ADOConnection, L"Provider=SQLOLEDB.1;Data Source=DB1");
    EXPECT_TRUE(g_Settings.StartCCM);
    EXPECT_EQ(g_Settings.CCM, L"ccm.exe");
    EXPECT_TRUE(g_Settings.StartEmpty);
    EXPECT_TRUE(g_Settings.MapItemsToFiles);
    EXPECT_TRUE(g_Settings.EnableXmlDa);
    EXPECT_EQ(g_Settings.XmlDaPort, 9090);
    EXPECT_FALSE(g_Settings.EnableUa);
    EXPECT_EQ(g_Settings.TraceLevel, 3);
    CSettings onDisk;
    LoadSettingsFrom(folder.File(CL::kSettingsFileName), onDisk);
    EXPECT_EQ(onDisk.ServiceName, L"NorthfieldOpc");
    EXPECT_EQ(onDisk.XmlDaPort, 9090);
}

TEST_F(OptionsDialog, LoggingLevelWithNothingSelectedBecomesWarning)
{
    g_Settings.TraceLevel = -3;   // selects nothing in the list
    Answers answers;
    Open();
    ASSERT_EQ(::SendDlgItemMessageW(dialog, IDC_CB_LOGGING_LEVEL, CB_GETCURSEL, 0, 0), CB_ERR);
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    EXPECT_EQ(g_Settings.TraceLevel, 1);
}

// ---- OK: CLSIDs in use -----------------------------------------------------

TEST_F(OptionsDialog, ChangedClsidRegisteredByOtherSoftwareIsRefusedNamingTheField)
{
    RegisteredClsid other;
    Answers answers;
    Open();
    SetText(IDC_ED_DA_CLSID, other.Text());
    Click(IDOK);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Options");
    EXPECT_EQ(seen[0].text, InUseText(L"OPC DA Server CLSID"));
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_FALSE(dialog.Applied());
    EXPECT_TRUE(server.calls.empty()) << "nothing asked, stopped or run";
    EXPECT_FALSE(SettingsFileWritten());
    EXPECT_TRUE(::IsEqualGUID(g_Settings.DAServer_CLSID, CL::kDefaultDAServerClsid));
    EXPECT_EQ(FocusedId(), IDC_ED_DA_CLSID);
}

struct InUseOrderCase {
    const char* name;
    int unchangedUpTo;   // how many of HDA, AE, DA, CCM keep their CLSID
    const wchar_t* field;
};

class ClsidInUseOrder : public OptionsDialog, public testing::WithParamInterface<InUseOrderCase> {};

// All four CLSIDs are changed to registered ones, except the first few in
// the checking order; the message names the first changed one.
TEST_P(ClsidInUseOrder, IsHdaAeDaCcm)
{
    const InUseOrderCase c = GetParam();
    RegisteredClsid registered[4];
    const int edits[] = {IDC_ED_HDA_CLSID, IDC_ED_AE_CLSID, IDC_ED_DA_CLSID, IDC_ED_CCM_CLSID};
    Answers answers;
    Open();
    for (int i = c.unchangedUpTo; i < 4; ++i)
        SetText(edits[i], registered[i].Text());
    Click(IDOK);
    const std::vector<std::wstring> texts = answers.Texts();
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0], InUseText(c.field));
    EXPECT_TRUE(server.calls.empty());
}

INSTANTIATE_TEST_SUITE_P(Fields, ClsidInUseOrder,
                         testing::Values(InUseOrderCase{"FirstHda", 0, L"OPC HDA Server CLSID"},
                                         InUseOrderCase{"ThenAe", 1, L"OPC AE Server CLSID"},
                                         InUseOrderCase{"ThenDa", 2, L"OPC DA Server CLSID"},
                                         InUseOrderCase{"LastCcm", 3, L"CCM Server CLSID"}),
                         [](const testing::TestParamInfo<InUseOrderCase>& info) { return std::string(info.param.name); });

TEST_F(OptionsDialog, UnchangedClsidIsNeverChecked)
{
    RegisteredClsid registered;
    g_Settings.DAServer_CLSID = registered.Clsid();   // the product's own registration
    g_Settings.CcmServer_CLSID = registered.Clsid();
    Answers answers(IDNO);
    Open();
    Click(IDOK);
    EXPECT_EQ(answers.Texts(), std::vector<std::wstring>{kRestartQuestion});
}

// ---- OK: the restart question ----------------------------------------------

class RestartAnswer : public OptionsDialog, public testing::WithParamInterface<int> {};

TEST_P(RestartAnswer, OtherThanYesChangesNothingAndTheServiceKeepsRunning)
{
    server.running = true;
    Answers answers(GetParam());
    Open();
    SetText(IDC_ED_TITLE, L"Northfield");
    Click(IDOK);
    EXPECT_EQ(answers.Texts(), std::vector<std::wstring>{kRestartQuestion});
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Ok");
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_TRUE(server.calls.empty());
    EXPECT_TRUE(server.running);
    EXPECT_EQ(g_Settings.Title, L"Varnel");
    EXPECT_FALSE(SettingsFileWritten());
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
}

INSTANTIATE_TEST_SUITE_P(NoAndCancel, RestartAnswer, testing::Values(IDNO, IDCANCEL),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::string(info.param == IDNO ? "No" : "Cancel");
                         });

// ---- OK: the apply sequence ------------------------------------------------

TEST_F(OptionsDialog, OkRestartsARunningServiceUnderItsNewNameInTheDocumentedOrder)
{
    g_Settings.ServiceName = L"OldName";
    server.running = true;
    Answers answers;
    Open();
    SetText(IDC_ED_SERVICENAME, L"NewName");
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    const std::wstring exe = L"\"" + folder.File(L"Morvane.exe") + L"\"";
    const std::vector<std::wstring> expected = {Call(L"running?", L"OldName"), Call(L"stop", L"OldName"),
                                                Call(L"run", exe + L" /u"), Call(L"run", exe + L" /i"),
                                                Call(L"start", L"NewName")};
    EXPECT_EQ(server.calls, expected);
    ASSERT_EQ(server.looks.size(), 2u);
    EXPECT_EQ(server.looks[0].backups, 0u) << "no backup before /u";
    EXPECT_EQ(server.looks[0].settingsServiceName, L"") << "no settings file before /u";
    EXPECT_EQ(server.looks[1].backups, 1u) << "the backup is written before /i";
    EXPECT_EQ(server.looks[1].settingsServiceName, L"NewName") << "the new settings are saved before /i";
}

TEST_F(OptionsDialog, OkDoesNotStartAStoppedService)
{
    server.running = false;
    Answers answers;
    Open();
    SetText(IDC_ED_SERVICENAME, L"NewName");
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    for (const std::wstring& call : server.calls)
        EXPECT_NE(call.rfind(L"start ", 0), 0u) << CL::Narrow(call);
    EXPECT_EQ(server.calls.size(), 4u);
}

TEST_F(OptionsDialog, OkWritesTheOldSettingsAsBackupAndNamesItsFullPath)
{
    g_Settings.Title = L"Before";
    Answers answers;
    Open();
    SetText(IDC_ED_TITLE, L"After");
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    const std::vector<std::wstring> backups = test::BackupFiles(folder.Path());
    ASSERT_EQ(backups.size(), 1u);
    CSettings backup;
    LoadSettingsFrom(backups[0], backup);
    EXPECT_EQ(backup.Title, L"Before");
    CSettings saved;
    LoadSettingsFrom(folder.File(CL::kSettingsFileName), saved);
    EXPECT_EQ(saved.Title, L"After");
    EXPECT_EQ(dialog.BackupPath(), backups[0]);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[1].title, L"Ok");
    EXPECT_EQ(seen[1].text, kAppliedPrefix + backups[0]);
    EXPECT_FALSE(::IsWindow(dialog)) << "closed after the success message";
}

// ---- OK: failures in the middle --------------------------------------------

// The real process runner with no Morvane.exe in the folder: the service is
// stopped, then the error report; no backup, no new settings, dialog open.
TEST_F(OptionsDialog, MissingServerExecutableEndsInTheErrorReportWithTheDialogOpen)
{
    server.running = true;
    server.runner = [](const std::wstring& commandLine) { return CL::RunProcessAndWait(commandLine); };
    Answers answers;
    Open();
    SetText(IDC_ED_TITLE, L"Northfield");
    Click(IDOK);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].text, kRestartQuestion);
    EXPECT_NE(seen[1].text.find(L"CreateProcess"), std::wstring::npos) << CL::Narrow(seen[1].text);
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_FALSE(dialog.Applied());
    EXPECT_FALSE(server.running) << "the stop is not undone";
    ASSERT_EQ(server.calls.size(), 3u);
    EXPECT_EQ(server.calls[1], L"stop Morvane");
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_FALSE(SettingsFileWritten());
    EXPECT_EQ(g_Settings.Title, L"Varnel");
}

// Service control through the scripted manager (the time-outs of the
// service itself are results: OptionsApplyFailureTest).
TEST_F(OptionsDialog, DependentThatDoesNotStopInTimeEndsInTheErrorReportWithTheDialogOpen)
{
    test::FakeServiceManager manager;
    manager.Add(L"Morvane", SERVICE_RUNNING).dependents = {L"Client"};
    test::FakeServiceManager::Service& client = manager.Add(L"Client", SERVICE_RUNNING);
    client.stopDuration = test::FakeServiceManager::kNever;
    client.stopWaitHint = 1000;
    test::ScopedServiceManager scoped(manager);
    CL::CServerProcessControl real;
    CdlgOptions options(real, folder.Path());
    ASSERT_TRUE(options.Create(nullptr, IDD_OPTIONS));
    Answers answers;
    test::Click(options, IDOK);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_TRUE(::IsWindow(options));
    EXPECT_EQ(manager.Get(L"Morvane").state, static_cast<DWORD>(SERVICE_RUNNING)) << "the server is not stopped";
    EXPECT_TRUE(test::BackupFiles(folder.Path()).empty());
    EXPECT_FALSE(SettingsFileWritten());
}

// ---- OK: input that cannot be right ----------------------------------------

struct BadInputCase {
    const char* name;
    int edit;
    const wchar_t* text;
    const wchar_t* field;   // a part of the message that names the field
};

class BadInput : public OptionsDialog, public testing::WithParamInterface<BadInputCase> {};

TEST_P(BadInput, IsRefusedNamingTheFieldWithTheFocusOnItBeforeAnythingIsStopped)
{
    const BadInputCase c = GetParam();
    server.running = true;
    Answers answers;
    Open();
    Click(IDC_RBT_SQLSERVER);
    SetText(IDC_ED_ADOCONNECTION, L"Provider=SQLOLEDB.1");
    SetText(c.edit, c.text);
    Click(IDOK);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Options");
    EXPECT_NE(seen[0].text.find(c.field), std::wstring::npos) << CL::Narrow(seen[0].text);
    EXPECT_EQ(FocusedId(), c.edit);
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_TRUE(server.calls.empty());
    EXPECT_FALSE(SettingsFileWritten());
}

INSTANTIATE_TEST_SUITE_P(
    Fields, BadInput,
    testing::Values(BadInputCase{"DaClsidCutShort", IDC_ED_DA_CLSID, L"{6E2D1A41-3B7C-4F8E-9A51}", L"'OPC DA Server CLSID'"},
                    BadInputCase{"HdaClsidAProgramId", IDC_ED_HDA_CLSID, L"Msxml2.DOMDocument.3.0", L"'OPC HDA Server CLSID'"},
                    BadInputCase{"AeClsidEmpty", IDC_ED_AE_CLSID, L"", L"'OPC AE Server CLSID'"},
                    BadInputCase{"CcmClsidNotHex", IDC_ED_CCM_CLSID, L"{ZZZZZZZZ-3B7C-4F8E-9A51-0C4D2B7E8A01}", L"'CCM Server CLSID'"},
                    BadInputCase{"XmlDaPortZero", IDC_ED_XMLDA_PORT, L"0", L"OPC XML DA Server"},
                    BadInputCase{"XmlDaPortAbove65535", IDC_ED_XMLDA_PORT, L"65536", L"OPC XML DA Server"},
                    BadInputCase{"UaPortEmpty", IDC_ED_UA_PORT, L"", L"OPC UA Server"},
                    BadInputCase{"TitleBlank", IDC_ED_TITLE, L"   ", L"'Title'"},
                    BadInputCase{"ServiceNameEmpty", IDC_ED_SERVICENAME, L"", L"'Service Name'"},
                    BadInputCase{"ServiceNameWithBackslash", IDC_ED_SERVICENAME, L"Opc\\Server", L"'Service Name'"},
                    BadInputCase{"ConnectionStringBlank", IDC_ED_ADOCONNECTION, L"  ", L"'OLEDB connection string'"}),
    [](const testing::TestParamInfo<BadInputCase>& info) { return std::string(info.param.name); });

TEST_F(OptionsDialog, PortsAtTheEndsOfTheRangeAreTaken)
{
    Answers answers;
    Open();
    SetText(IDC_ED_XMLDA_PORT, L"1");
    SetText(IDC_ED_UA_PORT, L"65535");
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    EXPECT_EQ(g_Settings.XmlDaPort, 1);
    EXPECT_EQ(g_Settings.UaPort, 65535);
}

TEST_F(OptionsDialog, MalformedClsidOfADisabledServerIsNotChecked)
{
    Answers answers;
    Open();
    Click(IDC_CH_ENABLE_AE);
    SetText(IDC_ED_AE_CLSID, L"not a clsid");
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    EXPECT_TRUE(::IsEqualGUID(g_Settings.AEServer_CLSID, GUID_NULL));
}

// ---- trace lines -----------------------------------------------------------

TEST_F(OptionsDialog, HandlersWriteTheirTraceLines)
{
    test::LogCapture log(3);
    Open();
    Click(IDC_CH_ENABLE_DA);
    Click(IDC_BT_NEW_CCM_CLSID);
    Click(IDC_BT_DEFAULTS);
    Click(IDCANCEL);
    EXPECT_TRUE(log.ContainsLike(3, "CdlgOptions::OnInitDialog [dlgOptions, ", "]")) << log.Dump();
    EXPECT_TRUE(log.ContainsLike(3, "CdlgOptions::OnBnClickedEnableDA [dlgOptions, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgOptions::OnClickedNewCcmClsid [dlgOptions, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgOptions::OnClickedDefaults [dlgOptions, ", "]"));
    EXPECT_TRUE(log.ContainsLike(3, "CdlgOptions::OnClickedCancel [dlgOptions, ", "]"));
    EXPECT_FALSE(::IsWindow(dialog));
}

// ---- the database maintenance options through the options dialog ----------

namespace {

// Waits for the database maintenance dialog that the options dialog opens,
// changes it with `drive` and closes it with the button `closeWith`.
class DbOptionsDriver {
public:
    DbOptionsDriver(std::function<void(HWND)> drive, int closeWith)
        : m_thread([this, drive, closeWith] {
              const test::MessageBoxInfo box = test::WaitForMessageBox(0, 10s, L"Database Maintenance Options");
              if (!box.hwnd)
                  return;
              m_seen = true;
              drive(box.hwnd);
              test::Click(box.hwnd, closeWith);
          })
    {
    }
    ~DbOptionsDriver()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    bool Seen()
    {
        if (m_thread.joinable())
            m_thread.join();
        return m_seen;
    }

private:
    bool m_seen = false;
    std::thread m_thread;
};

void ChangeRetention(HWND db)
{
    test::Click(db, IDC_CH_KEEP_ALL);   // off: both limits on
    test::SetItemText(db, IDC_ED_KEEP_NUMBER, L"500");
    test::SetItemText(db, IDC_ED_KEEP_MINUTES, L"60");
    test::SetItemText(db, IDC_ED_DELETE_PERCENT, L"150");
}

} // namespace

TEST_F(OptionsDialog, DatabaseValuesReachTheSettingsOnlyThroughOk)
{
    Open();
    {
        DbOptionsDriver driver(ChangeRetention, IDOK);
        Click(IDC_BT_DBOPTIONS);
        ASSERT_TRUE(driver.Seen());
    }
    EXPECT_TRUE(g_Settings.DbKeepAllValues) << "not before OK";
    EXPECT_FALSE(SettingsFileWritten());
    Answers answers;
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    CSettings onDisk;
    LoadSettingsFrom(folder.File(CL::kSettingsFileName), onDisk);
    for (const CSettings* s : {static_cast<const CSettings*>(&g_Settings), static_cast<const CSettings*>(&onDisk)}) {
        EXPECT_FALSE(s->DbKeepAllValues);
        EXPECT_TRUE(s->DbKeepLastValues);
        EXPECT_EQ(s->DbLastValues, 500);
        EXPECT_TRUE(s->DbKeepLastMinutesValues);
        EXPECT_EQ(s->DbLastMinutesValues, 60);
        EXPECT_EQ(s->DbDeletePercent, 150);
    }
}

TEST_F(OptionsDialog, DatabaseValuesChangedThenCancelNeverReachTheSettingsFile)
{
    Open();
    {
        DbOptionsDriver driver(ChangeRetention, IDOK);
        Click(IDC_BT_DBOPTIONS);
        ASSERT_TRUE(driver.Seen());
    }
    Click(IDCANCEL);
    EXPECT_FALSE(::IsWindow(dialog));
    EXPECT_FALSE(dialog.Applied());
    EXPECT_FALSE(SettingsFileWritten());
    EXPECT_TRUE(g_Settings.DbKeepAllValues);
    EXPECT_EQ(g_Settings.DbLastValues, 1000);
    EXPECT_EQ(g_Settings.DbDeletePercent, 50);
    EXPECT_TRUE(server.calls.empty());
}

TEST_F(OptionsDialog, DatabaseDialogCancelledKeepsTheValuesItWasGiven)
{
    Open();
    {
        DbOptionsDriver driver(ChangeRetention, IDCANCEL);
        Click(IDC_BT_DBOPTIONS);
        ASSERT_TRUE(driver.Seen());
    }
    Answers answers;
    Click(IDOK);
    ASSERT_TRUE(dialog.Applied());
    EXPECT_TRUE(g_Settings.DbKeepAllValues);
    EXPECT_EQ(g_Settings.DbLastValues, 1000);
    EXPECT_EQ(g_Settings.DbDeletePercent, 50);
}

TEST_F(OptionsDialog, DatabaseNumberThatIsNotANumberIsRefusedByOkBeforeAnythingIsStopped)
{
    server.running = true;
    Open();
    {
        DbOptionsDriver driver(
            [](HWND db) {
                test::Click(db, IDC_CH_KEEP_NUMBER);
                test::SetItemText(db, IDC_ED_KEEP_NUMBER, L"12x");
            },
            IDOK);
        Click(IDC_BT_DBOPTIONS);
        ASSERT_TRUE(driver.Seen());
    }
    Answers answers;
    Click(IDOK);
    const std::vector<test::MessageBoxInfo> seen = answers.Seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, L"Options");
    EXPECT_NE(seen[0].text.find(L"'Keep the last ... values.'"), std::wstring::npos) << CL::Narrow(seen[0].text);
    EXPECT_NE(seen[0].text.find(L"Database Maintenance Options"), std::wstring::npos);
    EXPECT_EQ(FocusedId(), IDC_BT_DBOPTIONS);
    EXPECT_TRUE(::IsWindow(dialog));
    EXPECT_TRUE(server.calls.empty());
    EXPECT_FALSE(SettingsFileWritten());
}
