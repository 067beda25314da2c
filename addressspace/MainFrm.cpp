#include "addressspace/MainFrm.h"

#include <commdlg.h>
#include <shellapi.h>
#include <shlwapi.h>
#include <windowsx.h>

#include <algorithm>

#include "addressspace/AddBranchCommand.h"
#include "addressspace/AddItemCommand.h"
#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/BranchTree.h"
#include "addressspace/EditorTexts.h"
#include "addressspace/DeleteBranchCommand.h"
#include "addressspace/DeleteItemsCommand.h"
#include "addressspace/EditMenu.h"
#include "addressspace/EditorPlace.h"
#include "addressspace/EditorStatus.h"
#include "addressspace/ItemPropertiesCommand.h"
#include "addressspace/RenameBranchCommand.h"
#include "addressspace/ReplaceModelCommand.h"
#include "addressspace/ItemId.h"
#include "addressspace/NoCaseLess.h"
#include "addressspace/dlgAddBranch.h"
#include "addressspace/dlgAddItem.h"
#include "addressspace/dlgCsvImport.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Exception.h"
#include "common/FileBytes.h"
#include "common/Handle.h"
#include "common/Text.h"
#include "common/Util_Variant.h"
#include "common/ui/AccessibleName.h"
#include "common/ui/ContextMenuKeys.h"
#include "common/ui/Dpi.h"
#include "common/ui/FileDialog.h"
#include "common/ui/OverwriteQuestion.h"
#include "common/ui/WaitCursor.h"
#include "res/resource.h"

namespace {

constexpr wchar_t kEraseQuestion[] = L"Are you sure you want to erase the current address space?";
constexpr wchar_t kOverwriteQuestion[] = L"Are you sure you want to overwrite the current address space?";
constexpr wchar_t kReloadQuestion[] =
    L"Do you want to overwrite your changes with the current configuration of the server?";
constexpr wchar_t kSaveChangesQuestion[] = L"Do you want to save your changes?";
constexpr wchar_t kFileFilter[] = L"XML files (*.xml)\0*.xml\0All files (*.*)\0*.*\0";
constexpr wchar_t kCsvFilter[] = L"CSV files (*.csv)\0*.csv\0All files (*.*)\0*.*\0";
constexpr WORD kGoodQuality = 192;
constexpr int kSplitterPosition = 220;
constexpr int kMinPaneWidth = 60;

FILETIME Now()
{
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return now;
}

// Whether the path's last component has an extension.
bool HasExtension(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    return path.find(L'.', slash == std::wstring::npos ? 0 : slash + 1) != std::wstring::npos;
}

// Appends the extension when no extension was typed and the first filter
// was in use; false when that names a file that exists and the user does
// not want it replaced (the dialog's own question saw only the typed name).
bool CompletedName(HWND owner, std::wstring& path, DWORD filterIndex, const wchar_t* extension,
                   const wchar_t* caption)
{
    if (filterIndex != 1 || HasExtension(path))
        return true;
    path += extension;
    return CL::MayOverwrite(owner, path, caption);
}

std::wstring FolderOf(const std::wstring& path)
{
    const size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

const std::vector<CL::ToolButton>& ToolButtons()
{
    static const std::vector<CL::ToolButton> buttons = {
        {ID_AS_FILE_OPEN, STD_FILEOPEN},
        {ID_AS_FILE_SAVE, STD_FILESAVE},
        {ID_AS_FILE_SAVE_COPY, STD_COPY},
        {0, 0},
        {ID_AS_EDIT_NEW_BRANCH, CL::CFrameBars::kViewImage + VIEW_NEWFOLDER},
        {ID_AS_EDIT_NEW_ITEM, STD_FILENEW},
        {ID_AS_EDIT_PROPERTIES, STD_PROPERTIES},
        {ID_AS_EDIT_DELETE, STD_DELETE},
        {0, 0},
        {ID_AS_HELP_ABOUT, STD_HELP},
    };
    return buttons;
}

} // namespace

CMainFrame::CMainFrame(CAddressSpaceExchange exchange) : m_exchange(std::move(exchange))
{
    m_openUrl = [](const std::wstring& url) {
        ::ShellExecuteW(nullptr, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    };
}

// The window goes while the members it uses still exist.
CMainFrame::~CMainFrame()
{
    DestroyWindow();
}

void CMainFrame::PrepareClass(WNDCLASSEXW& wc) const
{
    wc.hIcon = ::LoadIconW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN));
    wc.hIconSm = static_cast<HICON>(::LoadImageW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDI_MAIN), IMAGE_ICON,
                                                 ::GetSystemMetrics(SM_CXSMICON),
                                                 ::GetSystemMetrics(SM_CYSMICON), 0));
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
}

HWND CMainFrame::Create()
{
    CL::UniqueMenu menu(::LoadMenuW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDR_EDITOR_MENU)));
    if (!menu)
        return nullptr;
    const CL::CDpi dpi = CL::CDpi::Of(nullptr);
    m_layout = CEditorLayout::Load(m_layoutKey);
    RECT rect = {};
    if (!m_layout.WindowRect(dpi, rect)) {
        // Centred in the work area, when no usable place is remembered.
        RECT work = {};
        ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        const int width = std::min(dpi.Scale(820), static_cast<int>(work.right - work.left));
        const int height = std::min(dpi.Scale(560), static_cast<int>(work.bottom - work.top));
        const int left = work.left + (work.right - work.left - width) / 2;
        const int top = work.top + (work.bottom - work.top - height) / 2;
        rect = RECT{left, top, left + width, top + height};
    }
    const HWND window = CreateEx(nullptr, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0, &rect, menu.get());
    if (window)
        menu.release();   // the window's menu goes with the window
    return window;
}

