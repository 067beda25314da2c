#include "addressspace/DuplicateCommand.h"

#include "addressspace/AddressSpaceCopy.h"
#include "addressspace/NameNumbering.h"
#include "common/Exception.h"
#include "common/Text.h"

CDuplicateCommand::CDuplicateCommand(const ItemPtr& item, size_t count)
{
    if (!item || !item->Parent() || count == 0 || count > kMaxCopies)
        throw CL::CException(E_INVALIDARG, L"CDuplicateCommand");
    m_branch = item->Parent();
    m_name = item->Name();
    const std::vector<std::wstring> names = CNameNumbering::CountOn(
        m_name, count, [this](const std::wstring& name) { return bool(m_branch->FindItem(name)); });
    m_copies.reserve(count);
    for (const std::wstring& name : names) {
        ItemPtr copy = CL::CopyItem(*item);
        copy->Rename(name.c_str());
        m_copies.push_back(copy);
    }
}

// Takes out the first `count` copies.
void CDuplicateCommand::Remove(size_t count)
{
    for (size_t i = 0; i < count; ++i)
        m_branch->RemoveItem(m_copies[i]->Name());
}

void CDuplicateCommand::Do()
{
    size_t added = 0;
    try {
        for (; added < m_copies.size(); ++added)
            m_branch->AddItem(m_copies[added]);
    } catch (...) {
        Remove(added);
        throw;
    }
}

void CDuplicateCommand::Undo()
{
    Remove(m_copies.size());
}

std::wstring CDuplicateCommand::Description() const
{
    return CL::Format(L"Duplicate '%ls' x%zu", m_name.c_str(), m_copies.size());
}
