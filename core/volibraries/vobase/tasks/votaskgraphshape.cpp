#include <vobase/tasks/votaskgraphshape.h>

#include <vobase/graphs/vographnode.h>
#include <vobase/tasks/votaskgraphprocessing.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace TaskManager {

namespace {

/// The reverse post-order of a depth-first search along the successors,
/// started at each node in turn: sources before targets on every edge that
/// does not close a cycle.
std::vector<VoGraphNode*> reversePostOrder(const std::vector<VoGraphNode*>& nodes)
{
    std::unordered_map<const VoGraphNode*, bool> seen;
    seen.reserve(nodes.size());
    std::vector<VoGraphNode*> order;
    order.reserve(nodes.size());
    // The stack holds a node and the position of the next successor to look at.
    std::vector<std::pair<VoGraphNode*, std::uint32_t>> stack;
    for (VoGraphNode* root : nodes)
    {
        if (!seen.emplace(root, true).second)
            continue;
        stack.emplace_back(root, 0);
        while (!stack.empty())
        {
            auto& [node, next] = stack.back();
            const VoGraphConnectionList& successors = node->GetOutgoingConnections();
            if (next < successors.GetCount())
            {
                VoGraphNode* target = successors[next++]->GetNode(VoGraphConnection::eNT_Target);
                if (seen.emplace(target, true).second)
                    stack.emplace_back(target, 0);
                continue;
            }
            order.push_back(node);
            stack.pop_back();
        }
    }
    return {order.rbegin(), order.rend()};
}

}  // namespace

VoTaskGraphShape::VoTaskGraphShape(const std::vector<VoGraphNode*>& nodes, const Binder& bind)
    : m_nodes(reversePostOrder(nodes))
{
    std::unordered_map<const VoGraphNode*, std::uint32_t> index;
    index.reserve(m_nodes.size());
    for (std::uint32_t i = 0; i < m_nodes.size(); ++i)
        index.emplace(m_nodes[i], i);

    m_entries.resize(m_nodes.size());
    for (std::uint32_t i = 0; i < m_nodes.size(); ++i)
    {
        VoGraphNode& node = *m_nodes[i];
        SEntry& entry = m_entries[i];
        entry.node = &node;
        bind(node, entry);
        entry.firstSuccessor = static_cast<std::uint32_t>(m_successors.size());
        for (const auto& connection : node.GetOutgoingConnections())
            m_successors.push_back(index.at(connection->GetNode(VoGraphConnection::eNT_Target)));
        entry.successorCount = static_cast<std::uint32_t>(m_successors.size()) - entry.firstSuccessor;
        entry.predecessorCount = node.GetIncomingConnections().GetCount();
    }
    m_children.resize(m_successors.size());
    m_marks.assign(m_nodes.size(), 0);
}

VoTaskGraphShape::~VoTaskGraphShape() = default;

std::uint32_t VoTaskGraphShape::nextEpoch()
{
    if (++m_epoch == 0)  // wrapped: old marks could look current
    {
        std::fill(m_marks.begin(), m_marks.end(), 0u);
        m_epoch = 1;
    }
    return m_epoch;
}

}  // namespace TaskManager
