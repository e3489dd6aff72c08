// Orders the nodes of a graph so that every node comes before the nodes its
// outgoing connections lead to: the reverse post-order of a depth-first walk
// that starts at the first node of the list and then at every node not yet
// reached, in list order, following connections in list order.
//
//   BxList<std::uint32_t> order;
//   VoMpGraphTopologicalSort sort;
//   sort.SetInput(graph, order);
//   sort.Compute();
//   for (std::uint32_t index : sort.GetOutput()) { ... }
//
// Indices are pushed at the head of the caller's list, which is not cleared
// first; pass an empty one. Cycles are not reported: a connection back to a
// node whose walk is still open is passed over, and every node still appears
// exactly once. The walk keeps its own stack, so the depth of the graph is
// not limited by the thread's stack.
#pragma once

#include <vobase/algorithms/voalgorithm.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

class VoGraph;
class VoGraphNode;

class VOBASE_API VoMpGraphTopologicalSort : public VoAlgorithm
{
public:
    /// Sorts `graph` into `output`; both must outlive the computation and the reading.
    void SetInput(const VoGraph& graph, BxList<std::uint32_t>& output);
    /// The caller's list, now holding the order. VoExceptionNoOutputData unless calculated.
    BxList<std::uint32_t>& GetOutput() const;

    BX_DECLARE_RTTI()

protected:
    bool checkPreConditions() const override { return m_graph && m_output; }
    bool compute() override;

private:
    enum EState : std::uint8_t
    {
        eS_Unvisited = 0,
        eS_InProgress = 1,
        eS_Finished = 2,
    };

    /// Visit states per node: by index while the graph's indices are
    /// accurate, else in a hash map (a node absent from it is unvisited).
    class VisitStates
    {
    public:
        void Reset(const VoGraph& graph);
        EState Get(const VoGraphNode& node) const;
        void Set(const VoGraphNode& node, EState state);

    private:
        bool m_byIndex = true;
        std::vector<std::uint8_t> m_dense;
        std::unordered_map<const VoGraphNode*, std::uint8_t> m_hashed;
    };

    /// The walk from `node`, as a recursive visit would make it.
    bool visit(const VoGraphNode& node);

    const VoGraph* m_graph = nullptr;
    BxList<std::uint32_t>* m_output = nullptr;
    VisitStates m_states;
};
