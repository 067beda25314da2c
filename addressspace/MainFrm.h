#pragma once
// CMainFrame: the address space editor, a top-level frame window with a menu,
// a toolbar and a status bar; a splitter holds the tree of branches (left)
// and the list of the selected branch's items (right). The frame owns the
// document (the edited address space and its dirty flag) and the exchange
// with the server; the tray window creates it on demand after loading the
// server's address space, and it lives until the user closes it.
//
// Every command handler writes its trace line and runs inside the one error
// report; a failure ends the command and leaves model, views and dirty flag
// as they were.
#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <string>
#include <vector>

#include "addressspace/AddressSpaceDocument.h"
#include "addressspace/AddressSpaceCsv.h"
#include "addressspace/AddressSpaceExchange.h"
#include "addressspace/EditCommand.h"
#include "addressspace/EditorLayout.h"
#include "addressspace/EditorPlace.h"
#include "addressspace/FindCursor.h"
#include "addressspace/ItemFields.h"
#include "addressspace/ItemRows.h"
#include "common/Window.h"
#include "common/historian/HistorianValues.h"
#include "common/ui/FrameBars.h"
#include "common/ui/ReportList.h"
#include "common/ui/Splitter.h"

class CdlgAddItem;
struct ReviewServices;   // dlgReviewChanges.h

class CMainFrame : public CL::CWindow, public IAddressSpaceViews {
public:
    using BranchPtr = CL::CSmartPtr<COPCServerAddressSpaceBranch>;
    using ItemPtr = CL::CSmartPtr<COPCItem>;
    // Opens the historical data of an item (owner window, archived item ID).
    using HistoryHook = std::function<void(HWND, const std::wstring&)>;
    // Shows the about dialog over the owner window.
    using AboutHook = std::function<void(HWND)>;
    // Opens a web address.
    using UrlOpener = std::function<void(const std::wstring&)>;
    // The historian's summary (item ID, count, first and last time) for the
    // review of changes; throws when the historian cannot be opened.
    // The item IDs asked for, and branch paths standing for every ID below.
    using HistorianSummary = std::function<std::vector<CL::CHistorianSummaryEntry>(
        const std::vector<std::wstring>& itemIds, const std::vector<std::wstring>& branchPaths)>;

    static constexpr wchar_t kClassName[] = L"MorvaneAddressSpaceEditor";
    static constexpr wchar_t kTitle[] = L" OPC Address Space";
    static constexpr wchar_t kHelpUrl[] = L"https://www.varnel.example/opc-server-engine/help/";
    static constexpr wchar_t kRootText[] = L"Address Space";
    static constexpr int kMinWidth = 480;
    static constexpr int kMinHeight = 320;

    explicit CMainFrame(CAddressSpaceExchange exchange);
    ~CMainFrame() override;

    CAddressSpaceDocument& Document() { return m_document; }
    CAddressSpaceExchange& Exchange() { return m_exchange; }

    // Creates the window (hidden; the caller shows it) on the document's
    // current address space. Returns NULL on failure with the last error set.
    HWND Create();

    void SetHistoryHook(HistoryHook hook) { m_history = std::move(hook); }
    void SetAboutHook(AboutHook hook) { m_about = std::move(hook); }
    // Opens the change history over the owner window (View, Change History).
    void SetChangeHistoryHook(AboutHook hook) { m_changeHistory = std::move(hook); }
    // Takes a kept version (an address space file) into the editor as one
    // step that undo takes back; the window must exist. Throws when the file
    // cannot be loaded (the model stays as it was).
    void RestoreVersion(const std::wstring& file);
    void SetUrlOpener(UrlOpener opener) { m_openUrl = std::move(opener); }
    void SetHistorianSummary(HistorianSummary summary) { m_historianSummary = std::move(summary); }

    // The review of changes over this editor (MainFrmReview.cpp): what the
    // window may ask of the editor (the server now, the historian, Save, the
    // views after a revert). Other windows that open a review use it too.
    ReviewServices MakeReviewServices();
    // Opens the review over the editor, against its baseline ("my changes"),
    // or against the given address space named by the label.
    void ReviewChanges();
    void ReviewChangesAgainst(CAddressSpaceDocument::ModelPtr before, std::wstring label);
    // The differences from the baseline, as the "Modified" pane counts them.
    size_t ChangeCount();
    // The key of HKEY_CURRENT_USER that keeps the window's layout from one
    // opening to the next (read by Create, written when the window goes).
    void SetLayoutKey(std::wstring key) { m_layoutKey = std::move(key); }
    const std::wstring& LayoutKey() const { return m_layoutKey; }