bool CMainFrame::PreTranslateMessage(MSG& msg)
{
    if (!IsWindow() || !m_accelerators)
        return false;
    if (msg.hwnd != Hwnd() && !::IsChild(Hwnd(), msg.hwnd))
        return false;
    if (EditingLabel(msg.hwnd))
        return false;   // Del, Ctrl+C ... belong to the name being typed
    if (m_drag.active && msg.message == WM_KEYDOWN && msg.wParam == VK_ESCAPE) {
        EndDrag();   // Esc cancels a drag
        m_drag = DragState();
        m_bars.SetStatusText(L"");
        return true;
    }
    return ::TranslateAcceleratorW(Hwnd(), m_accelerators, &msg) != 0;
}

LRESULT CMainFrame::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        return OnCreate();
    case WM_DESTROY:
        OnDestroy();
        return 0;
    case WM_SIZE:
        OnSize();
        return 0;
    case WM_GETMINMAXINFO: {
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        const CL::CDpi dpi = CL::CDpi::Of(Hwnd());
        info->ptMinTrackSize = POINT{dpi.Scale(kMinWidth), dpi.Scale(kMinHeight)};
        return 0;
    }
    case WM_DPICHANGED:
        m_bars.OnDpiChanged();
        m_list.OnDpiChanged();
        CL::CDpi::OnDpiChanged(Hwnd(), lParam);   // its WM_SIZE lays the window out again
        return 0;
    case WM_CLOSE:
        OnClose();
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam));
        ShowStatus();
        return 0;
    case WM_NOTIFY:
        return OnNotify(reinterpret_cast<NMHDR*>(lParam));
    case WM_MENUSELECT:
        m_bars.OnMenuSelect(wParam, lParam);
        return 0;
    case WM_INITMENUPOPUP:
        OnInitMenuPopup(reinterpret_cast<HMENU>(wParam));
        return 0;
    case WM_SYSCOLORCHANGE:
        OnSysColorChange();
        return 0;
    case kRenameMessage:
        OnRenameMessage();
        ShowStatus();
        return 0;
    case WM_MOUSEMOVE:
        if (m_drag.active)
            OnDragMove(lParam);
        return 0;
    case WM_LBUTTONUP:
        OnDragDrop(wParam, lParam);
        ShowStatus();
        return 0;
    case WM_CAPTURECHANGED:
        if (m_drag.active && reinterpret_cast<HWND>(lParam) != Hwnd()) {
            EndDrag();   // another window took the mouse: the drag is over
            m_drag = DragState();
        }
        return 0;
    case WM_CONTEXTMENU:
        OnContextMenu(reinterpret_cast<HWND>(wParam), lParam);
        return 0;
    case WM_SETFOCUS:
        ::SetFocus(m_lastFocus && ::IsWindow(m_lastFocus) ? m_lastFocus : m_tree);
        return 0;
    default:
        return DefaultProc(message, wParam, lParam);
    }
}

LRESULT CMainFrame::OnCreate()
{
    Log(3, "CMainFrame::OnCreate" + MV_POS());
    bool created = false;
    CL::RunReported([this, &created] {
        m_accelerators = ::LoadAcceleratorsW(CL::ModuleInstance(), MAKEINTRESOURCEW(IDR_EDITOR_MENU));
        m_bars.Create(Hwnd(), ToolButtons());
        m_bars.SetPanes(CEditorStatus::PaneWidths());
        const CL::CDpi dpi = CL::CDpi::Of(Hwnd());
        if (!m_splitter.Create(Hwnd(), IDC_EDITOR_SPLITTER,
                               m_layout.SplitterPosition(dpi, dpi.Scale(kSplitterPosition))))
            CL::ThrowLastError(L"m_splitter.Create");
        m_tree = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_TREEVIEWW, L"",
                                   WS_CHILD | WS_VISIBLE | WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS |
                                       TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_EDITLABELS,
                                   0, 0, 0, 0, m_splitter, reinterpret_cast<HMENU>(IDC_EDITOR_TREE),
                                   CL::ModuleInstance(), nullptr);
        if (!m_tree)
            CL::ThrowLastError(L"m_tree.Create");
        if (!m_list.Create(m_splitter, IDC_EDITOR_LIST, WS_TABSTOP | LVS_EDITLABELS))
            CL::ThrowLastError(L"m_list.Create");
        CL::EnableContextMenuKeys(m_tree);
        CL::CAccessibleName::Set(m_tree, L"Branches");
        CL::CAccessibleName::Set(m_list, L"Items");
        m_list.SetColumns(CItemRows::Columns());
        m_layout.ApplyColumns(m_list.Hwnd());
        m_list.SetRows(&m_rows);
        m_splitter.SetPanes(m_tree, m_list);
        // Both panes stay wide enough to be seen and grabbed.
        m_splitter.onSplitterMove = [this](int position) {
            RECT client = {};
            ::GetClientRect(m_splitter, &client);
            const int least = CL::CDpi::Of(m_splitter).Scale(kMinPaneWidth);
            return position >= least && position <= client.right - m_splitter.BarWidth() - least;
        };
        m_document.AttachViews(this);
        Layout();
        FillViews();
        m_lastFocus = m_tree;
        created = true;
    });
    return created ? 0 : -1;
}

void CMainFrame::OnDestroy()
{
    Log(3, "CMainFrame::OnDestroy" + MV_POS());
    CL::RunReported([this] { SaveLayout(); });
    CL::RunReported([this] {
        m_document.AttachViews(nullptr);
        ClearViews();
        m_list.SetRows(nullptr);
        m_tree = nullptr;
        m_lastFocus = nullptr;
    });
}

