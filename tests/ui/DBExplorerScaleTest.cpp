// The database explorer at plant scale, over a real database (SQLite and
// PostgreSQL): the filter box with its status text and keys, copy and
// select all, and "Export values..." of several items as XML (checked
// element by element) and CSV (byte for byte against the hand-written file
// of the zone the test runs in), cancelled with Esc or failing halfway with
// nothing written.
#include "HistWinFixture.h"
#include "HistExportSupport.h"

#include "common/Bstr.h"
#include "common/MsXml.h"
#include "common/Text.h"
#include "common/Variant.h"
#include "common/ui/WorkProgress.h"
#include "historian/dlgDBExplorer.h"
#include "res/resource.h"
#include "support/MenuCapture.h"

using namespace histwin_test;

namespace {

constexpr wchar_t kExportCaption[] = L"Export values of the selected items";

class DBExplorerScale : public HistorianWindowTest {
protected:
    void Open()
    {
        ASSERT_NE(m_explorer.Create(), nullptr);
        ::ShowWindow(m_explorer, SW_SHOW);
    }
    HWND List() const { return m_explorer.List().Hwnd(); }
    HWND FilterEdit() { return m_explorer.FilterBar().Edit(); }
    void Command(WORD id) { ::SendMessageW(m_explorer, WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    std::vector<std::wstring> Ids() const { return Column(List(), 0); }
    void Type(const wchar_t* text) { ::SetWindowTextW(FilterEdit(), text); }
    std::wstring Status() const
    {
        wchar_t text[512] = {};
        ::SendMessageW(m_explorer.Bars().StatusBar(), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(text));
        return text;
    }
    // A key as the program's message loop hands it to the window first.
    bool PreTranslateKey(HWND target, WORD key)
    {
        MSG msg = {target, WM_KEYDOWN, key, 0, 0, {0, 0}};
        return m_explorer.PreTranslateMessage(msg);
    }

    CdlgDBExplorer m_explorer{m_historian};
};

using DBExplorerFilter = DBExplorerScale;
using DBExplorerExport = DBExplorerScale;

std::wstring ExpectedItemsCsv()
{
    const long minutes = test::LocalOffsetMinutesNow();
    return CL::Format(L"Z:" MORVANE_TEST_DATA_DIR L"/histwin/export-items%+03ld%02ld.csv", minutes / 60,
                      std::labs(minutes % 60));
}

// The elements a path selects below a node.
std::vector<CL::XmlElement> Elements(IXMLDOMNode* node, const wchar_t* path)
{
    std::vector<CL::XmlElement> elements;
    CL::ComPtr<IXMLDOMNodeList> nodes;
    node->selectNodes(CL::CBstr(path).Get(), nodes.ReleaseAndGetAddressOf());
    long count = 0;
    nodes->get_length(&count);
    for (long i = 0; i < count; ++i) {
        CL::XmlNode found;
        nodes->get_item(i, found.ReleaseAndGetAddressOf());
        CL::XmlElement element;
        found.QueryInterface(__uuidof(IXMLDOMElement), element);
        elements.push_back(element);
    }
    return elements;
}

std::wstring Attribute(IXMLDOMElement* element, const wchar_t* name)
{
    CL::CVariant value;
    element->getAttribute(CL::CBstr(name).Get(), &value);
    return value.vt == VT_BSTR ? value.bstrVal : L"";
}

// The XML export read back: per Item its ID and its values as
// "<Time>|<Quality>|<text>".
std::vector<std::pair<std::wstring, std::vector<std::wstring>>> ReadExport(const std::wstring& path)
{
    std::vector<std::pair<std::wstring, std::vector<std::wstring>>> items;
    CL::XmlDocument document = CL::CreateDomDocument30(L"test");
    VARIANT_BOOL loaded = VARIANT_FALSE;
    document->load(CL::CVariant(path), &loaded);
    EXPECT_EQ(loaded, VARIANT_TRUE);
    for (const CL::XmlElement& item : Elements(document.Get(), L"/HistorianData/Item")) {
        std::vector<std::wstring> values;
        for (const CL::XmlElement& value : Elements(item.Get(), L"Value")) {
            BSTR text = nullptr;
            value->get_text(&text);
            values.push_back(Attribute(value.Get(), L"Time") + L"|" + Attribute(value.Get(), L"Quality") + L"|" +
                             (text ? text : L""));
            ::SysFreeString(text);
        }
        items.emplace_back(Attribute(item.Get(), L"OPCItemID"), values);
    }
    return items;
}

} // namespace

TEST_P(DBExplorerFilter, TypedTextKeepsTheIdsThatContainItAndTheStatusSaysHowManyOfAll)
{
    WriteRun(L"Plant.Tank1.Temp", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"Plant.Tank1.Level", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"Plant.Boiler.TEMP", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    EXPECT_EQ(Status(), L"3 archived item(s)");
    Type(L"temp");
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"Plant.Boiler.TEMP", L"Plant.Tank1.Temp"}));
    EXPECT_EQ(Status(), L"2 of 3 archived item(s)");
    Type(L"plant.*.l?vel");
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"Plant.Tank1.Level"}));
    EXPECT_EQ(Status(), L"1 of 3 archived item(s)");
    Type(L"");
    EXPECT_EQ(Ids().size(), 3u);
    EXPECT_EQ(Status(), L"3 archived item(s)");
}