    // The editor's keyboard accelerators; true when the message was one.
    bool PreTranslateMessage(MSG& msg);

    // Whether rows or a branch are being dragged.
    bool Dragging() const noexcept { return m_drag.active; }

    // The views, for the tray's glue and for tests.
    HWND Tree() const { return m_tree; }
    HWND List() const { return m_list.Hwnd(); }
    CL::CReportList& ReportList() { return m_list; }
    const CItemRows& Rows() const { return m_rows; }
    CL::CFrameBars& Bars() { return m_bars; }
    CL::CSplitter& Splitter() { return m_splitter; }
    // The branch of a tree node (the root node's is the root branch).
    static COPCServerAddressSpaceBranch* NodeBranch(HWND tree, HTREEITEM node);
    // The view (tree or list) that had the keyboard focus last.
    HWND LastFocusedView() const { return m_lastFocus; }
    // The branch whose items the list shows.
    COPCServerAddressSpaceBranch* ListBranch() const { return m_listBranch.get(); }

    // IAddressSpaceViews: empties the tree and the list; fills the tree from
    // the root and the list for the selection. The branches expanded and
    // selected before, and the selected rows, are expanded and selected
    // again where they still exist (else the root is selected).
    void ClearViews() override;
    void FillViews() override;

protected:
    const wchar_t* ClassName() const override { return kClassName; }
    void PrepareClass(WNDCLASSEXW& wc) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // Window messages.
    LRESULT OnCreate();
    void OnDestroy();
    void OnSize();
    void OnClose();
    void OnCommand(WORD id);
    LRESULT OnNotify(NMHDR* header);
    LRESULT OnColumnClick(const NMHDR* header);
    void OnInitMenuPopup(HMENU menu);
    void OnSysColorChange();
    void OnContextMenu(HWND control, LPARAM position);

    // Commands.
    void OnFileNew();
    void OnFileOpen();
    void OnFileSave();
    void OnFileSaveCopy();
    void OnFileReload();
    void OnFileExportCsv();
    void OnFileImportCsv();
    void OnFileReview();
    // A double-click on the status bar: the "Modified" pane opens the review.
    void OnStatusDoubleClick(const NMMOUSE& click);
    void OnFileExportWorkbook();
    void OnFileImportWorkbook();
    void ImportPlan(const CL::CsvImportPlan& plan, const wchar_t* fileName, const wchar_t* step, const wchar_t* what);
    void OnEditUndo();
    void OnEditRedo();
    void OnEditCut();
    void OnEditCopy();
    void OnEditPaste();
    void OnEditDuplicate();
    void OnEditRename();
    void OnEditFind();
    void OnEditFindNext(bool forward);
    void OnEditNewBranch();
    void OnEditNewItem();
    void OnEditDelete();
    void OnEditHistory();
    void OnEditProperties();
    void OnViewToolbar();
    void OnViewStatusBar();
    void OnHelpOnline();
    void OnHelpAbout();
    void OnViewChangeHistory();   // MainFrmChangeHistory.cpp

    // Tree and list.
    void OnTreeSelChanged(const NMTREEVIEWW& change);
    void OnTreeRightClick();
    void OnListRightClick();
    void ShowContextMenu(int menuId, POINT screen);
    HTREEITEM SelectedNode() const;
    // Whether the tree has the keyboard focus; while the window is inactive
    // (no focus in this thread), whether it had it last.
    bool TreeHasFocus() const;
    HTREEITEM RootNode() const;
    // The selected branch, or the root when nothing is selected.
    COPCServerAddressSpaceBranch& TargetBranch() const;
    HTREEITEM TargetNode() const;
    void FillList(COPCServerAddressSpaceBranch* branch);
    void Layout();
    // The status bar's item counts and "Modified" pane, brought up to the
    // model and the dirty flag after every message that may change them.
    void ShowStatus();
    // Writes the window's layout under the layout key.
    void SaveLayout();