void CMainFrame::SaveLayout()
{
    if (m_splitter.IsWindow() && m_list.Hwnd())
        CEditorLayout::Capture(Hwnd(), m_splitter.Position(), m_list.Hwnd()).Save(m_layoutKey);
}

void CMainFrame::ShowStatus()
{
    if (m_tree)
        CEditorStatus::Show(m_bars, m_listBranch.get(), *m_document.Model()->RootBranch(), m_document.IsDirty(),
                            m_document.IsDirty() ? ChangeCount() : 0);
}

void CMainFrame::OnSize()
{
    Layout();
}

void CMainFrame::Layout()
{
    if (!m_splitter.IsWindow())
        return;
    const RECT rest = m_bars.Layout();
    ::MoveWindow(m_splitter, rest.left, rest.top, rest.right - rest.left, rest.bottom - rest.top, TRUE);
}

void CMainFrame::OnClose()
{
    Log(3, "CMainFrame::OnClose" + MV_POS());
    CL::RunReported([this] {
        if (m_document.IsDirty()) {
            const int answer = Ask(kSaveChangesQuestion, L"Save");
            if (answer == IDCANCEL)
                return;
            if (answer == IDYES) {
                CL::CWaitCursor wait;
                m_exchange.SaveToServer(m_document);
            } else if (answer != IDNO) {
                return;
            }
        }
        DestroyWindow();
    });
}

void CMainFrame::OnCommand(WORD id)
{
    switch (id) {
    case ID_AS_FILE_NEW: OnFileNew(); break;
    case ID_AS_FILE_OPEN: OnFileOpen(); break;
    case ID_AS_FILE_SAVE: OnFileSave(); break;
    case ID_AS_FILE_SAVE_COPY: OnFileSaveCopy(); break;
    case ID_AS_FILE_RELOAD: OnFileReload(); break;
    case ID_AS_FILE_EXPORT_CSV: OnFileExportCsv(); break;
    case ID_AS_FILE_IMPORT_CSV: OnFileImportCsv(); break;
    case ID_AS_FILE_REVIEW: OnFileReview(); break;
    case ID_AS_FILE_EXPORT_WORKBOOK: OnFileExportWorkbook(); break;
    case ID_AS_FILE_IMPORT_WORKBOOK: OnFileImportWorkbook(); break;
    case ID_AS_EDIT_UNDO: OnEditUndo(); break;
    case ID_AS_EDIT_REDO: OnEditRedo(); break;
    case ID_AS_EDIT_CUT: OnEditCut(); break;
    case ID_AS_EDIT_COPY: OnEditCopy(); break;
    case ID_AS_EDIT_PASTE: OnEditPaste(); break;
    case ID_AS_EDIT_DUPLICATE: OnEditDuplicate(); break;
    case ID_AS_EDIT_RENAME: OnEditRename(); break;
    case ID_AS_EDIT_FIND: OnEditFind(); break;
    case ID_AS_EDIT_FIND_NEXT: OnEditFindNext(true); break;
    case ID_AS_EDIT_FIND_PREVIOUS: OnEditFindNext(false); break;
    case ID_AS_EDIT_NEW_BRANCH: OnEditNewBranch(); break;
    case ID_AS_EDIT_NEW_ITEM: OnEditNewItem(); break;
    case ID_AS_EDIT_DELETE: OnEditDelete(); break;
    case ID_AS_EDIT_HISTORY: OnEditHistory(); break;
    case ID_AS_EDIT_PROPERTIES: OnEditProperties(); break;
    case ID_AS_VIEW_TOOLBAR: OnViewToolbar(); break;
    case ID_AS_VIEW_STATUS_BAR: OnViewStatusBar(); break;
    case ID_AS_VIEW_CHANGE_HISTORY: OnViewChangeHistory(); break;
    case ID_AS_HELP_ONLINE: OnHelpOnline(); break;
    case ID_AS_HELP_ABOUT: OnHelpAbout(); break;
    default: break;
    }
}

LRESULT CMainFrame::OnNotify(NMHDR* header)
{
    LRESULT result = 0;
    if (header->code == LVN_COLUMNCLICK && header->hwndFrom == m_list.Hwnd() && m_list.Hwnd())
        return OnColumnClick(header);
    if (m_list.OnNotify(header, &result) || m_bars.OnNotify(header, &result))
        return result;
    if (header->hwndFrom == m_bars.StatusBar() && header->code == NM_DBLCLK) {
        OnStatusDoubleClick(*reinterpret_cast<const NMMOUSE*>(header));
        return TRUE;
    }
    if (header->hwndFrom == m_tree && m_tree) {
        switch (header->code) {
        case TVN_SELCHANGEDW:
            OnTreeSelChanged(*reinterpret_cast<NMTREEVIEWW*>(header));
            return 0;
        case TVN_BEGINDRAGW:
            OnTreeBeginDrag(*reinterpret_cast<NMTREEVIEWW*>(header));
            return 0;
        case TVN_BEGINLABELEDITW:
            return OnTreeBeginLabelEdit(*reinterpret_cast<NMTVDISPINFOW*>(header));
        case TVN_ENDLABELEDITW:
            OnTreeEndLabelEdit(*reinterpret_cast<NMTVDISPINFOW*>(header));
            return FALSE;   // the rename sets the node's text
        case TVN_DELETEITEMW:
            // Each node holds a reference to its branch.
            if (auto* branch = reinterpret_cast<COPCServerAddressSpaceBranch*>(
                    reinterpret_cast<NMTREEVIEWW*>(header)->itemOld.lParam))
                branch->Release();
            return 0;
        case NM_RCLICK:
            OnTreeRightClick();
            return TRUE;   // handled: no WM_CONTEXTMENU follows
        case NM_SETFOCUS:
            m_lastFocus = m_tree;
            return 0;
        case TVN_KEYDOWN:
            if (reinterpret_cast<NMTVKEYDOWN*>(header)->wVKey == VK_TAB) {
                ::SetFocus(m_list);
                return TRUE;
            }
            return 0;
        default:
            return 0;
        }
    }
    if (header->hwndFrom == m_list.Hwnd() && m_list.Hwnd()) {
        switch (header->code) {
        case NM_RCLICK:
            OnListRightClick();
            return TRUE;
        case NM_DBLCLK:
            if (reinterpret_cast<NMITEMACTIVATE*>(header)->iItem >= 0)
                OnEditProperties();
            return 0;
        case LVN_BEGINDRAG:
            OnListBeginDrag();
            return 0;
        case LVN_ENDLABELEDITW:
            OnListEndLabelEdit(*reinterpret_cast<NMLVDISPINFOW*>(header));
            return FALSE;   // the row shows the model's name
        case NM_SETFOCUS:
            m_lastFocus = m_list;
            return 0;
        case LVN_KEYDOWN:
            if (reinterpret_cast<NMLVKEYDOWN*>(header)->wVKey == VK_TAB)
                ::SetFocus(m_tree);
            return 0;
        default:
            return 0;
        }
    }
    return 0;
}

