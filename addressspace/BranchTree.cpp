#include "addressspace/BranchTree.h"

#include <unordered_map>
#include <vector>

#include "common/Exception.h"

namespace {

int CALLBACK CompareBranchNodes(LPARAM a, LPARAM b, LPARAM /*unused*/)
{
    const auto* left = reinterpret_cast<const COPCServerAddressSpaceBranch*>(a);
    const auto* right = reinterpret_cast<const COPCServerAddressSpaceBranch*>(b);
    return _wcsicmp(left->Name().c_str(), right->Name().c_str());
}

std::wstring NodeText(HWND tree, HTREEITEM node)
{
    wchar_t text[512] = {};
    TVITEMW item = {};
    item.mask = TVIF_TEXT | TVIF_HANDLE;
    item.hItem = node;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(std::size(text));
    TreeView_GetItem(tree, &item);
    return text;
}

void SetNodeText(HWND tree, HTREEITEM node, std::wstring text)
{
    TVITEMW item = {};
    item.mask = TVIF_TEXT | TVIF_HANDLE;
    item.hItem = node;
    item.pszText = text.data();
    TreeView_SetItem(tree, &item);
}

} // namespace

std::wstring CBranchTree::Label(const COPCServerAddressSpaceBranch& branch)
{
    if (branch.Parent() == nullptr && branch.Name().empty())
        return kRootText;
    return branch.Name();
}

COPCServerAddressSpaceBranch* CBranchTree::BranchOf(HWND tree, HTREEITEM node)
{
    if (!node)
        return nullptr;
    TVITEMW item = {};
    item.mask = TVIF_PARAM | TVIF_HANDLE;
    item.hItem = node;
    if (!TreeView_GetItem(tree, &item))
        return nullptr;
    return reinterpret_cast<COPCServerAddressSpaceBranch*>(item.lParam);
}

HTREEITEM CBranchTree::Insert(HWND tree, HTREEITEM parentNode, const BranchPtr& branch)
{
    std::wstring text = Label(*branch);
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parentNode ? parentNode : TVI_ROOT;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM;
    insert.item.pszText = text.data();
    insert.item.lParam = reinterpret_cast<LPARAM>(branch.get());
    const HTREEITEM node = TreeView_InsertItem(tree, &insert);
    if (!node)
        throw CL::CException(E_FAIL, L"TreeView_InsertItem");
    branch->AddRef();   // released on TVN_DELETEITEM
    return node;
}

void CBranchTree::InsertSubtree(HWND tree, HTREEITEM node, const COPCServerAddressSpaceBranch& branch)
{
    for (const BranchPtr& child : branch.Branches())
        InsertSubtree(tree, Insert(tree, node, child), *child);
}

void CBranchTree::SortChildren(HWND tree, HTREEITEM parentNode)
{
    TVSORTCB sort = {};
    sort.hParent = parentNode;
    sort.lpfnCompare = &CompareBranchNodes;
    TreeView_SortChildrenCB(tree, &sort, FALSE);
}

void CBranchTree::Sync(HWND tree, HTREEITEM node, const COPCServerAddressSpaceBranch& branch)
{
    std::unordered_map<const COPCServerAddressSpaceBranch*, HTREEITEM> shown;
    for (HTREEITEM child = TreeView_GetChild(tree, node); child; child = TreeView_GetNextSibling(tree, child))
        shown.emplace(BranchOf(tree, child), child);
    bool changed = false;
    for (const BranchPtr& sub : branch.Branches()) {
        const auto found = shown.find(sub.get());
        if (found == shown.end()) {
            InsertSubtree(tree, Insert(tree, node, sub), *sub);
            changed = true;
            continue;
        }
        if (NodeText(tree, found->second) != sub->Name()) {
            SetNodeText(tree, found->second, sub->Name());
            changed = true;
        }
        Sync(tree, found->second, *sub);
        shown.erase(found);
    }
    for (const auto& gone : shown)
        TreeView_DeleteItem(tree, gone.second);
    if (changed)
        SortChildren(tree, node);
}

HTREEITEM CBranchTree::NodeOf(HWND tree, const COPCServerAddressSpaceBranch* branch)
{
    std::vector<const COPCServerAddressSpaceBranch*> path;   // from the branch up to the root
    for (const COPCServerAddressSpaceBranch* b = branch; b; b = b->Parent())
        path.push_back(b);
    HTREEITEM node = TreeView_GetRoot(tree);
    if (path.empty() || BranchOf(tree, node) != path.back())
        return path.empty() ? node : nullptr;
    for (auto step = path.rbegin() + 1; step != path.rend() && node; ++step) {
        HTREEITEM child = TreeView_GetChild(tree, node);
        while (child && BranchOf(tree, child) != *step)
            child = TreeView_GetNextSibling(tree, child);
        node = child;
    }
    return node;
}
