// The layout of the options dialog and the database maintenance options
// dialog at the default dialog font: every text fits its control, mnemonics
// are unique, the tab order follows the screen, the controls lie in the
// groups that name them, the CLSID and connection-string edits show a whole
// value, and each dialog fits a 1024 x 768 screen.
#include <gtest/gtest.h>
#include <windows.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/Text.h"
#include "common/ui/Dpi.h"
#include "config/Settings.h"
#include "config/dlgDbOptions.h"
#include "config/dlgOptions.h"
#include "OptionsTestSupport.h"
#include "WindowGeometry.h"
#include "res/resource.h"
#include "support/ProcessState.h"

namespace {

struct Control {
    HWND hwnd;
    int id;
    std::wstring className;
    LONG style;
    std::wstring text;
    RECT rect;   // in the dialog's client coordinates
};

std::vector<Control> Controls(HWND dialog)
{
    std::vector<Control> controls;
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
        Control c{child, ::GetDlgCtrlID(child), L"", static_cast<LONG>(::GetWindowLongPtrW(child, GWL_STYLE)),
                  test::WindowText(child), {}};
        wchar_t cls[64] = {};
        ::GetClassNameW(child, cls, 64);
        c.className = cls;
        ::GetWindowRect(child, &c.rect);
        ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&c.rect), 2);
        controls.push_back(c);
    }
    return controls;
}

bool IsButton(const Control& c)
{
    return CL::EqualsNoCase(c.className, L"Button");
}

LONG ButtonType(const Control& c)
{
    return c.style & BS_TYPEMASK;
}

// The text as drawn, and its mnemonic.
std::wstring Drawn(const std::wstring& text)
{
    return test::DrawnText(text);
}

wchar_t Mnemonic(const std::wstring& text)
{
    return test::MnemonicOf(text);
}

// The width of a text in the dialog's font, in pixels.
int TextWidth(HWND dialog, const std::wstring& text)
{
    const HDC dc = ::GetDC(dialog);
    const HGDIOBJ old = ::SelectObject(dc, reinterpret_cast<HGDIOBJ>(::SendMessageW(dialog, WM_GETFONT, 0, 0)));
    RECT r = {0, 0, 0, 0};
    ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &r, DT_CALCRECT | DT_SINGLELINE | DT_NOPREFIX);
    ::SelectObject(dc, old);
    ::ReleaseDC(dialog, dc);
    return r.right - r.left;
}

int LineHeight(HWND dialog)
{
    const HDC dc = ::GetDC(dialog);
    const HGDIOBJ old = ::SelectObject(dc, reinterpret_cast<HGDIOBJ>(::SendMessageW(dialog, WM_GETFONT, 0, 0)));
    TEXTMETRICW tm = {};
    ::GetTextMetricsW(dc, &tm);
    ::SelectObject(dc, old);
    ::ReleaseDC(dialog, dc);
    return tm.tmHeight;
}

// The room a control's text has: its width less the check box or radio
// glyph, the push button's border or the group box's frame.
int RoomForText(const Control& c)
{
    const int width = c.rect.right - c.rect.left;
    if (!IsButton(c))
        return width;
    switch (ButtonType(c)) {
    case BS_AUTOCHECKBOX:
    case BS_CHECKBOX:
    case BS_AUTORADIOBUTTON:
    case BS_RADIOBUTTON:
        return width - ::GetSystemMetrics(SM_CXMENUCHECK) - 4;
    case BS_GROUPBOX:
        return width - 16;
    default:
        return width - 8;
    }
}

// Both dialogs, created hidden from their templates.
class DialogLayout : public testing::TestWithParam<int> {
    // Puts the settings record back after each test (after TearDown).
    test::SettingsKeeper m_keepSettings;

protected:
    void SetUp() override
    {
        g_Settings = CSettings();
        if (GetParam() == IDD_OPTIONS)
            m_hwnd = m_options.Create(nullptr, IDD_OPTIONS);
        else
            m_hwnd = m_db.Create(nullptr, IDD_DBOPTIONS);
        ASSERT_NE(m_hwnd, nullptr);
    }
    HWND Dialog() const { return m_hwnd; }

    test::TempDir m_folder;
    test::FakeServerControl m_server{m_folder.Path()};
    CdlgOptions m_options{m_server, m_folder.Path()};
    CdlgDbOptions m_db{CDbRetention{}};
    HWND m_hwnd = nullptr;
};

} // namespace

TEST_P(DialogLayout, EveryTextFitsItsControlAtTheDialogFont)
{
    for (const Control& c : Controls(Dialog())) {
        const bool textControl = IsButton(c) || CL::EqualsNoCase(c.className, L"Static");
        if (!textControl || c.text.empty())
            continue;
        EXPECT_LE(TextWidth(Dialog(), Drawn(c.text)), RoomForText(c)) << CL::Narrow(c.text);
    }
}

