#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vompgraphtopologicalsort.h>

#include <unordered_map>
#include <vector>

BX_IMPLEMENT_RTTI(VoMpGraphTopologicalSort, &VoAlgorithm::RTTI)

namespace {

enum EState : std::uint8_t
{
    eS_Unvisited = 0,  // a node without an entry
    eS_InProgress = 1,
    eS_Finished = 2,
};

// Visit states in a hash map from node to state, for any graph.
class CStatesByNode
{
public:
    explicit CStatesByNode(const VoGraph& graph) { m_states.reserve(graph.GetCount()); }

    EState Get(const VoGraphNode& node) const
    {
        const auto found = m_states.find(&node);
        return found == m_states.end() ? eS_Unvisited : EState(found->second);
    }
    EState Get(const VoGraphConnectionList::SEntry& target) const { return Get(Node(target)); }
    void Set(const VoGraphNode& node, EState state) { m_states[&node] = state; }
    static const VoGraphNode& Node(const VoGraphConnectionList::SEntry& target)
    {
        return *target.connection->GetNode(VoGraphConnection::eNT_Target);
    }

private:
    std::unordered_map<const VoGraphNode*, std::uint8_t> m_states;
};

}  // namespace

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
    if (m_graph->IsIndicesAccurate())
        return sortByIndex();
    CStatesByNode states(*m_graph);
    return sortAll(states);
}

// With accurate indices, the list order is the index order. The walk then
// runs on a compact copy of the connections (the target indices of node k
// at targets[first[k]] .. targets[first[k + 1]]) and keeps the visit states
// in an array by index: the graph is read once, in node order, and the walk
// jumps around in a few dense arrays only. The order is the one the walk
// over the nodes themselves gives.
bool VoMpGraphTopologicalSort::sortByIndex()
{
    const std::uint32_t count = m_graph->GetCount();
    if (count == 0)
        return true;
    std::vector<std::uint32_t> finished;
    finished.reserve(count);
    const bool complete = walkByIndex(finished);
    // The walk's arrays are gone by now, and the list's nodes can take their memory.
    m_output->insert(m_output->begin(), finished.rbegin(), finished.rend());
    return complete;
}

bool VoMpGraphTopologicalSort::walkByIndex(std::vector<std::uint32_t>& finished)
{
    const std::vector<VoGraphNode*>& nodes = m_graph->GetNodesByIndex();
    const std::uint32_t count = m_graph->GetCount();

    std::vector<std::uint32_t> first(std::size_t(count) + 1);
    std::uint32_t total = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        first[i] = total;
        total += nodes[i]->GetOutgoingConnections().GetCount();
    }
    first[count] = total;
    std::vector<std::uint32_t> targets(total);
    // The entries lie scattered over the heap: fetch those of a node a
    // little ahead while the earlier ones are copied.
    constexpr std::uint32_t kAhead = 16;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i + kAhead < count) {
            const auto* ahead = reinterpret_cast<const char*>(nodes[i + kAhead]->GetOutgoingConnections().GetEntries().data());
            __builtin_prefetch(ahead);
            __builtin_prefetch(ahead + 64);
        }
        std::uint32_t* out = targets.data() + first[i];
        for (const VoGraphConnectionList::SEntry& e : nodes[i]->GetOutgoingConnections().GetEntries())
            *out++ = e.index;
    }

    // One frame per open visit: the node and the range of its targets still to follow.
    struct SFrame
    {
        std::uint32_t node;
        std::uint32_t next;
        std::uint32_t end;
    };
    std::vector<std::uint8_t> states(count, eS_Unvisited);
    std::vector<SFrame> stack;
    std::uint32_t steps = 0;
    for (std::uint32_t root = 0; root < count; ++root) {
        if (states[root] != eS_Unvisited)
            continue;
        states[root] = eS_InProgress;
        stack.push_back({root, first[root], first[root + 1]});
        while (!stack.empty()) {
            SFrame& frame = stack.back();
            if (frame.next != frame.end) {
                const std::uint32_t target = targets[frame.next++];
                // A finished target is skipped; one in progress would return at once.
                if (states[target] == eS_Unvisited) {
                    states[target] = eS_InProgress;
                    stack.push_back({target, first[target], first[target + 1]});
                }
            } else {
                states[frame.node] = eS_Finished;
                finished.push_back(frame.node);
                stack.pop_back();
            }
            if ((++steps & 0xFFFFu) == 0 && isBreak())
                return false;
        }
    }
    return true;
}

template <class States>
bool VoMpGraphTopologicalSort::sortAll(States& states)
{
    // Every top-level visit starts at an unvisited node and so succeeds; the
    // nodes before the cursor are all visited.
    // The finished nodes are collected in order and put at the head of the
    // output in one go at the end, as pushing each at the head would leave them.
    std::vector<std::uint32_t> finished;
    finished.reserve(m_graph->GetCount());
    std::uint32_t steps = 0;
    bool complete = true;
    for (const VoGraphNode* node = m_graph->GetHead(); node && complete; node = node->GetNextInGraph()) {
        if (states.Get(*node) == eS_Unvisited)
            complete = visit(*node, states, finished, steps);
    }
    m_output->insert(m_output->begin(), finished.rbegin(), finished.rend());
    return complete;
}

template <class States>
bool VoMpGraphTopologicalSort::visit(const VoGraphNode& root, States& states, std::vector<std::uint32_t>& finished,
                                     std::uint32_t& steps)
{
    if (states.Get(root) == eS_InProgress)
        return false;

    // One frame per open visit: the node and its outgoing entries still to follow.
    struct SFrame
    {
        const VoGraphNode* node;
        std::uint32_t index;
        const VoGraphConnectionList::SEntry* next;
        const VoGraphConnectionList::SEntry* end;
    };
    auto frameOf = [](const VoGraphNode& node, std::uint32_t index) {
        const auto& entries = node.GetOutgoingConnections().GetEntries();
        return SFrame{&node, index, entries.data(), entries.data() + entries.size()};
    };
    std::vector<SFrame> stack;
    stack.push_back(frameOf(root, root.GetIndex()));
    states.Set(root, eS_InProgress);
    while (!stack.empty()) {
        SFrame& frame = stack.back();
        if (frame.next != frame.end) {
            const VoGraphConnectionList::SEntry& target = *frame.next++;
            // A finished target is skipped; one in progress would return at once.
            if (states.Get(target) == eS_Unvisited) {
                const VoGraphNode& node = states.Node(target);
                states.Set(node, eS_InProgress);
                stack.push_back(frameOf(node, target.index));
            }
        } else {
            states.Set(*frame.node, eS_Finished);
            finished.push_back(frame.index);
            stack.pop_back();
        }
        if ((++steps & 0xFFFFu) == 0 && isBreak())
            return false;
    }
    return true;
}
