// The cheapest path between two nodes of a graph under the connection
// weights (Dijkstra's method with an updatable binary heap). The result is
// left in the graph: every node reached has its distance as its weight, and
// the path runs from the start to the end through the next-on-path links.
//
//   VoMpGraphToShortestPath path;
//   path.SetInput(graph, *start, *end);
//   if (path.Compute()) {
//       VoGraphPathIterator it = path.GetOutput();
//       while (it.HasMoreElements()) visit(*it.GetNext());
//       float cost = end->GetWeight();     // 3.4028235e38 when there is no path
//   }
//
// A run changes the graph: node weights, the path links of the path's nodes,
// the in-queue attribute bit and the indices. It stops as soon as the end
// node leaves the queue; of two paths of equal cost the one found first wins.
// Weights are expected to be non-negative.
#pragma once

#include <vobase/algorithms/voalgorithm.h>
#include <vobase/graphs/vographpathiterator.h>
#include <vobase/vobaseapi.h>

class VoGraph;
class VoGraphNode;

/// The cheapest path between two nodes of a graph under the connection weights (Dijkstra's method with an
/// updatable binary heap).
class VOBASE_API VoMpGraphToShortestPath : public VoAlgorithm
{
public:
    /// The graph and the two ends; they must outlive the computation and the reading.
    void SetInput(VoGraph& graph, VoGraphNode& start, VoGraphNode& end);
    /// The path from start to end, or an empty iterator when the start has no
    /// next node on a path. VoExceptionNoOutputData unless calculated.
    VoGraphPathIterator GetOutput() const;

    BX_DECLARE_RTTI()

protected:
    /// True once SetInput has given the graph, the start and the end; Compute refuses to run before.
    bool checkPreConditions() const override { return m_graph && m_start && m_end; }
    bool compute() override;

private:
    VoGraph* m_graph = nullptr;
    VoGraphNode* m_start = nullptr;
    VoGraphNode* m_end = nullptr;
};
