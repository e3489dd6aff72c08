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

bool VoMpGraphToShortestPath::compute()
{
    constexpr std::uint32_t inQueue = VoGraph::eNA_InQueue;
    m_graph->RemoveAttributes(inQueue);
    const std::uint32_t count = m_graph->CreateIndices();
    m_graph->ResetWeights();
    m_start->SetWeight(0.0f);
    m_start->SetNextNodeOnPath(nullptr);
    m_start->SetPreviousNodeOnPath(nullptr);
    m_end->SetNextNodeOnPath(nullptr);
    m_end->SetPreviousNodeOnPath(nullptr);

    // The heap's side table: one element per node index.
    std::vector<Element> elements(count);
    std::vector<VoGraphNode*> predecessors(count, nullptr);
    Heap heap;
    heap.Reserve(count);

    elements[m_start->GetIndex()] = {0, 0.0f, m_start};
    heap.Push(elements[m_start->GetIndex()]);
    m_start->SetAttributeFlags(m_start->GetAttributeFlags() | inQueue);

    std::uint32_t pops = 0;
    while (!heap.IsEmpty()) {
        VoGraphNode* node = heap.Pop()->value;
        node->SetAttributeFlags(node->GetAttributeFlags() & ~inQueue);
        if (node == m_end)
            break;
        if ((++pops & 0x3FFu) == 0 && isBreak())
            return false;
        const float distance = node->GetWeight();
        for (const BxSmartPointer<VoGraphConnection>& connection : node->GetOutgoingConnections()) {
            VoGraphNode* target = connection->GetNode(VoGraphConnection::eNT_Target);
            const float candidate = connection->GetWeight() + distance;
            if (!(target->GetWeight() > candidate))
                continue;
            target->SetWeight(candidate);
            const std::uint32_t index = target->GetIndex();
            predecessors[index] = node;
            Element& element = elements[index];
            if (target->GetAttributeFlags() & inQueue) {
                heap.Update(element, candidate);
            } else {
                element.key = candidate;
                element.value = target;
                heap.Push(element);
                target->SetAttributeFlags(target->GetAttributeFlags() | inQueue);
            }
        }
    }

    if (m_end->GetWeight() != VoGraphNode::GetInitialWeight()) {
        // Link the path back from the end; a path has at most `count` nodes.
        VoGraphNode* node = m_end;
        for (std::uint32_t steps = 0; node != m_start; ++steps) {
            VoGraphNode* predecessor = predecessors[node->GetIndex()];
            if (!predecessor || steps >= count)
                BX_THROW(BxException, "VoMpGraphToShortestPath::compute",
                         "the predecessors do not lead back to the start (negative weights?)");
            predecessor->SetNextNodeOnPath(node);
            node = predecessor;
        }
    }
    return true;
}