TEST_P(DBExplorerFilter, SortAndRefreshKeepTheFilter)
{
    WriteRun(L"a.temp", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"b.temp", {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 10, 0, 1)});
    WriteRun(L"c.level", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    Type(L"TEMP");
    ClickHeader(List(), 0);   // item ID descending
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"b.temp", L"a.temp"}));
    WriteRun(L"d.temp", {Date(2023, 3, 15, 10, 0, 0)});
    Command(ID_DBEXPLORER_REFRESH);
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a.temp", L"b.temp", L"d.temp"}));
    EXPECT_EQ(Status(), L"3 of 4 archived item(s)");
}

TEST_P(DBExplorerFilter, DeleteAndSelectAllWorkOnTheRowsShown)
{
    WriteRun(L"a.temp", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"b.temp", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"c.level", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    Type(L"temp");
    Command(ID_DBEXPLORER_SELECT_ALL);
    EXPECT_EQ(m_explorer.List().SelectedRows().size(), 2u);
    test::MessageBoxAnswerer answerer([](const test::MessageBoxInfo& box) {
        return ::GetDlgItem(box.hwnd, IDYES) ? IDYES : IDOK;
    });
    Command(ID_DBEXPLORER_DELETE);
    EXPECT_EQ(m_db.RowCount(L"a.temp"), 0);
    EXPECT_EQ(m_db.RowCount(L"b.temp"), 0);
    EXPECT_EQ(m_db.RowCount(L"c.level"), 1);
    EXPECT_TRUE(Ids().empty());
    EXPECT_EQ(Status(), L"0 of 1 archived item(s)");
}

TEST_P(DBExplorerFilter, CtrlFAndAltLMoveToTheFilterBoxAndEnterBackToTheList)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    ::SetFocus(List());
    {
        CtrlDown ctrl;
        EXPECT_TRUE(PreTranslateKey(List(), 'F'));
    }
    EXPECT_EQ(::GetFocus(), FilterEdit());
    EXPECT_TRUE(PreTranslateKey(FilterEdit(), VK_RETURN));
    EXPECT_EQ(::GetFocus(), List());
    EXPECT_EQ(m_explorer.List().FocusedRow(), 0);
    // From the list itself too, and Esc in the box empties it.
    {
        CtrlDown ctrl;
        PressKey(List(), 'F');
    }
    EXPECT_EQ(::GetFocus(), FilterEdit());
    Type(L"zzz");
    EXPECT_TRUE(Ids().empty());
    EXPECT_TRUE(PreTranslateKey(FilterEdit(), VK_ESCAPE));
    EXPECT_EQ(Ids(), (std::vector<std::wstring>{L"a"}));
    // Alt+L, the mnemonic of "Filter:", from the list.
    ::SetFocus(List());
    MSG alt = {List(), WM_SYSKEYDOWN, 'L', 0x20000000, 0, {0, 0}};
    EXPECT_TRUE(m_explorer.PreTranslateMessage(alt));
    EXPECT_EQ(::GetFocus(), FilterEdit());
}

