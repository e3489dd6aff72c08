#include <vobase/graphs/vographconnectionlist.h>
#include <vobase/graphs/vographnode.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>

void VoGraphConnectionList::AddConnection(BxSmartPointer<VoGraphConnection> connection)
{
    if (!connection)
        BX_THROW(BxExceptionPreconditionViolation, "VoGraphConnectionList::AddConnection", "null connection");
    position(*connection) = static_cast<std::uint32_t>(m_items.size());
    m_items.push_back(std::move(connection));
}

void VoGraphConnectionList::RemoveConnection(const BxSmartPointer<VoGraphConnection>& connection)
{
    const std::size_t at = connection ? position(*connection) : m_items.size();
    if (at >= m_items.size() || m_items[at] != connection)
        BX_THROW(BxExceptionContainer, "VoGraphConnectionList::RemoveConnection", "the connection is not in the list");
    m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(at));
    renumberFrom(at);
}

void VoGraphConnectionList::RemoveAllConnections()
{
    // Each connection leaves the list at its other end; this list then goes at once.
    const VoGraphConnection::ENodeType other =
        m_end == VoGraphConnection::eNT_Source ? VoGraphConnection::eNT_Target : VoGraphConnection::eNT_Source;
    Items items;
    items.swap(m_items);
    for (const BxSmartPointer<VoGraphConnection>& c : items) {
        VoGraphNode* node = c->GetNode(other);
        VoGraphConnectionList& list =
            other == VoGraphConnection::eNT_Source ? node->GetOutgoingConnections() : node->GetIncomingConnections();
        list.RemoveConnection(c);
    }
}

void VoGraphConnectionList::Sort()
{
    std::stable_sort(m_items.begin(), m_items.end(),
                     [](const BxSmartPointer<VoGraphConnection>& a, const BxSmartPointer<VoGraphConnection>& b) {
                         return a->GetWeight() < b->GetWeight();
                     });
    renumberFrom(0);
}

void VoGraphConnectionList::renumberFrom(std::size_t first) noexcept
{
    for (std::size_t i = first; i < m_items.size(); ++i)
        position(*m_items[i]) = static_cast<std::uint32_t>(i);
}
