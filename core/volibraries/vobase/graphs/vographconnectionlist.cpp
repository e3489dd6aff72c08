#include <vobase/graphs/vographconnectionlist.h>
#include <vobase/graphs/vographnode.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>

namespace {

// Room made by the first connection of a list: most nodes of a sparse graph
// have a handful, which then need at most one reallocation.
constexpr std::size_t kFirstCapacity = 4;

}  // namespace

void VoGraphConnectionList::AddConnection(BxSmartPointer<VoGraphConnection> connection)
{
    if (!connection || !connection->m_source || !connection->m_target)
        BX_THROW(BxExceptionPreconditionViolation, "VoGraphConnectionList::AddConnection",
                 "the connection needs a source and a target");
    if (connection->m_listed[m_end])
        BX_THROW(BxExceptionContainer, "VoGraphConnectionList::AddConnection",
                 "the connection is in a list at this end already");
    VoGraphConnection& c = *connection;
    if (m_items.capacity() == 0)
        m_items.reserve(kFirstCapacity);
    m_items.push_back({std::move(connection), c.GetNode(otherEnd())->GetIndex(), c.m_weight});
    position(c) = static_cast<std::uint32_t>(m_items.size() - 1);
    c.m_listed[m_end] = true;
}

void VoGraphConnectionList::RemoveConnection(const BxSmartPointer<VoGraphConnection>& connection)
{
    const std::size_t at = connection && connection->m_listed[m_end] ? position(*connection) : m_items.size();
    if (at >= m_items.size() || m_items[at].connection != connection)
        BX_THROW(BxExceptionContainer, "VoGraphConnectionList::RemoveConnection", "the connection is not in the list");
    connection->m_listed[m_end] = false;
    m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(at));
    renumberFrom(at);
}

void VoGraphConnectionList::RemoveAllConnections()
{
    // Each connection leaves the list at its other end; this list then goes at once.
    Entries items;
    items.swap(m_items);
    for (const SEntry& e : items) {
        VoGraphConnection& c = *e.connection;
        c.m_listed[m_end] = false;
        VoGraphNode* node = c.GetNode(otherEnd());
        (m_end == VoGraphConnection::eNT_Source ? node->GetIncomingConnections() : node->GetOutgoingConnections())
            .RemoveConnection(e.connection);
    }
}

void VoGraphConnectionList::ReleaseAll() noexcept
{
    for (const SEntry& e : m_items)
        e.connection->m_listed[m_end] = false;
    m_items.clear();
}

void VoGraphConnectionList::Sort()
{
    std::stable_sort(m_items.begin(), m_items.end(),
                     [](const SEntry& a, const SEntry& b) { return a.weight < b.weight; });
    renumberFrom(0);
}

void VoGraphConnectionList::renumberFrom(std::size_t first) noexcept
{
    for (std::size_t i = first; i < m_items.size(); ++i)
        position(*m_items[i].connection) = static_cast<std::uint32_t>(i);
}