TEST_P(DBExplorerFilter, TheFilterBoxSitsAboveTheListAndStretchesWithTheWindow)
{
    Open();
    RECT edit;
    RECT list;
    ::GetWindowRect(FilterEdit(), &edit);
    ::GetWindowRect(List(), &list);
    EXPECT_LE(edit.bottom, list.top);
    EXPECT_GE(edit.right, list.right - 20);
    EXPECT_EQ(test::WindowText(::GetDlgItem(m_explorer.FilterBar(), IDC_DBEXPLORER_FILTER_LABEL)), L"Fi&lter:");
    RECT frame;
    ::GetWindowRect(m_explorer, &frame);
    ::SetWindowPos(m_explorer, nullptr, 0, 0, frame.right - frame.left + 150, frame.bottom - frame.top,
                   SWP_NOMOVE | SWP_NOZORDER);
    RECT wider;
    ::GetWindowRect(FilterEdit(), &wider);
    EXPECT_EQ(wider.right - wider.left, edit.right - edit.left + 150);
}

TEST_P(DBExplorerFilter, CtrlCCopiesTheSelectedRowsWithTheColumnTitles)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0), Date(2023, 3, 15, 11, 0, 0)});
    WriteRun(L"b", {Date(2023, 3, 15, 12, 0, 0)});
    Open();
    SelectRows(List(), {0, 1});
    {
        CtrlDown ctrl;
        PressKey(List(), 'C');
    }
    const std::wstring expected =
        L"Item ID\tEarliest value time\tLatest value time\tValue count\r\n"
        L"a\t" + LocalText(Date(2023, 3, 15, 10, 0, 0)) + L"\t" + LocalText(Date(2023, 3, 15, 11, 0, 0)) + L"\t2\r\n"
        L"b\t" + LocalText(Date(2023, 3, 15, 12, 0, 0)) + L"\t" + LocalText(Date(2023, 3, 15, 12, 0, 0)) + L"\t1\r\n";
    EXPECT_EQ(CL::GetClipboardText(m_explorer), expected);
}

TEST_P(DBExplorerExport, ExportIsOnTheToolbarAndTheRightClickMenu)
{
    Open();
    EXPECT_NE(::SendMessageW(m_explorer.Bars().Toolbar(), TB_COMMANDTOINDEX, ID_DBEXPLORER_EXPORT, 0), -1);
    test::TrackedMenuCapture capture;
    ::SendMessageW(m_explorer, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List()), MAKELPARAM(50, 50));
    ASSERT_TRUE(capture.Captured());
    bool found = false;
    for (const auto& entry : capture.Entries())
        found = found || (entry.id == ID_DBEXPLORER_EXPORT && entry.text == L"&Export values...");
    EXPECT_TRUE(found);
}

TEST_P(DBExplorerExport, SelectedItemsGoToXmlInListOrderWithThePeriodPresetFromTheirSpan)
{
    WriteValues(L"a", {{Date(2023, 3, 15, 10, 0, 0), 192, CL::CVariant::R8(1.5)},
                       {Date(2023, 3, 15, 10, 0, 1, 250), 64, CL::CVariant(L"x<y")}});
    WriteRun(L"b", {Date(2023, 3, 15, 9, 0, 0)});
    WriteValues(L"c", {{Date(2023, 3, 15, 12, 0, 0), 192, CL::CVariant::I4(7)}});
    Open();
    ClickHeader(List(), 0);   // descending: c, b, a
    SelectRows(List(), {0, 2});
    test::TempDir folder;
    const std::wstring path = folder.File(L"items.xml");
    std::wstring caption;
    std::wstring from;
    std::wstring to;
    test::MessageBoxAnswerer answerer([&](const test::MessageBoxInfo& box) {
        if (box.title == kExportCaption) {
            caption = box.title;
            from = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_FROM));
            to = PickerText(::GetDlgItem(box.hwnd, IDC_TIMEPERIOD_TO));
            return IDOK;
        }
        return SaveAsAnswer(path)(box);
    });
    Command(ID_DBEXPLORER_EXPORT);
    EXPECT_EQ(caption, kExportCaption);
    EXPECT_EQ(from, LocalText(Date(2023, 3, 15, 10, 0, 0)));
    EXPECT_EQ(to, LocalText(Date(2023, 3, 15, 12, 0, 0)));
    const auto items = ReadExport(path);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].first, L"c");
    EXPECT_EQ(items[0].second, (std::vector<std::wstring>{L"15:03:2023 12:00:00:000|192|7"}));
    EXPECT_EQ(items[1].first, L"a");
    EXPECT_EQ(items[1].second, (std::vector<std::wstring>{L"15:03:2023 10:00:00:000|192|1.5",
                                                          L"15:03:2023 10:00:01:250|64|x<y"}));
    EXPECT_EQ(Status(), L"3 value(s) of 2 item(s) exported");
}

