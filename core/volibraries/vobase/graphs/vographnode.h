// A node of a VoGraph: its outgoing and incoming connections, a weight, the
// links of a path through the graph, attribute flags and its element of the
// graph's attribute container.
//
//   auto* a = new VoGraphNode("a");
//   auto* b = new VoGraphNode("b");
//   graph.InsertNode(a);                 // the graph owns the nodes
//   graph.InsertNode(b);
//   a->AddConnection(*b, 2.5f);          // a -> b
//   a->SetNextNodeOnPath(b);             // a path a, b; b->GetPreviousNodeOnPath() == a
//
// Path links are kept mutual: a node lies on at most one chain, and giving a
// node a new neighbour detaches the old one. Destroying a node removes its
// outgoing connections and takes its incoming ones out of their sources.
// Not thread-safe: the graph's owner guards it.
#pragma once

#include <vobase/graphs/vographconnection.h>
#include <vobase/graphs/vographconnectionlist.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxiclassname.h>
#include <bxbase/bxtypes.h>
#include <bxbase/inoncopyable.h>

#include <cstdint>
#include <string>

class VoGraph;


/// A node of a VoGraph: its outgoing and incoming connections, a weight, the links of a path through the graph,
/// attribute flags and its element of the graph's attribute container.
class VOBASE_API VoGraphNode : public BxIClassName<0, CStringA>, private INonCopyable
{
public:
    VoGraphNode() = default;
    /// A node named `name` (used by dumps), in no graph, without connections, at the initial weight.
    explicit VoGraphNode(CStringA name) : BxIClassName(std::move(name)) {}
    virtual ~VoGraphNode();

    /// Renames the node (the name only shows in dumps).
    void SetName(const CStringA& name) { setName(name); }

    /// The node's index: its insertion position, renumbered by VoGraph::CreateIndices.
    std::uint32_t GetIndex() const noexcept { return m_index; }

    /// A bit set of VoGraph::ENodeAttribute values.
    std::uint32_t GetAttributeFlags() const noexcept { return m_attributeFlags; }
    /// Replaces the whole bit set; to clear bits in every node at once use VoGraph::RemoveAttributes.
    void SetAttributeFlags(std::uint32_t flags) noexcept { m_attributeFlags = flags; }

    /// Adds a connection from this node to `target` and returns it.
    BxSmartPointer<VoGraphConnection> AddConnection(VoGraphNode& target, float weight);
    /// Removes the first outgoing connection to `target`; false when there is none.
    bool RemoveConnection(VoGraphNode& target);
    /// Removes every outgoing and incoming connection.
    void RemoveAllConnections();

    /// The connections that leave this node, in the order they were added. To add or remove one use this node's
    /// AddConnection and RemoveConnection, which keep the target's incoming list in step.
    VoGraphConnectionList& GetOutgoingConnections() noexcept { return m_outgoing; }
    /// The connections that leave this node, in the order they were added.
    const VoGraphConnectionList& GetOutgoingConnections() const noexcept { return m_outgoing; }
    /// The connections that lead to this node, in the order they were added (changed through the source nodes'
    /// AddConnection and RemoveConnection).
    VoGraphConnectionList& GetIncomingConnections() noexcept { return m_incoming; }
    /// The connections that lead to this node, in the order they were added.
    const VoGraphConnectionList& GetIncomingConnections() const noexcept { return m_incoming; }

    /// The node's own weight; path algorithms leave the node's distance from the start in it, and
    /// GetInitialWeight() means unreached.
    float GetWeight() const noexcept { return m_weight; }
    /// Sets the node's own weight.
    void SetWeight(float weight) noexcept { m_weight = weight; }
    /// The weight of a fresh node, the largest finite float (3.4028235e38).
    static constexpr float GetInitialWeight() noexcept { return 3.40282347e38f; }

    /// The node behind this one on the path left by an algorithm, or null at the path's end.
    VoGraphNode* GetNextNodeOnPath() const noexcept { return m_nextOnPath; }
    /// Links `next` behind this node, detaching this node's old next and `next`'s old previous.
    void SetNextNodeOnPath(VoGraphNode* next) noexcept;
    /// The node before this one on the path left by an algorithm, or null at the path's start.
    VoGraphNode* GetPreviousNodeOnPath() const noexcept { return m_previousOnPath; }
    /// Links `previous` before this node, detaching this node's old previous and `previous`'s old next.
    void SetPreviousNodeOnPath(VoGraphNode* previous) noexcept;

    /// This node's element of the graph's attribute container (null outside a graph).
    void* GetAttributeElement() const noexcept { return m_attributeElement; }
    /// Stores this node's attribute element. The graph sets it on insertion and releases it on removal; other
    /// callers leave it alone.
    void SetAttributeElement(void* element) noexcept { m_attributeElement = element; }

    /// The next node in the graph's node list, or null.
    VoGraphNode* GetNextInGraph() const noexcept { return m_listNext; }
    /// The previous node in the graph's node list, or null.
    VoGraphNode* GetPreviousInGraph() const noexcept { return m_listPrevious; }

private:
    friend class VoGraph;

    // Hot fields first, in one cache line with the name: a walk over the
    // graph reads the index and the outgoing entries.
    std::uint32_t m_index = 0;
    std::uint32_t m_attributeFlags = 0;
    VoGraphConnectionList m_outgoing{VoGraphConnection::eNT_Source};
    float m_weight = GetInitialWeight();
    VoGraphConnectionList m_incoming{VoGraphConnection::eNT_Target};
    VoGraphNode* m_nextOnPath = nullptr;
    VoGraphNode* m_previousOnPath = nullptr;
    void* m_attributeElement = nullptr;
    // The node's place in its graph's list.
    VoGraph* m_graph = nullptr;
    VoGraphNode* m_listPrevious = nullptr;
    VoGraphNode* m_listNext = nullptr;
};
