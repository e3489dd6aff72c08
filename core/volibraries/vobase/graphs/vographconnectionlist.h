// The outgoing or incoming connections of a graph node, in the order they
// were added. Each connection stores its position in the list, so removing a
// given connection needs no search.
//
//   for (const BxSmartPointer<VoGraphConnection>& c : node.GetOutgoingConnections())
//       visit(*c->GetNode(VoGraphConnection::eNT_Target), c->GetWeight());
//
//   for (const VoGraphConnectionList::SEntry& e : node.GetOutgoingConnections().GetEntries())
//       relax(e.index, e.weight);          // no visit to the connection
//
// The entries sit in one contiguous array of 16 bytes each. Beside the
// connection, each entry mirrors the index of the node at its other end (the
// target in an outgoing list, the source in an incoming one) and the
// connection's weight; the connection and the graph keep the mirrors up to
// date, so that walks over large graphs read one array instead of chasing
// pointers. The first connection makes room for a few, so that a list grows
// by few reallocations. Removing a connection keeps the order of the others
// and costs a move of the ones behind it.
#pragma once

#include <vobase/graphs/vographconnection.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/inoncopyable.h>

#include <cstdint>
#include <iterator>
#include <vector>

class VoGraphNode;

/// The outgoing or incoming connections of a graph node, in the order they were added.
class VOBASE_API VoGraphConnectionList : private INonCopyable
{
public:
    /// One connection with the mirrors of its weight and of its other end's index.
    struct SEntry
    {
        BxSmartPointer<VoGraphConnection> connection;  ///< the connection; the entry holds one reference
        std::uint32_t index;  ///< index of the node at the other end
        float weight;         ///< the connection's weight
    };
    /// The entries in list order, as returned by GetEntries.
    using Entries = std::vector<SEntry>;

    /// Iterates the connections themselves.
    class const_iterator
    {
    public:
        using iterator_category = std::random_access_iterator_tag;  ///< the entries are one contiguous array
        using value_type = BxSmartPointer<VoGraphConnection>;      ///< the shared connection
        using difference_type = std::ptrdiff_t;                    ///< distance between two positions
        using pointer = const value_type*;                         ///< read-only pointer to the shared connection
        using reference = const value_type&;                       ///< read-only reference to the shared connection

        /// A singular iterator, only to be assigned to.
        const_iterator() = default;
        /// Stands on the entry `at` of a list's entries.
        explicit const_iterator(Entries::const_iterator at) : m_at(at) {}
        /// The connection at the current position.
        reference operator*() const noexcept { return m_at->connection; }
        /// The connection at the current position.
        pointer operator->() const noexcept { return &m_at->connection; }
        /// Moves to the next connection.
        const_iterator& operator++() noexcept { ++m_at; return *this; }
        /// Moves to the next connection and returns the iterator as it was.
        const_iterator operator++(int) noexcept { const_iterator old = *this; ++m_at; return old; }
        /// Moves to the previous connection.
        const_iterator& operator--() noexcept { --m_at; return *this; }
        /// Moves `n` connections on (back when `n` is negative).
        const_iterator& operator+=(difference_type n) noexcept { m_at += n; return *this; }
        /// An iterator `n` connections on (back when `n` is negative).
        const_iterator operator+(difference_type n) const noexcept { return const_iterator(m_at + n); }
        /// The number of connections from `other` to this position.
        difference_type operator-(const const_iterator& other) const noexcept { return m_at - other.m_at; }
        /// The connection `n` positions on.
        reference operator[](difference_type n) const noexcept { return m_at[n].connection; }
        /// True when both stand on the same entry of the same list.
        bool operator==(const const_iterator& other) const noexcept = default;
        /// Orders positions of the same list.
        auto operator<=>(const const_iterator& other) const noexcept = default;

    private:
        Entries::const_iterator m_at;
    };

    /// A list that holds connections by their `end`: the source's outgoing
    /// list is an eNT_Source list, the target's incoming list an eNT_Target one.
    explicit VoGraphConnectionList(VoGraphConnection::ENodeType end) : m_end(end) {}
    /// Destroying a list only drops its references; it does not touch other lists.
    ~VoGraphConnectionList() { ReleaseAll(); }

    /// The number of connections in the list.
    std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(m_items.size()); }
    /// True when the list holds no connection.
    bool IsEmpty() const noexcept { return m_items.empty(); }

    /// Appends `connection`, which must have both nodes and must not be in a
    /// list at this end already (BxExceptionContainer otherwise).
    void AddConnection(BxSmartPointer<VoGraphConnection> connection);
    /// Removes `connection`; BxExceptionContainer when it is not in this list.
    void RemoveConnection(const BxSmartPointer<VoGraphConnection>& connection);
    /// Removes every connection from this list and from the list at its other end.
    void RemoveAllConnections();
    /// Orders the connections by weight, ascending; equal weights keep their order.
    void Sort();

    /// The first connection, in the order they were added (or sorted).
    const_iterator begin() const noexcept { return const_iterator(m_items.begin()); }
    /// Past the last connection.
    const_iterator end() const noexcept { return const_iterator(m_items.end()); }
    /// The connection at position `i`; `i` must be less than GetCount() (not checked).
    const BxSmartPointer<VoGraphConnection>& operator[](std::uint32_t i) const noexcept
    {
        return m_items[i].connection;
    }
    /// The entries, for walks that need only indices and weights.
    const Entries& GetEntries() const noexcept { return m_items; }

    /// Drops every reference without touching the lists at the other ends
    /// (used when a whole graph goes).
    void ReleaseAll() noexcept;

private:
    friend class VoGraphConnection;
    friend class VoGraph;

    std::uint32_t& position(VoGraphConnection& c) const noexcept { return c.m_positions[m_end]; }
    VoGraphConnection::ENodeType otherEnd() const noexcept
    {
        return m_end == VoGraphConnection::eNT_Source ? VoGraphConnection::eNT_Target : VoGraphConnection::eNT_Source;
    }
    void renumberFrom(std::size_t first) noexcept;
    void mirrorWeight(std::uint32_t at, float weight) noexcept { m_items[at].weight = weight; }
    void mirrorIndex(std::uint32_t at, std::uint32_t index) noexcept { m_items[at].index = index; }

    Entries m_items;
    VoGraphConnection::ENodeType m_end;
};