TEST_P(DBExplorerExport, SelectedItemsGoToCsvByTheTypedExtensionByteForByte)
{
    WriteValues(L"Line 1, Pump", {{Date(2023, 3, 15, 10, 0, 0), 192, CL::CVariant::R8(1)},
                                  {Date(2023, 3, 15, 10, 0, 1, 500), 64, CL::CVariant::R8(2.5)}});
    WriteValues(L"Tank.Level", {{Date(2023, 3, 15, 11, 30, 0), 192, CL::CVariant(L"Full")},
                                {Date(2023, 3, 15, 11, 30, 0, 250), 216, CL::CVariant(L"say \"hi\"")}});
    Open();
    Command(ID_DBEXPLORER_SELECT_ALL);
    test::TempDir folder;
    const std::wstring path = folder.File(L"items.csv");
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
        Command(ID_DBEXPLORER_EXPORT);
    }
    const std::string expected = test::ReadFileBytes(ExpectedItemsCsv());
    ASSERT_FALSE(expected.empty()) << "no expected file for this zone offset";
    EXPECT_EQ(test::ReadFileBytes(path), expected);
}

TEST_P(DBExplorerExport, EscInTheMiddleLeavesNoFileAndTheTargetAsItWas)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"b", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    Command(ID_DBEXPLORER_SELECT_ALL);
    test::TempDir folder;
    for (const wchar_t* name : {L"old.csv", L"old.xml"}) {
        const std::wstring path = folder.File(name);
        WriteFileText(path, "old contents");
        int steps = 0;
        CL::CWorkProgress::SetStepObserver([&] {
            if (++steps == 2)   // the second item's read
                ::PostMessageW(List(), WM_KEYDOWN, VK_ESCAPE, 0);
        });
        {
            test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
            Command(ID_DBEXPLORER_EXPORT);
            EXPECT_EQ(OtherBoxes(answerer).size(), 1u);   // the period dialog, no error report
        }
        CL::CWorkProgress::SetStepObserver(nullptr);
        EXPECT_GE(steps, 2);
        EXPECT_EQ(test::ReadFileBytes(path), "old contents");
        EXPECT_FALSE(FileExists(path + L".saving"));
        EXPECT_EQ(Status(), L"Export cancelled: nothing was written");
    }
}

// Esc while the last item's values are being written, after every read:
// the export's last step is one of writing (each item is read, then
// written), and Esc there leaves no file and the target as it was.
TEST_P(DBExplorerExport, EscWhileWritingTheLastItemLeavesNoFileAndTheTargetAsItWas)
{
    for (const wchar_t* item : {L"a", L"b"}) {
        for (int run = 0; run < 5; ++run) {
            std::vector<CL::CHistoricValue> values;
            for (int i = run * 1000; i < (run + 1) * 1000; ++i)
                values.push_back({Date(2023, 3, 15, 10, 0, 0) + i / 86400.0, 192, CL::CVariant::R8(i)});
            m_writer->AppendRun(item, values);
        }
    }
    Open();
    Command(ID_DBEXPLORER_SELECT_ALL);
    test::TempDir folder;
    // Progress at once, and the observer and delay put back however the
    // test ends (later tests of the same process must not inherit them).
    struct ProgressAtOnce {
        ProgressAtOnce() { CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(0)); }
        ~ProgressAtOnce()
        {
            CL::CWorkProgress::SetStepObserver(nullptr);
            CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(500));
        }
    } atOnce;
    for (const wchar_t* name : {L"old.csv", L"old.xml"}) {
        const std::wstring whole = folder.File(std::wstring(L"whole") + (name + 3));
        int steps = 0;
        CL::CWorkProgress::SetStepObserver([&] { ++steps; });
        {
            test::MessageBoxAnswerer answerer(SaveAsAnswer(whole));
            Command(ID_DBEXPLORER_EXPORT);
            ASSERT_EQ(OtherBoxes(answerer).size(), 1u);   // the period dialog
        }
        const int exportSteps = steps;
        ASSERT_TRUE(::DeleteFileW(whole.c_str()));
        const std::wstring path = folder.File(name);
        WriteFileText(path, "old contents");
        steps = 0;
        CL::CWorkProgress::SetStepObserver([&] {
            if (++steps == exportSteps)
                ::PostMessageW(List(), WM_KEYDOWN, VK_ESCAPE, 0);
        });
        {
            test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
            Command(ID_DBEXPLORER_EXPORT);
            EXPECT_EQ(OtherBoxes(answerer).size(), 1u);   // the period dialog, no error report
        }
        CL::CWorkProgress::SetStepObserver(nullptr);
        EXPECT_EQ(steps, exportSteps);
        EXPECT_EQ(test::ReadFileBytes(path), "old contents");
        EXPECT_EQ(FilesIn(folder.Path()), std::vector<std::wstring>{name}) << CL::Narrow(name);
        EXPECT_EQ(Status(), L"Export cancelled: nothing was written");
        ::DeleteFileW(path.c_str());
    }
}

