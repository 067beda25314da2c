// The address space editor keeps its layout from one opening to the next:
// the window's place and size, the splitter and the column widths are
// written under the product's key of HKEY_CURRENT_USER when the window
// goes and read when it opens; sizes are stored at 96 dpi and come back at
// the display's scale; garbage and places off every monitor are ignored.
// (The test programs delete the key before every test.)
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include "EditorFixture.h"
#include "addressspace/EditorLayout.h"
#include "common/RegistryKey.h"
#include "common/ui/Dpi.h"
#include "version.h"

namespace {

class EditorLayout : public test::EditorFixture {
protected:
    // Closes the editor as the user does and opens it again.
    void Reopen()
    {
        Close();
        Open();
    }
    void Close()
    {
        ::SendMessageW(Frame(), WM_CLOSE, 0, 0);
        ASSERT_FALSE(::IsWindow(Frame()));
    }
    void Open()
    {
        editor = std::make_unique<CL::CAddressSpaceEditor>(
            historian, CAddressSpaceExchange(test::SettingsServiceName, exchangeFile));
        ASSERT_TRUE(editor->PrepareOpen());
        ASSERT_TRUE(editor->Create());
        ::ShowWindow(Frame(), SW_SHOWNORMAL);
        ::UpdateWindow(Frame());
    }
    RECT WindowRect()
    {
        RECT rect = {};
        ::GetWindowRect(Frame(), &rect);
        return rect;
    }
    CL::CDpi Dpi() { return CL::CDpi::Of(Frame()); }
    static DWORD Stored(const wchar_t* name)
    {
        DWORD value = 0xDEADBEEF;
        EXPECT_TRUE(CL::CRegistryKey::Open(HKEY_CURRENT_USER, CEditorLayout::DefaultKey()).ReadDword(name, value))
            << CL::Narrow(name);
        return value;
    }
    static void Store(const wchar_t* name, DWORD value)
    {
        CL::CRegistryKey::Create(HKEY_CURRENT_USER, CEditorLayout::DefaultKey()).WriteDword(name, value);
    }
    static void Store(const wchar_t* name, const std::wstring& value)
    {
        CL::CRegistryKey::Create(HKEY_CURRENT_USER, CEditorLayout::DefaultKey()).WriteString(name, value);
    }
    // A window place well inside the primary monitor's work area.
    static POINT Inside()
    {
        RECT work = {};
        ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        return POINT{work.left + 40, work.top + 30};
    }
};

} // namespace

TEST_F(EditorLayout, TheKeyIsTheProductsOwnUnderSoftware)
{
    EXPECT_EQ(F().LayoutKey(), CEditorLayout::DefaultKey());
    EXPECT_EQ(CEditorLayout::DefaultKey(), L"Software\\" + CL::Widen(MORVANE_PRODUCT_NAME) + L"\\Address Space Editor");
}

TEST_F(EditorLayout, ClosingWritesThePlaceTheSizesAt96DpiTheSplitterAndTheColumns)
{
    const POINT at = Inside();
    const CL::CDpi dpi = Dpi();
    ::MoveWindow(Frame(), at.x, at.y, dpi.Scale(640), dpi.Scale(450), TRUE);
    ASSERT_TRUE(F().Splitter().SetPosition(dpi.Scale(150)));
    ListView_SetColumnWidth(List(), 0, dpi.Scale(111));
    Close();
    ASSERT_FALSE(::IsWindow(Frame()));

    EXPECT_EQ(static_cast<int>(Stored(L"WindowLeft")), at.x);
    EXPECT_EQ(static_cast<int>(Stored(L"WindowTop")), at.y);
    EXPECT_EQ(Stored(L"WindowWidth"), 640u);
    EXPECT_EQ(Stored(L"WindowHeight"), 450u);
    EXPECT_EQ(Stored(L"Splitter"), 150u);
    std::wstring columns;
    ASSERT_TRUE(CL::CRegistryKey::Open(HKEY_CURRENT_USER, CEditorLayout::DefaultKey()).ReadString(L"ColumnWidths", columns));
    EXPECT_EQ(columns.substr(0, 4), L"111,") << CL::Narrow(columns);
}

