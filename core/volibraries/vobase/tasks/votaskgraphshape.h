// The cached shape of one connected component of a task manager's graph:
// its nodes in an order in which every edge of an acyclic part points
// forward, each with the addresses of its slots (work item, status, task
// ID), its successors as indices and its number of predecessors. The task
// manager builds a shape when a component is first started after an edit
// and drops it whenever the component is edited, so that starting and
// walking an unchanged component costs array indexing only: no graph walk,
// no hash set, no allocation per node.
//
//   VoTaskGraphShape shape(componentNodes, [&](VoGraphNode& node, VoTaskGraphShape::SEntry& entry) {
//       entry.item = workItem(node).get();
//       entry.status = &status(node);
//       entry.taskID = &taskIDSlot(node);
//   });
//   shape.ForEachNode(start,
//                     [&](std::uint32_t i) { *shape.Entry(i).taskID = id; },       // every node
//                     [&](std::uint32_t i) { schedule(shape.Entry(i)); });        // start and dependents
//   for (std::uint32_t s : shape.Successors(start)) ...
//
// The reverse post-order of a depth-first search along the successors puts
// the source of every edge before its target unless the edge closes a cycle;
// a start node whose fork-join shape was validated reaches no cycle, so its
// dependents all follow it in the order and one forward pass finds them.
//
// The shape also keeps the fork children of the walk (one task slot per
// edge, beside the successor indices) so that runs of the component reuse
// them: only one walk runs per component at a time (a new root task waits
// for its predecessor, and a forking task waits for its children).
//
// Locks: everything is written under the manager's data lock while the
// component is idle (building, validation marks, the start pass); a walk reads
// the entries and uses the child slots of the forks it reaches without a
// lock, because the component is not edited and not walked twice meanwhile.
#pragma once

#include <vobase/tasks/sworkitemstatus.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <vector>

class IWorkItem;
class VoGraphNode;

namespace TaskManager {

class VoTaskGraphProcessing;

/// The cached shape of one connected component of a task graph, in walk order.
class VOBASE_API VoTaskGraphShape
{
public:
    /// No node: the end of a walk.
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    /// One node of the component.
    struct SEntry
    {
        VoGraphNode* node = nullptr;          ///< the graph node of the work item
        IWorkItem* item = nullptr;             ///< owned by the node's work-item slot
        SWorkItemStatus* status = nullptr;     ///< the node's status slot
        std::int32_t* taskID = nullptr;        ///< the node's task-ID slot
        std::uint32_t firstSuccessor = 0;      ///< into the successor and child arrays
        std::uint32_t successorCount = 0;      ///< items that depend on this one
        std::uint32_t predecessorCount = 0;    ///< items this one depends on
        bool validated = false;                ///< its fork-join shape passed validation as a start node
    };

    /// Fills the slot addresses of a node's entry.
    using Binder = std::function<void(VoGraphNode&, SEntry&)>;

    /// Builds the shape of the component made of `nodes` (any order, each
    /// once); GetNodes() tells where each of them went.
    VoTaskGraphShape(const std::vector<VoGraphNode*>& nodes, const Binder& bind);
    ~VoTaskGraphShape();
    VoTaskGraphShape(const VoTaskGraphShape&) = delete;
    VoTaskGraphShape& operator=(const VoTaskGraphShape&) = delete;

    /// The number of nodes.
    std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(m_entries.size()); }
    /// The node at `index` in walk order.
    SEntry& Entry(std::uint32_t index) noexcept { return m_entries[index]; }
    /// The node at `index` in walk order (read-only form).
    const SEntry& Entry(std::uint32_t index) const noexcept { return m_entries[index]; }
    /// The nodes in the shape's order.
    const std::vector<VoGraphNode*>& GetNodes() const noexcept { return m_nodes; }

    /// The successor indices of a node, in edge order.
    std::span<const std::uint32_t> Successors(std::uint32_t index) const noexcept
    {
        const SEntry& e = m_entries[index];
        return {m_successors.data() + e.firstSuccessor, e.successorCount};
    }
    /// The fork child slots of a node, one per successor (empty until a walk fills them).
    std::span<BxSmartPointer<VoTaskGraphProcessing>> Children(std::uint32_t index) noexcept
    {
        const SEntry& e = m_entries[index];
        return {m_children.data() + e.firstSuccessor, e.successorCount};
    }

    /// Calls visit(i) for every node, in order, and reached(i) afterwards for
    /// the start node and every node reachable from it. Valid when the start
    /// node reaches no cycle (it passed validation). Caller: the data lock.
    template <class Visit, class Reached>
    void ForEachNode(std::uint32_t start, Visit&& visit, Reached&& reached)
    {
        const std::uint32_t epoch = nextEpoch();
        m_marks[start] = epoch;
        const std::uint32_t count = GetCount();
        for (std::uint32_t i = 0; i < count; ++i)
        {
            visit(i);
            if (i < start || m_marks[i] != epoch)
                continue;
            reached(i);
            for (std::uint32_t s : Successors(i))
                m_marks[s] = epoch;
        }
    }

private:
    std::uint32_t nextEpoch();

    std::vector<SEntry> m_entries;
    std::vector<VoGraphNode*> m_nodes;                       ///< m_nodes[i] == m_entries[i].node
    std::vector<std::uint32_t> m_successors;                 ///< the successor lists, back to back
    std::vector<BxSmartPointer<VoTaskGraphProcessing>> m_children; ///< parallel to m_successors
    std::vector<std::uint32_t> m_marks;                      ///< reachability marks of ForEachNode
    std::uint32_t m_epoch = 0;
};

}  // namespace TaskManager