TEST_P(DBExplorerExport, LongExportShowsCancelInTheStatusBarAndItsClickStopsWithNothingWritten)
{
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"b", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    const HWND cancel = m_explorer.CancelButton();
    ASSERT_NE(cancel, nullptr);
    EXPECT_EQ(test::WindowText(cancel), L"Cancel");
    const auto visible = [cancel] { return (::GetWindowLongW(cancel, GWL_STYLE) & WS_VISIBLE) != 0; };
    EXPECT_FALSE(visible());
    // Inside the status bar, at its right end.
    RECT bar;
    RECT button;
    ::GetWindowRect(m_explorer.Bars().StatusBar(), &bar);
    ::GetWindowRect(cancel, &button);
    EXPECT_GE(button.left, bar.left + (bar.right - bar.left) / 2);
    EXPECT_LE(button.right, bar.right);
    EXPECT_GE(button.top, bar.top);
    EXPECT_LE(button.bottom, bar.bottom);
    EXPECT_GT(button.right - button.left, 0);

    Command(ID_DBEXPLORER_SELECT_ALL);
    test::TempDir folder;
    const std::wstring path = folder.File(L"old.csv");
    WriteFileText(path, "old contents");
    CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(0));
    int steps = 0;
    bool shownDuringWork = false;
    CL::CWorkProgress::SetStepObserver([&] {
        shownDuringWork = shownDuringWork || visible();
        if (++steps == 2) {   // the second item's read; the button shows from the first step on
            ::PostMessageW(cancel, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
            ::PostMessageW(cancel, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
        }
    });
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
        Command(ID_DBEXPLORER_EXPORT);
        EXPECT_EQ(OtherBoxes(answerer).size(), 1u);   // the period dialog, no error report
    }
    CL::CWorkProgress::SetStepObserver(nullptr);
    CL::CWorkProgress::SetShowDelay(std::chrono::milliseconds(500));
    EXPECT_TRUE(shownDuringWork);
    EXPECT_GE(steps, 2);
    EXPECT_FALSE(visible());
    EXPECT_EQ(test::ReadFileBytes(path), "old contents");
    EXPECT_FALSE(FileExists(path + L".saving"));
    EXPECT_EQ(Status(), L"Export cancelled: nothing was written");
}

TEST_P(DBExplorerExport, AReadFailingHalfwayEndsInTheErrorReportWithNothingWritten)
{
    // An item ID with a quote makes its read statement fail (IDs go into the
    // SQL text as they are), after the first item was read.
    WriteRun(L"a", {Date(2023, 3, 15, 10, 0, 0)});
    WriteRun(L"b'c", {Date(2023, 3, 15, 10, 0, 0)});
    Open();
    Command(ID_DBEXPLORER_SELECT_ALL);
    test::TempDir folder;
    const std::wstring path = folder.File(L"items.csv");
    {
        test::MessageBoxAnswerer answerer(SaveAsAnswer(path));
        Command(ID_DBEXPLORER_EXPORT);
        const auto boxes = OtherBoxes(answerer);
        ASSERT_EQ(boxes.size(), 2u);   // the period dialog, then the error report
        EXPECT_FALSE(boxes[1].text.empty());
    }
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(FileExists(path + L".saving"));
}

INSTANTIATE_TEST_SUITE_P(Db, DBExplorerFilter, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
INSTANTIATE_TEST_SUITE_P(Db, DBExplorerExport, testing::Values(DbKind::Sqlite, DbKind::PostgreSql), KindName);
