#pragma once
// The address space editor as the tray opens it, on an exchange file of its
// own: the real CAddressSpaceEditor (frame, document, exchange) with the
// server's service not installed, so that loading takes the file as it
// stands and saving only writes it. Helpers read and drive the tree and
// the list the way a user's clicks would.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "addressspace/MainFrm.h"
#include "app/AddressSpaceEditor.h"
#include "common/Text.h"
#include "common/historian/Historian.h"
#include "config/Settings.h"
#include "res/resource.h"
#include "support/DialogScript.h"
#include "support/SettingsServiceName.h"
#include "support/TestSupport.h"
#include "support/ProcessState.h"

namespace test {

// A click on the middle of a list column's header.
inline void ClickHeader(HWND list, int column)
{
    const HWND header = ListView_GetHeader(list);
    RECT rect = {};
    Header_GetItemRect(header, column, &rect);
    const LPARAM at = MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    ::SendMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(header, WM_LBUTTONUP, 0, at);
}


// Plant/Line1 holds Count (VT_I4 7, R, 500 ms), Label (VT_BSTR "abc", W,
// 2000 ms) and Speed (VT_R8 12.5, RW, 1000 ms, archived); Plant/Line2 is
// empty; the root holds Heartbeat.
inline std::string EditorSampleSpace()
{
    const std::string time = " ValueTime=\"134080704000000000\"";
    return "<Morvane_OPCDAAddressSpace Name=\"\"><Branch Name=\"Plant\"><Branch Name=\"Line1\">"
           "<Item Name=\"Speed\" CanonicalDataType=\"5\" Quality=\"192\" Writable=\"-1\" Readable=\"-1\" "
           "ScanRate=\"1000\" Archive=\"-1\"" + time + "><Value>12.5</Value></Item>"
           "<Item Name=\"Count\" CanonicalDataType=\"3\" Quality=\"192\" Writable=\"0\" Readable=\"-1\" "
           "ScanRate=\"500\" Archive=\"0\"" + time + "><Value>7</Value></Item>"
           "<Item Name=\"Label\" CanonicalDataType=\"8\" Quality=\"192\" Writable=\"-1\" Readable=\"0\" "
           "ScanRate=\"2000\" Archive=\"0\"" + time + "><Value>abc</Value></Item>"
           "</Branch><Branch Name=\"Line2\"></Branch></Branch>"
           "<Item Name=\"Heartbeat\" CanonicalDataType=\"18\" Quality=\"192\" Writable=\"0\" Readable=\"-1\" "
           "ScanRate=\"1000\" Archive=\"0\"" + time + "><Value>7</Value></Item>"
           "</Morvane_OPCDAAddressSpace>";
}

// Holds Ctrl down in this thread's keyboard state while it lives.
class CtrlHeld {
public:
    CtrlHeld()
    {
        ::GetKeyboardState(m_saved);
        BYTE state[256];
        ::GetKeyboardState(state);
        state[VK_CONTROL] = 0x80;
        state[VK_LCONTROL] = 0x80;
        ::SetKeyboardState(state);
    }
    ~CtrlHeld() { ::SetKeyboardState(m_saved); }
    CtrlHeld(const CtrlHeld&) = delete;
    CtrlHeld& operator=(const CtrlHeld&) = delete;

private:
    BYTE m_saved[256];
};

class EditorFixture : public testing::Test {
    // Put back after each test (after TearDown): the settings record, the
    // clipboard that the editor's copy and cut fill, and the current
    // directory that its Open and Save As dialogs move.
    test::SettingsKeeper m_keepSettings;
    test::ClipboardKeeper m_keepClipboard;
    test::CurrentDirectoryKeeper m_keepCurrentDirectory;

protected:
    void SetUp() override
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_Settings.ServiceName = L"MvEditorServiceNotInstalled";
        WriteFileBytes(exchangeFile, EditorSampleSpace());
        editor = std::make_unique<CL::CAddressSpaceEditor>(historian, CAddressSpaceExchange(test::SettingsServiceName, exchangeFile));
        ASSERT_TRUE(editor->PrepareOpen());
        ASSERT_TRUE(editor->Create());
        ::ShowWindow(Frame(), SW_SHOWNORMAL);
        ::SetForegroundWindow(Frame());
        ::UpdateWindow(Frame());
    }
    void TearDown() override
    {
        if (editor)
            F().Document().SetDirty(false);
        editor.reset();
        ::CoUninitialize();
    }

    CMainFrame& F() { return editor->Frame(); }
    HWND Frame() { return F().Hwnd(); }
    HWND Tree() { return F().Tree(); }
    HWND List() { return F().List(); }
    void Command(WORD id) { ::SendMessageW(Frame(), WM_COMMAND, MAKEWPARAM(id, 0), 0); }
    bool Dirty() { return F().Document().IsDirty(); }

