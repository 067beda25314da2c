// Drag and drop in the address space editor: rows of the list and branches
// of the tree are dragged onto a branch of the tree and moved there (Ctrl
// held at the drop: copied). A branch cannot go into itself or below
// itself; a name that exists in the target shows the duplicate message of
// the item or branch dialog and nothing moves.
#include "addressspace/MainFrm.h"

#include <windowsx.h>

#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/BranchTree.h"
#include "addressspace/EditorTexts.h"
#include "addressspace/MoveCommand.h"
#include "addressspace/PasteCommand.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/ui/WaitCursor.h"

namespace {

bool IsSelfOrBelow(const COPCServerAddressSpaceBranch* target, const COPCServerAddressSpaceBranch* branch)
{
    for (const COPCServerAddressSpaceBranch* b = target; b; b = b->Parent())
        if (b == branch)
            return true;
    return false;
}

} // namespace

void CMainFrame::OnListBeginDrag()
{
    Log(3, "CMainFrame::OnListBeginDrag" + MV_POS());
    CL::RunReported([this] {
        m_drag = DragState();
        for (size_t row : m_list.SelectedRows())
            m_drag.items.push_back(m_rows.ItemAt(row));
        if (m_drag.items.empty() || !m_listBranch)
            return;
        m_drag.from = m_listBranch;
        BeginDrag();
    });
}

void CMainFrame::OnTreeBeginDrag(const NMTREEVIEWW& drag)
{
    Log(3, "CMainFrame::OnTreeBeginDrag" + MV_POS());
    CL::RunReported([this, &drag] {
        m_drag = DragState();
        COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, drag.itemNew.hItem);
        if (!branch || !branch->Parent())
            return;   // the root stays where it is
        m_drag.branch = branch;
        m_drag.from = branch->Parent();
        BeginDrag();
    });
}

void CMainFrame::BeginDrag()
{
    m_drag.active = true;
    ::SetCapture(Hwnd());
    m_bars.SetStatusText(L"Drop on a branch to move there; hold Ctrl to copy. Esc cancels.");
}

// The branch under a point of the frame's client area that may take the
// dragged rows or branch, or null.
COPCServerAddressSpaceBranch* CMainFrame::DropTargetAt(POINT client, HTREEITEM* node) const
{
    TVHITTESTINFO hit = {};
    hit.pt = client;
    ::MapWindowPoints(Hwnd(), m_tree, &hit.pt, 1);
    *node = TreeView_HitTest(m_tree, &hit);
    if (!*node || !(hit.flags & (TVHT_ONITEM | TVHT_ONITEMRIGHT | TVHT_ONITEMINDENT)))
        return nullptr;
    COPCServerAddressSpaceBranch* target = NodeBranch(m_tree, *node);
    if (m_drag.branch && IsSelfOrBelow(target, m_drag.branch.get()))
        return nullptr;
    return target;
}

void CMainFrame::OnDragMove(LPARAM position)
{
    HTREEITEM node = nullptr;
    const POINT client = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    const COPCServerAddressSpaceBranch* target = DropTargetAt(client, &node);
    TreeView_SelectDropTarget(m_tree, target ? node : nullptr);
    ::SetCursor(::LoadCursorW(nullptr, target ? IDC_ARROW : IDC_NO));
}

void CMainFrame::EndDrag()
{
    const bool active = std::exchange(m_drag.active, false);
    if (m_tree)
        TreeView_SelectDropTarget(m_tree, nullptr);
    if (active && ::GetCapture() == Hwnd())
        ::ReleaseCapture();
}

void CMainFrame::OnDragDrop(WPARAM keys, LPARAM position)
{
    if (!m_drag.active)
        return;
    Log(3, "CMainFrame::OnDragDrop" + MV_POS());
    HTREEITEM node = nullptr;
    const POINT client = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    COPCServerAddressSpaceBranch* target = DropTargetAt(client, &node);
    EndDrag();
    const DragState drag = std::exchange(m_drag, DragState());
    m_bars.SetStatusText(L"");
    if (!target)
        return;
    const bool copy = (keys & MK_CONTROL) != 0;
    CL::RunReported([this, &drag, target, copy] {
        CL::CWaitCursor wait;
        Drop(drag, BranchPtr(target), copy);
    });
}

void CMainFrame::Drop(const DragState& drag, const BranchPtr& target, bool copy)
{
    if (!copy && target.get() == drag.from.get())
        return;   // already there
    if (drag.branch) {
        if (target->FindBranch(drag.branch->Name())) {
            ShowError(kDuplicateBranchText, L"Add Branch");
            return;
        }
        std::unique_ptr<CEditCommand> command;
        if (copy)
            command = std::make_unique<CPasteCommand>(target, std::vector<ItemPtr>(),
                                                      std::vector<BranchPtr>{CL::CopyBranch(*drag.branch)}, L"Copy");
        else
            command = std::make_unique<CMoveCommand>(drag.from, std::vector<ItemPtr>(), drag.branch, target);
        ShowEdit(m_document.Execute(std::move(command)));
        return;
    }
    for (const ItemPtr& item : drag.items) {
        if (target->FindItem(item->Name())) {
            ShowError(kDuplicateItemText, L"Add Item");
            return;
        }
    }
    std::vector<ItemPtr> items = drag.items;
    if (copy) {
        for (ItemPtr& item : items)
            item = CL::CopyItem(*item);
    }
    std::unique_ptr<CEditCommand> command;
    if (copy)
        command = std::make_unique<CPasteCommand>(target, items, std::vector<BranchPtr>(), L"Copy");
    else
        command = std::make_unique<CMoveCommand>(drag.from, items, nullptr, target);
    ShowEdit(m_document.Execute(std::move(command)));
    SelectRowsOf(items);
}
