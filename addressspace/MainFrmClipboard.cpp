// The address space editor's Cut, Copy and Paste: the selected list rows or
// the selected tree branch go to the clipboard as tab-separated text with
// the header and columns of the CSV export (so that they paste into a
// spreadsheet's cells); Paste reads such text, also copied back from a
// spreadsheet, into the selected branch.
#include "addressspace/MainFrm.h"

#include "addressspace/BranchTree.h"
#include "addressspace/DeleteBranchCommand.h"
#include "addressspace/DeleteItemsCommand.h"
#include "addressspace/PasteCommand.h"
#include "addressspace/dlgCsvImport.h"
#include "common/DiagnosticLog.h"
#include "common/ErrorReport.h"
#include "common/Text.h"
#include "common/ui/Clipboard.h"
#include "common/ui/WaitCursor.h"

void CMainFrame::OnEditCopy()
{
    Log(3, "CMainFrame::OnEditCopy" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        CopySelection();
    });
}

void CMainFrame::OnEditCut()
{
    Log(3, "CMainFrame::OnEditCut" + MV_POS());
    CL::RunReported([this] {
        CL::CWaitCursor wait;
        if (CopySelection())
            CutSelection();
    });
}

bool CMainFrame::CopySelection()
{
    const std::wstring text = SelectionText();
    if (text.empty()) {
        ::MessageBeep(MB_OK);   // nothing selected
        return false;
    }
    CL::CClipboard(Hwnd()).PutText(text);
    return true;
}

void CMainFrame::OnEditPaste()
{
    Log(3, "CMainFrame::OnEditPaste" + MV_POS());
    CL::RunReported([this] {
        std::optional<std::wstring> text;
        {
            CL::CClipboard clipboard(Hwnd());
            text = clipboard.Text();
        }
        if (!text || text->empty()) {
            ::MessageBeep(MB_OK);
            return;
        }
        PasteText(*text);
    });
}

// With the focus in the tree the selected branch (not the root) with
// everything under it, else the selected rows.
std::wstring CMainFrame::SelectionText() const
{
    if (TreeHasFocus()) {
        const COPCServerAddressSpaceBranch* branch = NodeBranch(m_tree, SelectedNode());
        return branch && branch->Parent() ? CL::TabSeparatedBranch(*branch) : std::wstring();
    }
    const std::vector<size_t> rows = m_list.SelectedRows();
    if (rows.empty())
        return std::wstring();
    std::vector<ItemPtr> items;
    items.reserve(rows.size());
    for (size_t row : rows)
        items.push_back(m_rows.ItemAt(row));
    return CL::TabSeparatedItems(items);
}

// The selection taken out as one step of the history, named "Cut".
void CMainFrame::CutSelection()
{
    if (TreeHasFocus()) {
        const HTREEITEM node = SelectedNode();
        m_document.Execute(std::make_unique<CDeleteBranchCommand>(BranchPtr(NodeBranch(m_tree, node)), L"Cut"));
        TreeView_DeleteItem(m_tree, node);
        return;
    }
    const std::vector<size_t> rows = m_list.SelectedRows();
    std::vector<ItemPtr> items;
    items.reserve(rows.size());
    for (size_t row : rows)
        items.push_back(m_rows.ItemAt(row));
    m_document.Execute(std::make_unique<CDeleteItemsCommand>(m_listBranch, std::move(items), L"Cut"));
    m_rows.Remove(rows);
    m_list.RemoveRows(rows);
}

// Lines that cannot be taken are listed first, as Import CSV lists them;
// the good ones go in only after "Paste" there.
void CMainFrame::PasteText(const std::wstring& text)
{
    CL::CsvImportPlan plan;
    {
        CL::CWaitCursor wait;
        plan = CL::ReadAddressSpaceCsvText(text, NewItemDefaults());
    }
    if (!plan.rejected.empty() || plan.items.empty()) {
        CdlgCsvImport report(plan, L"the clipboard");
        report.pasting = true;
        if (report.DoModal(Hwnd()) != IDOK || plan.items.empty())
            return;
    }
    CL::CWaitCursor wait;
    BranchPtr target(&TargetBranch());
    auto command = std::make_unique<CPasteCommand>(plan, target);
    const CPasteCommand& paste = *command;
    ShowEdit(m_document.Execute(std::move(command)));
    SelectRowsOf(paste.Items());   // the rows pasted straight into the branch
    m_bars.SetStatusText(CL::Format(L"Paste: %zu item(s) added below \"%ls\" (separator: %ls).", paste.ItemCount(),
                                    BranchLabel(*target).c_str(),
                                    plan.separator == L'\t' ? L"tab" : plan.separator == L';' ? L"semicolon"
                                                                                              : L"comma"));
}