TEST_P(DialogLayout, MnemonicsAreUniqueAndEveryInputHasOne)
{
    std::map<wchar_t, std::wstring> taken;
    const std::vector<Control> controls = Controls(Dialog());
    for (size_t i = 0; i < controls.size(); ++i) {
        const Control& c = controls[i];
        const bool newButton = c.text == L"Ne&w";
        const bool okOrCancel = c.id == IDOK || c.id == IDCANCEL;
        const bool groupBox = IsButton(c) && ButtonType(c) == BS_GROUPBOX;
        if (!IsButton(c) && !CL::EqualsNoCase(c.className, L"Static"))
            continue;
        const wchar_t key = Mnemonic(c.text);
        // A label needs a mnemonic when the control after it takes input.
        const bool labelOfInput = CL::EqualsNoCase(c.className, L"Static") && i + 1 < controls.size() &&
                                  (CL::EqualsNoCase(controls[i + 1].className, L"Edit") ||
                                   CL::EqualsNoCase(controls[i + 1].className, L"ComboBox"));
        const bool needsOne = (IsButton(c) && !okOrCancel && !groupBox) || labelOfInput;
        if (needsOne) {
            EXPECT_NE(key, 0) << "no mnemonic: " << CL::Narrow(c.text);
        }
        if (key == 0 || newButton)
            continue;   // the four "New" buttons share theirs, in screen order
        EXPECT_TRUE(taken.emplace(key, c.text).second)
            << "'" << static_cast<char>(key) << "' of " << CL::Narrow(c.text) << " also in " << CL::Narrow(taken[key]);
    }
}

TEST_P(DialogLayout, TabOrderFollowsTheScreenLineByLine)
{
    std::vector<Control> stops;
    for (const Control& c : Controls(Dialog()))
        if (c.style & WS_TABSTOP)
            stops.push_back(c);
    ASSERT_GT(stops.size(), 3u);
    for (size_t i = 1; i < stops.size(); ++i) {
        const Control& a = stops[i - 1];
        const Control& b = stops[i];
        const bool sameLine = b.rect.top < a.rect.bottom && a.rect.top < b.rect.bottom &&
                              std::abs((b.rect.top + b.rect.bottom) - (a.rect.top + a.rect.bottom)) < 16;
        if (sameLine) {
            EXPECT_GT(b.rect.left, a.rect.left) << CL::Narrow(a.text) << " #" << a.id << " -> #" << b.id;
        } else {
            EXPECT_GE(b.rect.top, a.rect.top) << CL::Narrow(a.text) << " #" << a.id << " -> #" << b.id;
        }
    }
}

TEST_P(DialogLayout, FitsA1024By768Screen)
{
    if (CL::CDpi::Of(Dialog()).Value() != CL::CDpi::kDefault)
        GTEST_SKIP() << "a 1024 x 768 screen runs at 96 dpi; EveryWindow/WindowLayout checks the screen of other DPIs";
    RECT r = {};
    ::GetWindowRect(Dialog(), &r);
    EXPECT_LE(r.right - r.left, 1024);
    EXPECT_LE(r.bottom - r.top, 768 - 48);
}

INSTANTIATE_TEST_SUITE_P(OptionsAndDatabase, DialogLayout, testing::Values(IDD_OPTIONS, IDD_DBOPTIONS),
                         [](const testing::TestParamInfo<int>& info) {
                             return info.param == IDD_OPTIONS ? std::string("Options") : std::string("Database");
                         });

namespace {

bool Inside(HWND dialog, int group, int id)
{
    RECT g = {}, c = {};
    ::GetWindowRect(::GetDlgItem(dialog, group), &g);
    ::GetWindowRect(::GetDlgItem(dialog, id), &c);
    return c.left > g.left && c.right < g.right && c.top > g.top && c.bottom < g.bottom;
}

} // namespace

