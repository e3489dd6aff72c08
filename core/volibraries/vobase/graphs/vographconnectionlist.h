// The outgoing or incoming connections of a graph node, in the order they
// were added. Each connection stores its position in the list, so removing a
// given connection needs no search.
//
//   for (const BxSmartPointer<VoGraphConnection>& c : node.GetOutgoingConnections())
//       visit(*c->GetNode(VoGraphConnection::eNT_Target), c->GetWeight());
//
// The connections sit in one contiguous array. Removing one keeps the order
// of the others and costs a move of the ones behind it.
#pragma once

#include <vobase/graphs/vographconnection.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/inoncopyable.h>

#include <cstdint>
#include <vector>

class VOBASE_API VoGraphConnectionList : private INonCopyable
{
public:
    using Items = std::vector<BxSmartPointer<VoGraphConnection>>;
    using const_iterator = Items::const_iterator;

    /// A list that holds connections by their `end`: the source's outgoing
    /// list is an eNT_Source list, the target's incoming list an eNT_Target one.
    explicit VoGraphConnectionList(VoGraphConnection::ENodeType end) : m_end(end) {}
    /// Destroying a list only drops its references; it does not touch other lists.
    ~VoGraphConnectionList() = default;

    std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(m_items.size()); }
    bool IsEmpty() const noexcept { return m_items.empty(); }

    /// Appends `connection` (not null).
    void AddConnection(BxSmartPointer<VoGraphConnection> connection);
    /// Removes `connection`; BxExceptionContainer when it is not in this list.
    void RemoveConnection(const BxSmartPointer<VoGraphConnection>& connection);
    /// Removes every connection from this list and from the list at its other end.
    void RemoveAllConnections();
    /// Orders the connections by weight, ascending; equal weights keep their order.
    void Sort();

    const_iterator begin() const noexcept { return m_items.begin(); }
    const_iterator end() const noexcept { return m_items.end(); }
    const BxSmartPointer<VoGraphConnection>& operator[](std::uint32_t i) const noexcept { return m_items[i]; }

    /// Drops every reference without touching the lists at the other ends
    /// (used when a whole graph goes).
    void ReleaseAll() noexcept { m_items.clear(); }

private:
    std::uint32_t& position(VoGraphConnection& c) const noexcept { return c.m_positions[m_end]; }
    void renumberFrom(std::size_t first) noexcept;

    Items m_items;
    VoGraphConnection::ENodeType m_end;
};