// The list sorts itself by the clicked column (the click rule and the arrows
// are the report list's); a long list takes a moment.
LRESULT CMainFrame::OnColumnClick(const NMHDR* header)
{
    Log(3, "CMainFrame::OnColumnClick" + MV_POS());
    LRESULT result = 0;
    CL::RunReported([&] {
        CL::CWaitCursor wait;
        m_list.OnNotify(header, &result);
    });
    return result;
}

void CMainFrame::OnInitMenuPopup(HMENU menu)
{
    ::CheckMenuItem(menu, ID_AS_VIEW_TOOLBAR, MF_BYCOMMAND | (m_bars.ToolbarVisible() ? MF_CHECKED : MF_UNCHECKED));
    ::CheckMenuItem(menu, ID_AS_VIEW_STATUS_BAR,
                    MF_BYCOMMAND | (m_bars.StatusBarVisible() ? MF_CHECKED : MF_UNCHECKED));
    // Delete and Properties act on the view with the focus: the selected
    // branch (not the root) in the tree, the selected rows in the list.
    const bool inTree = TreeHasFocus();
    const COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, SelectedNode());
    const bool hasRows = m_list.Hwnd() && !m_list.SelectedRows().empty();
    const bool canEdit = inTree ? (branch && branch->Parent()) : hasRows;
    const bool hasItem = m_list.Hwnd() && (m_list.FocusedRow() >= 0 || hasRows);
    const auto enable = [menu](UINT id, bool enabled) {
        ::EnableMenuItem(menu, id, MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
    };
    enable(ID_AS_EDIT_DELETE, canEdit);
    enable(ID_AS_EDIT_PROPERTIES, canEdit);
    enable(ID_AS_EDIT_HISTORY, hasItem);
    enable(ID_AS_EDIT_DUPLICATE, !inTree && m_list.Hwnd() && m_list.SelectedRows().size() == 1);
    enable(ID_AS_EDIT_RENAME, canEdit);
    enable(ID_AS_EDIT_CUT, canEdit);
    enable(ID_AS_EDIT_COPY, canEdit);
    enable(ID_AS_EDIT_PASTE, ::IsClipboardFormatAvailable(CF_UNICODETEXT) != FALSE);
    CEditMenu::Update(menu, m_document.History());
}

void CMainFrame::OnSysColorChange()
{
    Log(3, "CMainFrame::OnSysColorChange" + MV_POS());
    CL::RunReported([this] {
        m_list.OnSysColorChange();
        for (HWND child : {m_tree, m_list.Hwnd(), m_bars.Toolbar(), m_bars.StatusBar()})
            if (child)
                ::SendMessageW(child, WM_SYSCOLORCHANGE, 0, 0);
    });
}

// ---- Tree and list ----------------------------------------------------------

COPCServerAddressSpaceBranch* CMainFrame::NodeBranch(HWND tree, HTREEITEM node)
{
    return CBranchTree::BranchOf(tree, node);
}

HTREEITEM CMainFrame::SelectedNode() const
{
    return m_tree ? TreeView_GetSelection(m_tree) : nullptr;
}

bool CMainFrame::TreeHasFocus() const
{
    const HWND focus = ::GetFocus();
    return m_tree && (focus ? focus == m_tree : m_lastFocus == m_tree);
}

HTREEITEM CMainFrame::RootNode() const
{
    return m_tree ? TreeView_GetRoot(m_tree) : nullptr;
}

COPCServerAddressSpaceBranch& CMainFrame::TargetBranch() const
{
    if (COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, SelectedNode()))
        return *branch;
    return *m_document.Model()->RootBranch();
}

HTREEITEM CMainFrame::TargetNode() const
{
    const HTREEITEM selected = SelectedNode();
    return selected ? selected : RootNode();
}

std::wstring CMainFrame::BranchLabel(const COPCServerAddressSpaceBranch& branch) const
{
    return CBranchTree::Label(branch);
}

void CMainFrame::ClearViews()
{
    if (m_tree && TreeView_GetRoot(m_tree)) {
        std::vector<std::wstring> rows;
        for (size_t row : m_list.SelectedRows())
            rows.push_back(m_rows.ItemAt(row)->Name());
        m_place.Capture(m_tree, std::move(rows));
    }
    m_clearing = true;
    if (m_tree)
        TreeView_DeleteAllItems(m_tree);
    m_clearing = false;
    m_rows.Clear();
    if (m_list.Hwnd())
        m_list.Reset(true);
    m_listBranch = nullptr;
}

