#include "addressspace/ItemPropertiesCommand.h"

#include "common/Exception.h"
#include "common/Text.h"

CItemPropertiesCommand::CItemPropertiesCommand(std::vector<ItemPtr> items, ItemFields fields)
    : m_items(std::move(items)), m_after(std::move(fields))
{
    if (m_items.empty() || (!m_after.name.empty() && m_items.size() != 1))
        throw CL::CException(E_INVALIDARG, L"CItemPropertiesCommand");
    m_before.reserve(m_items.size());
    for (const ItemPtr& item : m_items)
        m_before.push_back(ItemFields::Of(*item));
}

// A failure half-way puts the earlier items' fields back.
void CItemPropertiesCommand::Do()
{
    size_t done = 0;
    try {
        for (; done < m_items.size(); ++done)
            m_after.ApplyTo(*m_items[done]);
    } catch (...) {
        m_before[done].ApplyTo(*m_items[done]);
        for (size_t i = 0; i < done; ++i)
            m_before[i].ApplyTo(*m_items[i]);
        throw;
    }
}

void CItemPropertiesCommand::Undo()
{
    for (size_t i = 0; i < m_items.size(); ++i)
        m_before[i].ApplyTo(*m_items[i]);
}

std::wstring CItemPropertiesCommand::Description() const
{
    if (m_items.size() == 1)
        return L"Properties of '" + m_before.front().name + L"'";
    return CL::Format(L"Properties of %zu Items", m_items.size());
}

COPCServerAddressSpaceBranch* CItemPropertiesCommand::TouchedBranch() const
{
    return m_items.front()->Parent();
}