    // The node of a branch path ("" for the root node, "Plant/Line1").
    HTREEITEM Node(const std::wstring& path)
    {
        HTREEITEM node = TreeView_GetRoot(Tree());
        size_t start = 0;
        while (node && start < path.size()) {
            const size_t slash = path.find(L'/', start);
            const std::wstring part = path.substr(start, slash == std::wstring::npos ? std::wstring::npos : slash - start);
            HTREEITEM child = TreeView_GetChild(Tree(), node);
            while (child && NodeText(child) != part)
                child = TreeView_GetNextSibling(Tree(), child);
            node = child;
            start = slash == std::wstring::npos ? path.size() : slash + 1;
        }
        return node;
    }
    std::wstring NodeText(HTREEITEM node)
    {
        wchar_t text[260] = {};
        TVITEMW item = {};
        item.mask = TVIF_TEXT | TVIF_HANDLE;
        item.hItem = node;
        item.pszText = text;
        item.cchTextMax = 260;
        TreeView_GetItem(Tree(), &item);
        return text;
    }
    // The texts of a node's children in tree order.
    std::vector<std::wstring> Children(const std::wstring& path)
    {
        std::vector<std::wstring> names;
        for (HTREEITEM child = TreeView_GetChild(Tree(), Node(path)); child;
             child = TreeView_GetNextSibling(Tree(), child))
            names.push_back(NodeText(child));
        return names;
    }
    void SelectBranch(const std::wstring& path)
    {
        const HTREEITEM node = Node(path);
        ASSERT_NE(node, nullptr) << "no node " << CL::Narrow(path);
        TreeView_SelectItem(Tree(), node);
    }

    // The texts of one list column, top to bottom, as the control shows them.
    std::vector<std::wstring> Column(int column)
    {
        std::vector<std::wstring> texts;
        const int count = ListView_GetItemCount(List());
        for (int i = 0; i < count; ++i) {
            wchar_t text[2100] = {};
            ListView_GetItemText(List(), i, column, text, 2100);
            texts.push_back(text);
        }
        return texts;
    }
    int LineOf(const std::wstring& name)
    {
        const auto names = Column(0);
        for (size_t i = 0; i < names.size(); ++i)
            if (names[i] == name)
                return static_cast<int>(i);
        return -1;
    }
    // Selects exactly these rows (by name); the first gets the focus.
    void SelectRows(const std::vector<std::wstring>& names)
    {
        ListView_SetItemState(List(), -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
        bool first = true;
        for (const std::wstring& name : names) {
            const int line = LineOf(name);
            ASSERT_GE(line, 0) << "no row " << CL::Narrow(name);
            ListView_SetItemState(List(), line, LVIS_SELECTED | (first ? LVIS_FOCUSED : 0),
                                  LVIS_SELECTED | (first ? LVIS_FOCUSED : 0));
            first = false;
        }
    }
    void FocusTree() { ::SetFocus(Tree()); }
    void FocusList() { ::SetFocus(List()); }

    // The model's item of a branch path.
    CMainFrame::ItemPtr Item(const std::wstring& path, const std::wstring& name)
    {
        COPCServerAddressSpaceBranch* branch = F().Document().Model()->RootBranch().get();
        size_t start = 0;
        while (branch && start < path.size()) {
            const size_t slash = path.find(L'/', start);
            const std::wstring part = path.substr(start, slash == std::wstring::npos ? std::wstring::npos : slash - start);
            branch = branch->FindBranch(part).get();
            start = slash == std::wstring::npos ? path.size() : slash + 1;
        }
        return branch ? branch->FindItem(name) : CMainFrame::ItemPtr();
    }

    // The whole address space as its XML file.
    std::string Xml()
    {
        const std::wstring path = dir.File(L"state" + std::to_wstring(++m_xmlSaved) + L".xml");
        F().Document().Model()->Save(path);
        return ReadFileBytes(path);
    }
    // Runs the change and checks that undo gives back the state before it
    // and redo the state after it, compared as the saved XML: undo, redo,
    // and undo again. Undo leads back to the state loaded from the server
    // unless the change was made on top of earlier ones (loaded: false).
    void ExpectUndoAndRedoRestore(const std::function<void()>& change, bool loaded = true)
    {
        const std::string before = Xml();
        change();
        if (HasFatalFailure())
            return;
        const std::string after = Xml();
        ASSERT_NE(after, before) << "the change changed nothing";
        ASSERT_TRUE(Dirty());
        Command(ID_AS_EDIT_UNDO);
        EXPECT_EQ(Xml(), before) << "undo";
        EXPECT_EQ(Dirty(), !loaded) << "back at the state loaded from the server: " << loaded;
        Command(ID_AS_EDIT_REDO);
        EXPECT_EQ(Xml(), after) << "redo";
        EXPECT_TRUE(Dirty());
        Command(ID_AS_EDIT_UNDO);
        EXPECT_EQ(Xml(), before) << "undo after the redo";
    }

    TempDir dir;
    std::wstring exchangeFile = dir.File(L"DefaultAddressSpace.xml");
    CL::CHistorian historian;
    std::unique_ptr<CL::CAddressSpaceEditor> editor;

private:
    int m_xmlSaved = 0;
};

} // namespace test