void CMainFrame::FillViews()
{
    if (!m_tree)
        return;
    const BranchPtr& root = m_document.Model()->RootBranch();
    ::SendMessageW(m_tree, WM_SETREDRAW, FALSE, 0);
    m_clearing = true;
    HTREEITEM rootNode = nullptr;
    try {
        rootNode = CBranchTree::Insert(m_tree, nullptr, root);
        CBranchTree::InsertSubtree(m_tree, rootNode, *root);
    } catch (...) {
        m_clearing = false;
        ::SendMessageW(m_tree, WM_SETREDRAW, TRUE, 0);
        throw;
    }
    m_clearing = false;
    TreeView_Expand(m_tree, rootNode, TVE_EXPAND);
    // The places the user had open before the views were emptied.
    HTREEITEM selected = m_place.Empty() ? rootNode : m_place.Restore(m_tree);
    ::SendMessageW(m_tree, WM_SETREDRAW, TRUE, 0);
    ::InvalidateRect(m_tree, nullptr, TRUE);
    TreeView_SelectItem(m_tree, selected);
    TreeView_EnsureVisible(m_tree, selected);
    COPCServerAddressSpaceBranch* branch = CBranchTree::BranchOf(m_tree, selected);
    if (m_listBranch.get() != branch)
        FillList(branch);
    if (!m_place.Empty()) {
        std::vector<ItemPtr> rows;
        for (size_t row = 0; row < m_rows.RowCount(); ++row)
            if (m_place.RowSelected(m_rows.ItemAt(row)->Name()))
                rows.push_back(m_rows.ItemAt(row));
        SelectRowsOf(rows);
    }
    m_place.Clear();
    ShowStatus();
}

void CMainFrame::FillList(COPCServerAddressSpaceBranch* branch)
{
    m_listBranch = branch;
    if (branch)
        m_rows.Assign(branch->Items());
    else
        m_rows.Clear();
    m_list.Reset(true);
    ShowStatus();
}

void CMainFrame::OnTreeSelChanged(const NMTREEVIEWW& change)
{
    if (m_clearing)
        return;
    Log(3, "CMainFrame::OnTreeSelChanged" + MV_POS());
    CL::RunReported([this, &change] {
        CL::CWaitCursor wait;
        FillList(reinterpret_cast<COPCServerAddressSpaceBranch*>(change.itemNew.lParam));
    });
}

void CMainFrame::OnTreeRightClick()
{
    Log(3, "CMainFrame::OnTreeRightClick" + MV_POS());
    CL::RunReported([this] {
        POINT screen = {};
        ::GetCursorPos(&screen);
        TVHITTESTINFO hit = {};
        hit.pt = screen;
        ::ScreenToClient(m_tree, &hit.pt);
        // The node under the mouse becomes the selection the menu acts on.
        if (const HTREEITEM node = TreeView_HitTest(m_tree, &hit))
            TreeView_SelectItem(m_tree, node);
        ::SetFocus(m_tree);
        ShowContextMenu(IDR_EDITOR_TREE_MENU, screen);
    });
}

void CMainFrame::OnListRightClick()
{
    Log(3, "CMainFrame::OnListRightClick" + MV_POS());
    CL::RunReported([this] {
        POINT screen = {};
        ::GetCursorPos(&screen);
        ::SetFocus(m_list);
        ShowContextMenu(IDR_EDITOR_LIST_MENU, screen);
    });
}

void CMainFrame::OnContextMenu(HWND control, LPARAM position)
{
    Log(3, "CMainFrame::OnContextMenu" + MV_POS());
    CL::RunReported([this, control, position] {
        POINT screen = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
        const bool fromKeyboard = position == -1;
        if (control == m_tree) {
            RECT rect = {};
            if (fromKeyboard) {
                const HTREEITEM node = SelectedNode();
                if (!node || !TreeView_GetItemRect(m_tree, node, &rect, TRUE))
                    ::GetClientRect(m_tree, &rect);
                screen = POINT{rect.left, rect.bottom};
                ::ClientToScreen(m_tree, &screen);
            }
            ShowContextMenu(IDR_EDITOR_TREE_MENU, screen);
        } else if (control == m_list.Hwnd()) {
            if (fromKeyboard) {
                RECT rect = {};
                const long long focused = m_list.FocusedRow();
                const int line = focused < 0 ? -1 : m_list.DisplayIndexOf(static_cast<size_t>(focused));
                if (line < 0 || !ListView_GetItemRect(m_list, line, &rect, LVIR_LABEL))
                    ::GetClientRect(m_list, &rect);
                screen = POINT{rect.left, rect.bottom};
                ::ClientToScreen(m_list, &screen);
            }
            ShowContextMenu(IDR_EDITOR_LIST_MENU, screen);
        }
    });
}

void CMainFrame::ShowContextMenu(int menuId, POINT screen)
{
    CL::UniqueMenu menu(::LoadMenuW(CL::ModuleInstance(), MAKEINTRESOURCEW(menuId)));
    if (!menu)
        CL::ThrowLastError(L"LoadMenuW");
    ::TrackPopupMenu(::GetSubMenu(menu.get(), 0), TPM_LEFTALIGN | TPM_RIGHTBUTTON, screen.x, screen.y, 0, Hwnd(),
                     nullptr);
}

// ---- File commands ----------------------------------------------------------

void CMainFrame::ReplaceModel(CAddressSpaceDocument::ModelPtr model)
{
    ClearViews();
    m_document.SetModel(std::move(model));
    m_document.SetDirty();
    FillViews();
}

