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
#include <vector>

class VoGraph;
class VoGraphNode;

/// Orders the nodes of a graph so that every node comes before the nodes its outgoing connections lead to: the
/// reverse post-order of a depth-first walk that starts at the first node of the list and then at every node not
/// yet reached, in list order, following connections in list order.
class VOBASE_API VoMpGraphTopologicalSort : public VoAlgorithm
{
public:
    /// Sorts `graph` into `output`; both must outlive the computation and the reading.
    void SetInput(const VoGraph& graph, BxList<std::uint32_t>& output);
    /// The caller's list, now holding the order. VoExceptionNoOutputData unless calculated.
    BxList<std::uint32_t>& GetOutput() const;

    BX_DECLARE_RTTI()

protected:
    /// True once SetInput has given the graph and the output list.
    bool checkPreConditions() const override { return m_graph && m_output; }
    bool compute() override;

private:
    /// The walk from `node`, as a recursive visit would make it, with the
    /// visit states kept in `states` (see the source).
    template <class States>
    bool visit(const VoGraphNode& node, States& states, std::vector<std::uint32_t>& finished, std::uint32_t& steps);
    template <class States>
    bool sortAll(States& states);
    /// The walk for a graph whose indices are accurate (see the source).
    bool sortByIndex();
    /// Its walk proper: appends the nodes to `finished` as they finish.
    bool walkByIndex(std::vector<std::uint32_t>& finished);

    const VoGraph* m_graph = nullptr;
    BxList<std::uint32_t>* m_output = nullptr;
};
