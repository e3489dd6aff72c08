// A directed, weighted graph. The graph owns its nodes and keeps them in
// insertion order; each node owns one element of the graph's attribute
// container (the graph is one).
//
//   VoGraph graph;
//   VoGraphNode* a = new VoGraphNode("a");
//   VoGraphNode* b = new VoGraphNode("b");
//   graph.InsertNode(a);                     // index 0
//   graph.InsertNode(b);                     // index 1
//   a->AddConnection(*b, 2.5f);
//   for (VoGraphNode& node : graph) { ... }  // insertion order
//   graph.RemoveNode(*a);                    // indices no longer accurate
//   graph.CreateIndices();                   // b gets index 0
//
//   BxStreamWriteBinaryBuffer out;
//   graph.Serialize(out);                    // version 1: indices and connections
//
// Indices: a node gets the insertion position as its index. While the
// indices are accurate (node k of the list has index k), the graph keeps a
// table from index to node, so FindNode costs O(1) and algorithms can use
// indices into arrays; removing a node other than the last makes them
// inaccurate until CreateIndices renumbers the nodes.
//
// Not thread-safe: the graph's owner guards it with its own lock.
#pragma once

#include <vobase/graphs/voattributecontainer.h>
#include <vobase/graphs/voattributedefinition.h>
#include <vobase/graphs/vographnode.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxrtti.h>
#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/iserializable.h>

#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

/// A directed, weighted graph.
class VOBASE_API VoGraph : public VoAttributeContainer, public ISerializable
{
public:
    /// Bits of a node's attribute flags; eNA_Branch also names an attribute definition.
    enum ENodeAttribute : std::uint32_t
    {
        eNA_InQueue = 1,  ///< the node waits in a shortest-path queue
        eNA_Branch = 2,   ///< a 4-byte slot "eNA_Branch" in every node's element
    };

    /// Walks the node list in order.
    template <class Node>
    class NodeIterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;  ///< forward only: the list is walked by next links
        using value_type = VoGraphNode;                       ///< the nodes themselves
        using difference_type = std::ptrdiff_t;               ///< required by the iterator concepts
        using pointer = Node*;                                ///< VoGraphNode*, const for const_iterator
        using reference = Node&;                              ///< VoGraphNode&, const for const_iterator

        /// The end iterator (no node).
        NodeIterator() = default;
        /// Starts at `node`; null is the end.
        explicit NodeIterator(Node* node) : m_node(node) {}
        /// The current node; not for the end iterator.
        Node& operator*() const noexcept { return *m_node; }
        /// The current node; not for the end iterator.
        Node* operator->() const noexcept { return m_node; }
        /// Moves to the next node in list order (the end after the last one).
        NodeIterator& operator++() noexcept { m_node = m_node->GetNextInGraph(); return *this; }
        /// Moves to the next node and returns the iterator as it was.
        NodeIterator operator++(int) noexcept { NodeIterator old = *this; ++*this; return old; }
        /// True when both stand on the same node (or both are at the end).
        bool operator==(const NodeIterator& other) const noexcept = default;

    private:
        Node* m_node = nullptr;
    };
    using iterator = NodeIterator<VoGraphNode>;              ///< walks the nodes in list order
    using const_iterator = NodeIterator<const VoGraphNode>;  ///< walks the nodes in list order, read-only

    VoGraph();
    /// Removes every node. A deriving class that overrides deleteNode calls
    /// RemoveAllNodes in its own destructor.
    ~VoGraph() override;

    // Nodes

    /// Takes ownership of `node` and appends it; its index becomes GetCount() - 1
    /// and it gets a fresh attribute element. Throws BxExceptionPreconditionViolation
    /// for null or for a node that belongs to a graph.
    void InsertNode(VoGraphNode* node);
    /// Removes and destroys `node` (through deleteNode).
    void RemoveNode(VoGraphNode& node);
    /// Removes and destroys every node with its connections (through deleteNode); the indices stay accurate.
    void RemoveAllNodes();
    /// The first node in list order with index `index`, or null. O(1) while the indices are accurate, else a
    /// linear search.
    VoGraphNode* FindNode(std::uint32_t index);
    /// The first node in list order with index `index`, or null (read-only form).
    const VoGraphNode* FindNode(std::uint32_t index) const;
    /// The number of nodes.
    std::uint32_t GetCount() const noexcept { return m_count; }

    /// The first node in list order (insertion order).
    iterator begin() noexcept { return iterator(m_head); }
    /// Past the last node.
    iterator end() noexcept { return iterator(); }
    /// The first node in list order, read-only.
    const_iterator begin() const noexcept { return const_iterator(m_head); }
    /// Past the last node, read-only.
    const_iterator end() const noexcept { return const_iterator(); }
    /// The first node in list order, or null when the graph is empty; the graph keeps ownership.
    VoGraphNode* GetHead() const noexcept { return m_head; }

    // Indices

    /// Numbers the nodes 0, 1, 2, ... in list order unless the indices are
    /// accurate already; returns the count.
    std::uint32_t CreateIndices();
    /// True while node k of the list has index k: after construction, CreateIndices, or removals of the last node
    /// only.
    bool IsIndicesAccurate() const noexcept { return m_indicesAccurate != 0; }
    /// The nodes by index; valid while the indices are accurate.
    const std::vector<VoGraphNode*>& GetNodesByIndex() const noexcept { return m_byIndex; }

    // Attributes

    /// True when the graph has an attribute definition for `attribute`.
    bool Has(ENodeAttribute attribute) const { return m_attributeDefinitions.count(attribute) != 0; }
    /// The definition for `attribute`; BxExceptionPreconditionViolation when there is none.
    const VoAttributeDefinition& Assert(ENodeAttribute attribute) const;
    /// Clears the bits of `mask` in every node's attribute flags.
    void RemoveAttributes(std::uint32_t mask);

    // Weights

    /// Gives every node the initial weight, 3.4028235e38.
    void ResetWeights();

    // Output

    /// A readable listing: one line per node with its index, weight and outgoing connections.
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const;
    /// Dump to the trace log.
    void Dump() const;
    /// A Graphviz description: a digraph (`directed` non-zero) or a graph that
    /// names each connection once (target index at least the source index).
    void DumpDot(BxStreamWriteASCIIT<CStringW>& stream, int directed) const;

    /// Version 1: the node count, the node indices, then per node its
    /// connections as (target index, weight).
    void Serialize(BxStreamWriteBinary& stream) const override;
    /// Replaces the graph by the one in `stream`. Throws BxExceptionStream for
    /// truncated data or a target index that no node has (the graph is then
    /// empty), BxExceptionWrongFileVersion for a newer version.
    void Serialize(BxStreamReadBinary& stream) override;

    BX_DECLARE_RTTI()

protected:
    /// Destroys a removed node; called last by RemoveNode.
    virtual void deleteNode(VoGraphNode* node);

private:
    void* get(const VoAttributeDefinition& definition, const VoGraphNode& node) const;
    void unlink(VoGraphNode& node) noexcept;
    void setIndicesAccurate(bool accurate);
    /// Gives `node` the index `index` and updates the mirrors in its neighbours' lists.
    void setIndex(VoGraphNode& node, std::uint32_t index) noexcept;

    std::map<ENodeAttribute, VoAttributeDefinition> m_attributeDefinitions;
    VoGraphNode* m_head = nullptr;
    VoGraphNode* m_tail = nullptr;
    std::uint32_t m_count = 0;
    std::uint32_t m_indicesAccurate = 1;
    std::vector<VoGraphNode*> m_byIndex;  // node k has index k; kept only while the indices are accurate
};