void CMainFrame::OnFileNew()
{
    Log(3, "CMainFrame::OnFileNew" + MV_POS());
    CL::RunReported([this] {
        if (Ask(kEraseQuestion, L"New") != IDYES)
            return;
        ReplaceModel(CAddressSpaceDocument::ModelPtr::Make());
    });
}

void CMainFrame::OnFileOpen()
{
    Log(3, "CMainFrame::OnFileOpen" + MV_POS());
    CL::RunReported([this] {
        // The first time, the folder of the server's exchange file.
        const std::wstring folder = FolderOf(m_exchange.ExchangeFile());
        if (!CL::AskOpenFileName(Hwnd(), kFileFilter, L"Open", m_openPath, std::size(m_openPath), folder.c_str()))
            return;
        CL::CWaitCursor wait;
        // Loaded aside first: a file that fails to load changes nothing.
        auto model = CAddressSpaceDocument::ModelPtr::Make();
        model->Load(m_openPath);
        ReplaceModel(std::move(model));
    });
}

void CMainFrame::OnFileSave()
{
    Log(3, "CMainFrame::OnFileSave" + MV_POS());
    CL::RunReported([this] {
        if (Ask(kOverwriteQuestion, L"Save") != IDYES)
            return;
        CL::CWaitCursor wait;
        m_exchange.SaveToServer(m_document);
    });
}

void CMainFrame::OnFileSaveCopy()
{
    Log(3, "CMainFrame::OnFileSaveCopy" + MV_POS());
    CL::RunReported([this] {
        OPENFILENAMEW ofn = {};
        ofn.lStructSize = sizeof ofn;
        ofn.hwndOwner = Hwnd();
        ofn.lpstrFilter = kFileFilter;
        ofn.nFilterIndex = 1;
        ofn.lpstrFile = m_copyPath;
        ofn.nMaxFile = static_cast<DWORD>(std::size(m_copyPath));
        ofn.lpstrTitle = L"Save a copy";
        const std::wstring folder = FolderOf(m_exchange.ExchangeFile());
        ofn.lpstrInitialDir = folder.c_str();
        ofn.Flags = OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOREADONLYRETURN;
        std::wstring path;
        do {
            if (!::GetSaveFileNameW(&ofn))
                return;
            path = m_copyPath;
        } while (!CompletedName(Hwnd(), path, ofn.nFilterIndex, L".xml", L"Save a copy"));
        CL::CWaitCursor wait;
        m_document.Model()->Save(path);
    });
}

void CMainFrame::OnFileExportCsv()
{
    Log(3, "CMainFrame::OnFileExportCsv" + MV_POS());
    CL::RunReported([this] {
        OPENFILENAMEW ofn = {};
        ofn.lStructSize = sizeof ofn;
        ofn.hwndOwner = Hwnd();
        ofn.lpstrFilter = kCsvFilter;
        ofn.nFilterIndex = 1;
        ofn.lpstrFile = m_csvPath;
        ofn.nMaxFile = static_cast<DWORD>(std::size(m_csvPath));
        ofn.lpstrTitle = L"Export CSV";
        ofn.Flags = OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOREADONLYRETURN;
        std::wstring path;
        do {
            if (!::GetSaveFileNameW(&ofn))
                return;
            path = m_csvPath;
        } while (!CompletedName(Hwnd(), path, ofn.nFilterIndex, L".csv", L"Export CSV"));
        CL::CWaitCursor wait;
        CL::WriteWholeFile(path, CL::ExportAddressSpaceCsv(*m_document.Model()));
    });
}

void CMainFrame::OnFileImportCsv()
{
    Log(3, "CMainFrame::OnFileImportCsv" + MV_POS());
    CL::RunReported([this] {
        if (!CL::AskOpenFileName(Hwnd(), kCsvFilter, L"Import CSV", m_csvPath, std::size(m_csvPath)))
            return;
        CL::CsvImportPlan plan;
        {
            CL::CWaitCursor wait;
            plan = CL::ReadAddressSpaceCsv(CL::ReadWholeFile(m_csvPath), NewItemDefaults());
        }
        ImportPlan(plan, ::PathFindFileNameW(m_csvPath), L"Import CSV", L"CSV import");
    });
}

// Shows the import's report and, on Import, applies the plan as one
// undoable step named `step`; the status bar says what it did.
void CMainFrame::ImportPlan(const CL::CsvImportPlan& plan, const wchar_t* fileName, const wchar_t* step,
                            const wchar_t* what)
{
    CdlgCsvImport report(plan, fileName);
    if (report.DoModal(Hwnd()) != IDOK)
        return;
    // Applied to a copy: the model changes only when the whole import went through.
    CL::CWaitCursor wait;
    auto model = CL::CopyAddressSpace(*m_document.Model());
    const CL::CsvImportResult result = CL::ApplyCsvImport(plan, *model, report.updateExisting);
    ShowEdit(m_document.Execute(std::make_unique<CReplaceModelCommand>(m_document, std::move(model), step)));
    m_bars.SetStatusText(CL::Format(L"%ls: %zu item(s) added, %zu updated, %zu left as they were, "
                                    L"%zu branch(es) created. Save sends the address space to the server.",
                                    what, result.added, result.updated, result.leftAlone, result.branchesCreated));
}

// Columns the text lacks take what the item dialog offers a new item.
CL::CsvItemDefaults CMainFrame::NewItemDefaults()
{
    const CdlgAddItem fresh;
    return {fresh.dataType, fresh.readable, fresh.writable, fresh.archive, fresh.scanRate};
}

