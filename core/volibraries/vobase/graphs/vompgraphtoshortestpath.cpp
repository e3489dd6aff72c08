#include <vobase/graphs/vograph.h>
#include <vobase/graphs/voheap.h>
#include <vobase/graphs/voheapelementsimple.h>
#include <vobase/graphs/voheappolicyoperatorupdatable.h>
#include <vobase/graphs/voheappolicyprecedencemin.h>
#include <vobase/graphs/vompgraphtoshortestpath.h>

#include <bxbase/bxexception.h>

#include <vector>

BX_IMPLEMENT_RTTI(VoMpGraphToShortestPath, &VoAlgorithm::RTTI)

namespace {

using Element = VoHeapElementSimple<VoGraphNode*>;
using Heap = VoHeap<Element, VoHeapPolicyPrecedenceMin, VoHeapPolicyOperatorUpdatable>;

constexpr std::uint32_t kNone = 0xFFFFFFFFu;  // no position in the heap, no predecessor

}  // namespace

void VoMpGraphToShortestPath::SetInput(VoGraph& graph, VoGraphNode& start, VoGraphNode& end)
{
    m_graph = &graph;
    m_start = &start;
    m_end = &end;
    setInputChanged();
}

VoGraphPathIterator VoMpGraphToShortestPath::GetOutput() const
{
    checkOutputData();
    if (!m_start->GetNextNodeOnPath())
        return {};
    return VoGraphPathIterator(*m_start, *m_end, VoGraphPathIterator::eD_Forward);
}

// The node weights, the in-queue bits and the predecessors live in arrays
// indexed by node index while the search runs (the element's key is the
// node's weight, its position tells whether it is queued), and the
// connections are read from the lists' entries; the weights and bits are
// written to the nodes at the end. The result is the one the search over the
// nodes themselves gives, at a fraction of the memory traffic.
bool VoMpGraphToShortestPath::compute()
{
    m_start->SetNextNodeOnPath(nullptr);
    m_start->SetPreviousNodeOnPath(nullptr);
    m_end->SetNextNodeOnPath(nullptr);
    m_end->SetPreviousNodeOnPath(nullptr);
    const std::uint32_t count = m_graph->CreateIndices();
    const std::vector<VoGraphNode*>& nodes = m_graph->GetNodesByIndex();

    std::vector<Element> elements;
    elements.reserve(count);
    for (VoGraphNode* node : nodes)
        elements.push_back({kNone, VoGraphNode::GetInitialWeight(), node});
    std::vector<std::uint32_t> predecessors(count, kNone);
    Heap heap;
    heap.Reserve(count);

    Element& first = elements[m_start->GetIndex()];
    first.key = 0.0f;
    first.value = m_start;
    heap.Push(first);

    bool broken = false;
    std::uint32_t pops = 0;
    while (!heap.IsEmpty()) {
        Element& current = *heap.Pop();
        current.position = kNone;
        if (current.value == m_end)
            break;
        if ((++pops & 0x3FFu) == 0 && isBreak()) {
            broken = true;
            break;
        }
        const std::uint32_t from = static_cast<std::uint32_t>(&current - elements.data());
        const float distance = current.key;
        for (const VoGraphConnectionList::SEntry& e : current.value->GetOutgoingConnections().GetEntries()) {
            const float candidate = e.weight + distance;
            Element& target = elements[e.index];
            if (!(target.key > candidate))
                continue;
            predecessors[e.index] = from;
            if (target.position != kNone) {
                heap.Update(target, candidate);
            } else {
                target.key = candidate;
                heap.Push(target);
            }
        }
    }

    constexpr std::uint32_t inQueue = VoGraph::eNA_InQueue;
    for (std::uint32_t i = 0; i < count; ++i) {
        VoGraphNode& node = *nodes[i];
        node.SetWeight(elements[i].key);
        node.SetAttributeFlags((node.GetAttributeFlags() & ~inQueue) | (elements[i].position != kNone ? inQueue : 0));
    }
    if (broken)
        return false;

    if (m_end->GetWeight() != VoGraphNode::GetInitialWeight()) {
        // Link the path back from the end; a path has at most `count` nodes.
        std::uint32_t index = m_end->GetIndex();
        for (std::uint32_t steps = 0; nodes[index] != m_start; ++steps) {
            const std::uint32_t predecessor = predecessors[index];
            if (predecessor == kNone || steps >= count)
                BX_THROW(BxException, "VoMpGraphToShortestPath::compute",
                         "the predecessors do not lead back to the start (negative weights?)");
            nodes[predecessor]->SetNextNodeOnPath(nodes[index]);
            index = predecessor;
        }
    }
    return true;
}