TEST(OptionsLayout, ControlsLieInTheGroupsThatNameThem)
{
    test::TempDir folder;
    test::FakeServerControl server(folder.Path());
    CdlgOptions options(server, folder.Path());
    const HWND dialog = options.Create(nullptr, IDD_OPTIONS);
    ASSERT_NE(dialog, nullptr);
    const std::map<int, std::vector<int>> groups = {
        {IDC_OPT_GRP_DATABASE, {IDC_RBT_INTERNALDB, IDC_RBT_SQLSERVER, IDC_ED_ADOCONNECTION, IDC_BT_DBOPTIONS}},
        {IDC_OPT_GRP_CUSTOMISATION,
         {IDC_ED_TITLE, IDC_ST_TITLE_NOTE, IDC_ED_SERVICENAME, IDC_CH_ENABLE_DA, IDC_ED_DA_CLSID, IDC_BT_NEW_DA_CLSID,
          IDC_CH_ENABLE_HDA, IDC_ED_HDA_CLSID, IDC_BT_NEW_HDA_CLSID, IDC_CH_ENABLE_AE, IDC_ED_AE_CLSID,
          IDC_BT_NEW_AE_CLSID, IDC_ED_CCM_CLSID, IDC_BT_NEW_CCM_CLSID}},
        {IDC_OPT_GRP_MISC,
         {IDC_CH_START_CCM, IDC_ED_CCM, IDC_ST_CCM_NOTE, IDC_CH_START_EMPTY, IDC_CH_MAP_ITEMS, IDC_CH_ENABLE_XMLDA,
          IDC_ED_XMLDA_PORT, IDC_ST_XMLDA_PATH, IDC_CH_ENABLE_UA, IDC_ED_UA_PORT, IDC_ST_UA_PATH,
          IDC_CB_LOGGING_LEVEL}},
    };
    for (const auto& [group, ids] : groups)
        for (int id : ids)
            EXPECT_TRUE(Inside(dialog, group, id)) << "control " << id << " outside group " << group;
    for (int id : {IDC_BT_DEFAULTS, IDOK, IDCANCEL})
        for (const auto& [group, ids] : groups)
            EXPECT_FALSE(Inside(dialog, group, id)) << "button " << id << " inside group " << group;
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDC_OPT_GRP_DATABASE)), L"OPC HDA Server Database");
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDC_OPT_GRP_CUSTOMISATION)), L"OPC Server Customisation");
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDC_OPT_GRP_MISC)), L"Miscellaneous");
}

TEST(DbOptionsLayout, ControlsLieInTheGroupsThatNameThem)
{
    CdlgDbOptions db{CDbRetention{}};
    const HWND dialog = db.Create(nullptr, IDD_DBOPTIONS);
    ASSERT_NE(dialog, nullptr);
    for (int id : {IDC_CH_KEEP_ALL, IDC_CH_KEEP_NUMBER, IDC_ED_KEEP_NUMBER, IDC_CH_KEEP_MINUTES,
                   IDC_ED_KEEP_MINUTES, IDC_ST_DB_NOTE})
        EXPECT_TRUE(Inside(dialog, IDC_DB_GRP_VALUES, id)) << id;
    EXPECT_TRUE(Inside(dialog, IDC_DB_GRP_LIMIT, IDC_ED_DELETE_PERCENT));
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDC_DB_GRP_VALUES)), L"OPC item values");
    EXPECT_EQ(test::WindowText(::GetDlgItem(dialog, IDC_DB_GRP_LIMIT)),
              L"Action upon the database reaches its limit (Internal database only)");
    EXPECT_EQ(test::WindowText(dialog), L"Database Maintenance Options");
}

TEST(OptionsLayout, EveryClsidEditShowsAWholeClsid)
{
    test::TempDir folder;
    test::FakeServerControl server(folder.Path());
    CdlgOptions options(server, folder.Path());
    const HWND dialog = options.Create(nullptr, IDD_OPTIONS);
    ASSERT_NE(dialog, nullptr);
    for (int id : {IDC_ED_DA_CLSID, IDC_ED_HDA_CLSID, IDC_ED_AE_CLSID, IDC_ED_CCM_CLSID}) {
        const HWND edit = ::GetDlgItem(dialog, id);
        RECT client = {};
        ::GetClientRect(edit, &client);
        const LRESULT margins = ::SendMessageW(edit, EM_GETMARGINS, 0, 0);
        const int room = client.right - LOWORD(margins) - HIWORD(margins);
        for (const wchar_t digit : std::wstring(L"0123456789ABCDEF")) {
            std::wstring clsid = L"{" + std::wstring(8, digit) + L"-" + std::wstring(4, digit) + L"-" +
                                 std::wstring(4, digit) + L"-" + std::wstring(4, digit) + L"-" +
                                 std::wstring(12, digit) + L"}";
            EXPECT_LT(TextWidth(dialog, clsid), room) << CL::Narrow(clsid);
        }
    }
}

TEST(OptionsLayout, ConnectionStringEditShowsARealStringWhole)
{
    test::TempDir folder;
    test::FakeServerControl server(folder.Path());
    CdlgOptions options(server, folder.Path());
    const HWND dialog = options.Create(nullptr, IDD_OPTIONS);
    ASSERT_NE(dialog, nullptr);
    const std::wstring connection =
        L"Provider=SQLOLEDB.1;Integrated Security=SSPI;Persist Security Info=False;"
        L"Initial Catalog=MorvaneHistorian;Data Source=HISTSRV01\\SQLEXPRESS;Application Name=Morvane";
    const HWND edit = ::GetDlgItem(dialog, IDC_ED_ADOCONNECTION);
    ::SetWindowTextW(edit, connection.c_str());
    RECT client = {};
    ::GetClientRect(edit, &client);
    const LRESULT lines = ::SendMessageW(edit, EM_GETLINECOUNT, 0, 0);
    EXPECT_GE(lines, 1);
    EXPECT_LE(lines * LineHeight(dialog), client.bottom) << lines << " lines";
}