void CMainFrame::OnFileReload()
{
    Log(3, "CMainFrame::OnFileReload" + MV_POS());
    CL::RunReported([this] {
        if (m_document.IsDirty() && Ask(kReloadQuestion, L"Reload") != IDYES)
            return;
        CL::CWaitCursor wait;
        if (!m_exchange.LoadFromServer(m_document))
            return;
        ClearViews();
        FillViews();
    });
}

// ---- Edit commands ----------------------------------------------------------

void CMainFrame::OnEditNewBranch()
{
    Log(3, "CMainFrame::OnEditNewBranch" + MV_POS());
    CL::RunReported([this] {
        COPCServerAddressSpaceBranch& parent = TargetBranch();
        const HTREEITEM parentNode = TargetNode();
        std::wstring name;
        for (;;) {
            CdlgAddBranch dialog;
            dialog.addMode = true;
            dialog.name = name;
            dialog.parent = BranchLabel(parent);
            const INT_PTR result = dialog.DoModal(Hwnd());
            if (result != IDOK && result != IDC_SAVE_AND_NEW)
                return;
            if (parent.FindBranch(dialog.name)) {
                // Whichever button was used, the name is asked again.
                ShowError(kDuplicateBranchText, L"Add Branch");
                name = dialog.name;
                continue;
            }
            BranchPtr branch = BranchPtr::Make(dialog.name);
            m_document.Execute(std::make_unique<CAddBranchCommand>(BranchPtr(&parent), branch));
            if (parentNode) {
                CBranchTree::Insert(m_tree, parentNode, branch);
                CBranchTree::SortChildren(m_tree, parentNode);
                TreeView_Expand(m_tree, parentNode, TVE_EXPAND);
            }
            if (result == IDOK)
                return;
            name.clear();
        }
    });
}

void CMainFrame::OnEditNewItem()
{
    Log(3, "CMainFrame::OnEditNewItem" + MV_POS());
    CL::RunReported([this] {
        COPCServerAddressSpaceBranch& branch = TargetBranch();
        for (;;) {
            CdlgAddItem dialog;
            dialog.addMode = true;
            dialog.branch = BranchLabel(branch);
            const INT_PTR result = dialog.DoModal(Hwnd());
            if (result != IDOK && result != IDC_SAVE_AND_NEW)
                return;
            if (branch.FindItem(dialog.name)) {
                ShowError(kDuplicateItemText, L"Add Item");
            } else {
                const DWORD rights = (dialog.readable ? COPCItem::kReadable : 0) |
                                     (dialog.writable ? COPCItem::kWritable : 0);
                ItemPtr item = ItemPtr::Make(rights, dialog.scanRate, dialog.archive, kGoodQuality, dialog.dataType,
                                             nullptr);
                item->Rename(dialog.name.c_str());
                item->SetValue(dialog.value);
                item->SetValueTime(Now());
                m_document.Execute(std::make_unique<CAddItemCommand>(BranchPtr(&branch), item));
                if (&branch == m_listBranch.get()) {
                    m_rows.Append(item);
                    m_list.AppendRow(m_rows.RowCount() - 1);
                }
            }
            // Unlike a branch, an item refused after "Save" is dropped: only
            // "Save and Create New" asks again.
            if (result != IDC_SAVE_AND_NEW)
                return;
        }
    });
}

void CMainFrame::OnEditDelete()
{
    Log(3, "CMainFrame::OnEditDelete" + MV_POS());
    CL::RunReported([this] {
        if (TreeHasFocus())
            DeleteSelectedBranch();
        else
            DeleteSelectedItems();
    });
}

void CMainFrame::DeleteSelectedBranch()
{
    const HTREEITEM node = SelectedNode();
    COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, node);
    if (!branch || !branch->Parent()) {
        ::MessageBeep(MB_OK);   // the root stays
        return;
    }
    m_document.Execute(std::make_unique<CDeleteBranchCommand>(BranchPtr(branch)));
    TreeView_DeleteItem(m_tree, node);
}

void CMainFrame::DeleteSelectedItems()
{
    const std::vector<size_t> rows = m_list.SelectedRows();
    if (rows.empty() || !m_listBranch)
        return;
    std::vector<ItemPtr> items;
    items.reserve(rows.size());
    for (size_t row : rows)
        items.push_back(m_rows.ItemAt(row));
    m_document.Execute(std::make_unique<CDeleteItemsCommand>(m_listBranch, std::move(items)));
    m_rows.Remove(rows);
    m_list.RemoveRows(rows);
}

void CMainFrame::OnEditHistory()
{
    Log(3, "CMainFrame::OnEditHistory" + MV_POS());
    CL::RunReported([this] {
        long long row = m_list.FocusedRow();
        if (row < 0) {
            const std::vector<size_t> selected = m_list.SelectedRows();
            if (selected.empty())
                return;
            row = static_cast<long long>(selected.front());
        }
        const std::wstring itemId = ArchivedItemId(*m_rows.ItemAt(static_cast<size_t>(row)));
        if (m_history)
            m_history(Hwnd(), itemId);
        else
            ::MessageBoxW(Hwnd(), L"The historical data window is not available in this program.",
                          L"OPC HDA Database Explorer", MB_OK | MB_ICONINFORMATION);
    });
}

void CMainFrame::OnEditProperties()
{
    Log(3, "CMainFrame::OnEditProperties" + MV_POS());
    CL::RunReported([this] {
        if (TreeHasFocus())
            BranchProperties();
        else
            ItemProperties();
    });
}

