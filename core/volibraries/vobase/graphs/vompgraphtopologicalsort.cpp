#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vompgraphtopologicalsort.h>

BX_IMPLEMENT_RTTI(VoMpGraphTopologicalSort, &VoAlgorithm::RTTI)

void VoMpGraphTopologicalSort::VisitStates::Reset(const VoGraph& graph)
{
    m_byIndex = graph.IsIndicesAccurate();
    m_hashed.clear();
    m_dense.clear();
    if (m_byIndex)
        m_dense.resize(graph.GetCount(), eS_Unvisited);
}

VoMpGraphTopologicalSort::EState VoMpGraphTopologicalSort::VisitStates::Get(const VoGraphNode& node) const
{
    if (m_byIndex)
        return static_cast<EState>(m_dense[node.GetIndex()]);
    const auto found = m_hashed.find(&node);
    return found == m_hashed.end() ? eS_Unvisited : static_cast<EState>(found->second);
}

void VoMpGraphTopologicalSort::VisitStates::Set(const VoGraphNode& node, EState state)
{
    if (m_byIndex)
        m_dense[node.GetIndex()] = state;
    else
        m_hashed[&node] = state;
}

void VoMpGraphTopologicalSort::SetInput(const VoGraph& graph, BxList<std::uint32_t>& output)
{
    m_graph = &graph;
    m_output = &output;
    setInputChanged();
}

BxList<std::uint32_t>& VoMpGraphTopologicalSort::GetOutput() const
{
    checkOutputData();
    return *m_output;
}

bool VoMpGraphTopologicalSort::compute()
{
    m_states.Reset(*m_graph);
    // Every top-level visit starts at an unvisited node and so succeeds; the
    // nodes before the cursor are all visited.
    for (const VoGraphNode* node = m_graph->GetHead(); node; node = node->GetNextInGraph()) {
        if (m_states.Get(*node) == eS_Unvisited && !visit(*node))
            return false;
    }
    return true;
}

bool VoMpGraphTopologicalSort::visit(const VoGraphNode& root)
{
    if (m_states.Get(root) == eS_InProgress)
        return false;

    // One frame per open visit: the node and its next outgoing connection.
    struct SFrame
    {
        const VoGraphNode* node;
        std::uint32_t next;
    };
    std::vector<SFrame> stack;
    stack.push_back({&root, 0});
    m_states.Set(root, eS_InProgress);
    std::uint32_t steps = 0;
    while (!stack.empty()) {
        SFrame& frame = stack.back();
        const VoGraphConnectionList& outgoing = frame.node->GetOutgoingConnections();
        if (frame.next < outgoing.GetCount()) {
            const VoGraphNode* target = outgoing[frame.next++]->GetNode(VoGraphConnection::eNT_Target);
            // A finished target is skipped; one in progress would return at once.
            if (m_states.Get(*target) == eS_Unvisited) {
                m_states.Set(*target, eS_InProgress);
                stack.push_back({target, 0});
            }
        } else {
            m_states.Set(*frame.node, eS_Finished);
            m_output->push_front(frame.node->GetIndex());
            stack.pop_back();
        }
        if ((++steps & 0xFFFFu) == 0 && isBreak())
            return false;
    }
    return true;
}