TEST_F(EditorLayout, TheNextOpeningRestoresTheWindowTheSplitterAndTheColumns)
{
    const POINT at = Inside();
    const CL::CDpi dpi = Dpi();
    ::MoveWindow(Frame(), at.x, at.y, dpi.Scale(700), dpi.Scale(480), TRUE);
    ASSERT_TRUE(F().Splitter().SetPosition(dpi.Scale(260)));
    ListView_SetColumnWidth(List(), 1, dpi.Scale(97));
    Reopen();

    const RECT rect = WindowRect();
    EXPECT_EQ(rect.left, at.x);
    EXPECT_EQ(rect.top, at.y);
    EXPECT_EQ(rect.right - rect.left, Dpi().Scale(700));
    EXPECT_EQ(rect.bottom - rect.top, Dpi().Scale(480));
    EXPECT_EQ(F().Splitter().Position(), Dpi().Scale(260));
    EXPECT_EQ(ListView_GetColumnWidth(List(), 1), Dpi().Scale(97));
}

// The values stored at 96 dpi come back at the display's scale: at 144 dpi
// (the second window test pass) a 600-pixel width opens 900 pixels wide.
TEST_F(EditorLayout, StoredSizesComeBackAtTheDisplaysScale)
{
    const POINT at = Inside();
    Close();   // it writes its own layout
    Store(L"WindowLeft", static_cast<DWORD>(at.x));
    Store(L"WindowTop", static_cast<DWORD>(at.y));
    Store(L"WindowWidth", 600);
    Store(L"WindowHeight", 400);
    Store(L"Splitter", 180);
    Store(L"ColumnWidths", L"90,80");   // not this list's number of columns: ignored
    Open();

    const RECT rect = WindowRect();
    EXPECT_EQ(rect.right - rect.left, Dpi().Scale(600)) << "at " << Dpi().Value() << " dpi";
    EXPECT_EQ(rect.bottom - rect.top, Dpi().Scale(400));
    EXPECT_EQ(F().Splitter().Position(), Dpi().Scale(180));
}

TEST_F(EditorLayout, AWindowOffEveryMonitorOpensAtTheDefaultPlace)
{
    const RECT before = WindowRect();
    Close();
    Store(L"WindowLeft", static_cast<DWORD>(-20000));
    Store(L"WindowTop", static_cast<DWORD>(-20000));
    Open();
    const RECT rect = WindowRect();
    EXPECT_EQ(rect.left, before.left);
    EXPECT_EQ(rect.top, before.top);
    EXPECT_EQ(rect.right - rect.left, before.right - before.left);
}

TEST_F(EditorLayout, GarbageValuesAreIgnoredAndTheDefaultsUsed)
{
    const RECT before = WindowRect();
    const int splitter = F().Splitter().Position();
    const int column = ListView_GetColumnWidth(List(), 0);
    Close();
    CL::CRegistryKey::Delete(HKEY_CURRENT_USER, CEditorLayout::DefaultKey());
    Store(L"WindowLeft", L"left");             // a string where a number belongs
    Store(L"WindowTop", 10);
    Store(L"WindowWidth", 0xFFFFFFF0u);        // an absurd size
    Store(L"WindowHeight", 400);
    Store(L"Splitter", L"wide");
    Store(L"ColumnWidths", L"120,x,90");
    Open();
    const RECT rect = WindowRect();
    EXPECT_EQ(rect.left, before.left);
    EXPECT_EQ(rect.top, before.top);
    EXPECT_EQ(rect.right - rect.left, before.right - before.left);
    EXPECT_EQ(rect.bottom - rect.top, before.bottom - before.top);
    EXPECT_EQ(F().Splitter().Position(), splitter);
    EXPECT_EQ(ListView_GetColumnWidth(List(), 0), column);
}

TEST_F(EditorLayout, ColumnWidthsForAnotherNumberOfColumnsAreIgnored)
{
    const int column = ListView_GetColumnWidth(List(), 0);
    Close();
    Store(L"ColumnWidths", L"150,150");
    Open();
    EXPECT_EQ(ListView_GetColumnWidth(List(), 0), column);
}