void CMainFrame::BranchProperties()
{
    const HTREEITEM node = SelectedNode();
    COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, node);
    if (!branch || !branch->Parent()) {
        ::MessageBeep(MB_OK);   // the root has no name to edit
        return;
    }
    COPCServerAddressSpaceBranch& parent = *branch->Parent();
    std::wstring name = branch->Name();
    for (;;) {
        CdlgAddBranch dialog;
        dialog.addMode = false;
        dialog.name = name;
        dialog.parent = BranchLabel(parent);
        const INT_PTR result = dialog.DoModal(Hwnd());
        if (result != IDOK && result != IDC_SAVE_AND_NEW)
            return;
        if (!EqualNoCase(dialog.name, branch->Name()) && parent.FindBranch(dialog.name)) {
            ShowError(kDuplicateBranchText, L"Add Branch");
            name = dialog.name;
            continue;
        }
        // A change of letter case only changes nothing.
        if (!EqualNoCase(dialog.name, branch->Name())) {
            m_document.Execute(std::make_unique<CRenameBranchCommand>(BranchPtr(branch), dialog.name));
            CBranchTree::Sync(m_tree, TreeView_GetParent(m_tree, node), parent);
        }
        return;
    }
}

void CMainFrame::ItemProperties()
{
    const std::vector<size_t> rows = m_list.SelectedRows();
    if (rows.empty() || !m_listBranch)
        return;
    if (rows.size() == 1)
        EditOneItem(rows.front());
    else
        EditSeveralItems(rows);
}

void CMainFrame::FillItemDialog(CdlgAddItem& dialog, const COPCItem& item) const
{
    dialog.addMode = false;
    dialog.name = item.Name();
    dialog.branch = m_listBranch ? BranchLabel(*m_listBranch) : std::wstring();
    dialog.dataType = item.CanonicalDataType();
    try {
        dialog.valueText = CL::VariantToString(item.Value(), CL::kLocaleSystemDefault, CL::kArraySeparator);
    } catch (const CL::CException&) {
        dialog.valueText.clear();   // no text for this value: the user types one
    }
    dialog.readable = item.Readable();
    dialog.writable = item.Writable();
    dialog.scanRate = item.ScanRate();
    dialog.archive = item.Archive();
}

ItemFields CMainFrame::DialogFields(const CdlgAddItem& dialog)
{
    ItemFields fields;
    fields.accessRights = (dialog.readable ? COPCItem::kReadable : 0) | (dialog.writable ? COPCItem::kWritable : 0);
    fields.scanRate = dialog.scanRate;
    fields.archive = dialog.archive;
    fields.dataType = dialog.dataType;
    fields.value = dialog.value;
    fields.quality = kGoodQuality;
    fields.valueTime = Now();
    return fields;
}

void CMainFrame::EditOneItem(size_t row)
{
    const ItemPtr item = m_rows.ItemAt(row);
    CdlgAddItem dialog;
    FillItemDialog(dialog, *item);
    const INT_PTR result = dialog.DoModal(Hwnd());
    if (result != IDOK && result != IDC_SAVE_AND_NEW)
        return;
    COPCServerAddressSpaceBranch& branch = *m_listBranch;
    const std::wstring oldName = item->Name();
    if (!EqualNoCase(dialog.name, oldName) && branch.FindItem(dialog.name)) {
        ShowError(kDuplicateItemText, L"Add Item");
        return;
    }
    if (dialog.name.empty())
        throw CL::CException(E_INVALIDARG, L"COPCItem::Rename");
    ItemFields fields = DialogFields(dialog);
    fields.name = dialog.name;
    m_document.Execute(std::make_unique<CItemPropertiesCommand>(std::vector<ItemPtr>{item}, std::move(fields)));
    m_rows.Refresh(row);
    m_list.UpdateRow(row);
}

void CMainFrame::EditSeveralItems(const std::vector<size_t>& rows)
{
    CdlgAddItem dialog;
    FillItemDialog(dialog, *m_rows.ItemAt(rows.front()));
    dialog.multipleSelection = true;
    const INT_PTR result = dialog.DoModal(Hwnd());
    if (result != IDOK && result != IDC_SAVE_AND_NEW)
        return;
    std::vector<ItemPtr> items;
    items.reserve(rows.size());
    for (size_t row : rows)
        items.push_back(m_rows.ItemAt(row));
    m_document.Execute(std::make_unique<CItemPropertiesCommand>(std::move(items), DialogFields(dialog)));
    for (size_t row : rows) {
        m_rows.Refresh(row);
        m_list.UpdateRow(row);
    }
}

// ---- View and Help ----------------------------------------------------------

void CMainFrame::OnViewToolbar()
{
    Log(3, "CMainFrame::OnViewToolbar" + MV_POS());
    CL::RunReported([this] {
        m_bars.ShowToolbar(!m_bars.ToolbarVisible());
        Layout();
    });
}

void CMainFrame::OnViewStatusBar()
{
    Log(3, "CMainFrame::OnViewStatusBar" + MV_POS());
    CL::RunReported([this] {
        m_bars.ShowStatusBar(!m_bars.StatusBarVisible());
        Layout();
    });
}

void CMainFrame::OnHelpOnline()
{
    Log(3, "CMainFrame::OnHelpOnline" + MV_POS());
    CL::RunReported([this] {
        if (m_openUrl)
            m_openUrl(kHelpUrl);
    });
}

void CMainFrame::OnHelpAbout()
{
    Log(3, "CMainFrame::OnHelpAbout" + MV_POS());
    CL::RunReported([this] {
        if (m_about)
            m_about(Hwnd());
    });
}

int CMainFrame::Ask(const wchar_t* text, const wchar_t* caption)
{
    return ::MessageBoxW(Hwnd(), text, caption, MB_YESNOCANCEL | MB_ICONQUESTION);
}

void CMainFrame::ShowError(const wchar_t* text, const wchar_t* caption)
{
    ::MessageBoxW(Hwnd(), text, caption, MB_OK | MB_ICONERROR);
}