    // Edits behind the commands.
    void DeleteSelectedBranch();
    void DeleteSelectedItems();
    void BranchProperties();
    void ItemProperties();
    void EditOneItem(size_t row);
    void FillItemDialog(CdlgAddItem& dialog, const COPCItem& item) const;
    std::wstring BranchLabel(const COPCServerAddressSpaceBranch& branch) const;
    void EditSeveralItems(const std::vector<size_t>& rows);
    // The fields that the item dialog puts on every item it edits.
    static ItemFields DialogFields(const CdlgAddItem& dialog);
    // Rename in place (MainFrmRename.cpp). The label edit of the tree or
    // the list keeps its keys (no accelerators while it is open).
    bool EditingLabel(HWND window) const;
    bool OnTreeBeginLabelEdit(const NMTVDISPINFOW& info);
    void OnTreeEndLabelEdit(const NMTVDISPINFOW& info);
    void OnListEndLabelEdit(const NMLVDISPINFOW& info);
    void OnRenameMessage();
    void RenameBranch(const BranchPtr& branch, const std::wstring& name);
    void RenameItem(const ItemPtr& item, const std::wstring& name);
    // The name typed in place, applied by kRenameMessage.
    struct PendingRename {
        BranchPtr branch;
        ItemPtr item;
        std::wstring name;
    };
    static constexpr UINT kRenameMessage = WM_APP + 17;
    // Drag and drop (MainFrmDragDrop.cpp): what is dragged, from where.
    struct DragState {
        bool active = false;
        BranchPtr from;
        std::vector<ItemPtr> items;   // rows of the list
        BranchPtr branch;             // or a branch of the tree
    };
    void OnListBeginDrag();
    void OnTreeBeginDrag(const NMTREEVIEWW& drag);
    void BeginDrag();
    void OnDragMove(LPARAM position);
    void OnDragDrop(WPARAM keys, LPARAM position);
    void EndDrag();
    COPCServerAddressSpaceBranch* DropTargetAt(POINT client, HTREEITEM* node) const;
    void Drop(const DragState& drag, const BranchPtr& target, bool copy);
    // Clipboard (MainFrmClipboard.cpp): the selection as tab-separated text
    // (empty: nothing to copy), and the paste of clipboard text.
    std::wstring SelectionText() const;
    // Puts the selection on the clipboard; false when nothing is selected.
    bool CopySelection();
    void CutSelection();
    void PasteText(const std::wstring& text);
    // What columns that CSV or pasted text lacks give a new item.
    static CL::CsvItemDefaults NewItemDefaults();
    // Brings the views up to the model after an undo or redo and selects
    // the branch the command touched.
    void ShowEdit(const CEditCommand& command);
    // Selects exactly the list rows of these items.
    void SelectRowsOf(const std::vector<ItemPtr>& items);
    // Selects the match's branch in the tree (expanding what is needed) and
    // its item's row in the list, and gives that view the focus.
    void ShowMatch(const CAddressSpaceSearch::Entry& entry);
    void ReplaceModel(CAddressSpaceDocument::ModelPtr model);
    int Ask(const wchar_t* text, const wchar_t* caption);
    void ShowError(const wchar_t* text, const wchar_t* caption);

    CAddressSpaceDocument m_document;
    CAddressSpaceExchange m_exchange;
    CL::CFrameBars m_bars;
    CL::CSplitter m_splitter;
    HWND m_tree = nullptr;
    CL::CReportList m_list;
    CItemRows m_rows;
    BranchPtr m_listBranch;
    HACCEL m_accelerators = nullptr;
    bool m_clearing = false;
    HWND m_lastFocus = nullptr;
    CFindCursor m_find;
    CEditorPlace m_place;
    std::wstring m_layoutKey = CEditorLayout::DefaultKey();
    CEditorLayout m_layout;   // as read by Create
    PendingRename m_pendingRename;
    DragState m_drag;   // taken by ClearViews, given back by FillViews
    wchar_t m_openPath[261] = {};
    wchar_t m_copyPath[261] = {};
    wchar_t m_csvPath[261] = {};
    wchar_t m_workbookPath[261] = {};
    HistoryHook m_history;
    AboutHook m_about;
    AboutHook m_changeHistory;
    UrlOpener m_openUrl;
    HistorianSummary m_historianSummary;
    // The last count of changes and the state it was counted for.
    struct ChangeCountCache {
        unsigned long long revision = 0;
        size_t count = 0;
        bool valid = false;
    } m_changeCount;
};
