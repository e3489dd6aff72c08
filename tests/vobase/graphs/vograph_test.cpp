#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vographpathiterator.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <vector>

namespace {

std::vector<VoGraphNode*> addNodes(VoGraph& graph, int count)
{
    std::vector<VoGraphNode*> nodes;
    for (int i = 0; i < count; ++i) {
        nodes.push_back(new VoGraphNode("n" + std::to_string(i)));
        graph.InsertNode(nodes.back());
    }
    return nodes;
}

std::vector<std::uint32_t> indices(const VoGraph& graph)
{
    std::vector<std::uint32_t> result;
    for (const VoGraphNode& node : graph)
        result.push_back(node.GetIndex());
    return result;
}

std::vector<std::uint32_t> targets(const VoGraphConnectionList& list)
{
    std::vector<std::uint32_t> result;
    for (const auto& c : list)
        result.push_back(c->GetNode(VoGraphConnection::eNT_Target)->GetIndex());
    return result;
}

std::vector<std::uint32_t> sources(const VoGraphConnectionList& list)
{
    std::vector<std::uint32_t> result;
    for (const auto& c : list)
        result.push_back(c->GetNode(VoGraphConnection::eNT_Source)->GetIndex());
    return result;
}

std::vector<std::byte> serialize(const VoGraph& graph)
{
    BxStreamWriteBinaryBuffer out;
    graph.Serialize(out);
    return {out.GetData(), out.GetData() + out.GetCount()};
}

void read(VoGraph& graph, const std::vector<std::byte>& bytes)
{
    BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
    graph.Serialize(in);
}

template <class... T>
std::vector<std::byte> bytesOf(T... values)
{
    std::vector<std::byte> bytes;
    (
        [&] {
            const auto* p = reinterpret_cast<const std::byte*>(&values);
            bytes.insert(bytes.end(), p, p + sizeof(values));
        }(),
        ...);
    return bytes;
}

}  // namespace

TEST(VoGraph, InsertionGivesIndicesAndFindNodeFindsThem)
{
    VoGraph graph;
    EXPECT_EQ(graph.GetCount(), 0u);
    EXPECT_EQ(graph.FindNode(0), nullptr);
    const auto nodes = addNodes(graph, 4);
    EXPECT_EQ(graph.GetCount(), 4u);
    EXPECT_EQ(indices(graph), (std::vector<std::uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(graph.FindNode(2), nodes[2]);
    EXPECT_EQ(graph.FindNode(4), nullptr);
    EXPECT_EQ(nodes[1]->GetName(), "n1");
    EXPECT_EQ(nodes[1]->GetWeight(), 3.4028235e38f);
    EXPECT_TRUE(graph.IsIndicesAccurate());
    EXPECT_EQ(graph.CreateIndices(), 4u);
    EXPECT_EQ(indices(graph), (std::vector<std::uint32_t>{0, 1, 2, 3}));

    EXPECT_THROW(graph.InsertNode(nullptr), BxExceptionPreconditionViolation);
    EXPECT_THROW(graph.InsertNode(nodes[0]), BxExceptionPreconditionViolation);  // already in a graph
    EXPECT_EQ(graph.GetCount(), 4u);
    VoGraph other;
    EXPECT_THROW(other.RemoveNode(*nodes[0]), BxExceptionPreconditionViolation);
}

TEST(VoGraph, RemovingNodesKeepsOrDropsTheAccurateIndices)
{
    VoGraph graph;
    auto nodes = addNodes(graph, 5);
    graph.RemoveNode(*nodes[4]);  // the last: the flag survives
    EXPECT_TRUE(graph.IsIndicesAccurate());
    EXPECT_EQ(graph.FindNode(3), nodes[3]);

    graph.RemoveNode(*nodes[1]);  // in the middle: indices have a hole now
    EXPECT_FALSE(graph.IsIndicesAccurate());
    EXPECT_EQ(indices(graph), (std::vector<std::uint32_t>{0, 2, 3}));
    EXPECT_EQ(graph.FindNode(1), nullptr);
    EXPECT_EQ(graph.FindNode(3), nodes[3]);  // found by searching

    graph.RemoveNode(*nodes[3]);  // the last again: an inaccurate flag stays inaccurate
    EXPECT_FALSE(graph.IsIndicesAccurate());
    auto* late = new VoGraphNode;
    graph.InsertNode(late);       // index = count - 1 = 2, which node 2 has too
    EXPECT_EQ(indices(graph), (std::vector<std::uint32_t>{0, 2, 2}));
    EXPECT_EQ(graph.FindNode(2), nodes[2]);  // the first in list order

    EXPECT_EQ(graph.CreateIndices(), 3u);
    EXPECT_TRUE(graph.IsIndicesAccurate());
    EXPECT_EQ(indices(graph), (std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_EQ(graph.FindNode(2), late);

    graph.RemoveAllNodes();
    EXPECT_EQ(graph.GetCount(), 0u);
    EXPECT_TRUE(graph.IsIndicesAccurate());
    EXPECT_EQ(graph.begin(), graph.end());
}

TEST(VoGraph, ConnectionsKeepBothListsAndTheirPositionsInStep)
{
    VoGraph graph;
    auto n = addNodes(graph, 4);
    n[0]->AddConnection(*n[1], 1.0f);
    auto c02 = n[0]->AddConnection(*n[2], 2.0f);
    n[0]->AddConnection(*n[3], 3.0f);
    n[2]->AddConnection(*n[1], 4.0f);
    n[3]->AddConnection(*n[1], 5.0f);
    n[1]->AddConnection(*n[1], 6.0f);  // a self-loop
    EXPECT_EQ(targets(n[0]->GetOutgoingConnections()), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(sources(n[1]->GetIncomingConnections()), (std::vector<std::uint32_t>{0, 2, 3, 1}));
    EXPECT_EQ(c02->GetNode(VoGraphConnection::eNT_Source), n[0]);
    EXPECT_EQ(c02->GetWord(), 0u);

    // Removing from the middle keeps the order, and later removals still find their entries.
    EXPECT_TRUE(n[0]->RemoveConnection(*n[1]));
    EXPECT_FALSE(n[0]->RemoveConnection(*n[1]));
    EXPECT_EQ(targets(n[0]->GetOutgoingConnections()), (std::vector<std::uint32_t>{2, 3}));
    EXPECT_EQ(sources(n[1]->GetIncomingConnections()), (std::vector<std::uint32_t>{2, 3, 1}));
    EXPECT_TRUE(n[0]->RemoveConnection(*n[3]));
    EXPECT_EQ(n[3]->GetIncomingConnections().GetCount(), 0u);
    EXPECT_THROW(n[3]->GetIncomingConnections().RemoveConnection(c02), BxExceptionContainer);

    // Destroying a node takes its connections out of its neighbours' lists.
    graph.RemoveNode(*n[1]);
    EXPECT_EQ(n[2]->GetOutgoingConnections().GetCount(), 0u);
    EXPECT_EQ(n[3]->GetOutgoingConnections().GetCount(), 0u);
    EXPECT_EQ(targets(n[0]->GetOutgoingConnections()), (std::vector<std::uint32_t>{2}));

    n[2]->AddConnection(*n[0], 1.0f);
    n[2]->AddConnection(*n[2], 1.0f);
    n[3]->AddConnection(*n[2], 1.0f);
    n[2]->RemoveAllConnections();
    for (VoGraphNode* node : {n[0], n[2], n[3]}) {
        EXPECT_EQ(node->GetOutgoingConnections().GetCount(), 0u);
        EXPECT_EQ(node->GetIncomingConnections().GetCount(), 0u);
    }
}

TEST(VoGraph, SortOrdersByWeightAndKeepsPositionsValid)
{
    VoGraph graph;
    auto n = addNodes(graph, 5);
    n[0]->AddConnection(*n[1], 3.0f);
    n[0]->AddConnection(*n[2], 1.0f);
    n[0]->AddConnection(*n[3], 2.0f);
    n[0]->AddConnection(*n[4], 1.0f);
    n[0]->GetOutgoingConnections().Sort();
    EXPECT_EQ(targets(n[0]->GetOutgoingConnections()), (std::vector<std::uint32_t>{2, 4, 3, 1}));
    EXPECT_TRUE(n[0]->RemoveConnection(*n[3]));
    EXPECT_EQ(targets(n[0]->GetOutgoingConnections()), (std::vector<std::uint32_t>{2, 4, 1}));

    const auto& list = n[0]->GetOutgoingConnections();
    EXPECT_TRUE(*list[0] < list[2]);
    EXPECT_FALSE(*list[0] < list[1]);  // equal weights
    EXPECT_TRUE(*list[2] > list[1]);
}

TEST(VoGraph, PathLinksStayMutual)
{
    VoGraph graph;
    auto n = addNodes(graph, 4);
    n[0]->SetNextNodeOnPath(n[1]);
    n[1]->SetNextNodeOnPath(n[2]);
    EXPECT_EQ(n[2]->GetPreviousNodeOnPath(), n[1]);

    // A new next detaches the node that was linked behind.
    n[1]->SetNextNodeOnPath(n[3]);
    EXPECT_EQ(n[2]->GetPreviousNodeOnPath(), nullptr);
    EXPECT_EQ(n[3]->GetPreviousNodeOnPath(), n[1]);

    // Taking a node that is already linked breaks its old link.
    n[2]->SetNextNodeOnPath(n[3]);
    EXPECT_EQ(n[1]->GetNextNodeOnPath(), nullptr);
    EXPECT_EQ(n[3]->GetPreviousNodeOnPath(), n[2]);

    // The previous-link setter mirrors it.
    n[1]->SetPreviousNodeOnPath(n[2]);
    EXPECT_EQ(n[2]->GetNextNodeOnPath(), n[1]);
    EXPECT_EQ(n[3]->GetPreviousNodeOnPath(), nullptr);
    EXPECT_EQ(n[0]->GetNextNodeOnPath(), nullptr);  // n0 lost n1 when n1 took n2 as previous
    n[1]->SetPreviousNodeOnPath(nullptr);
    EXPECT_EQ(n[2]->GetNextNodeOnPath(), nullptr);

    // A removed node leaves no link behind.
    n[0]->SetNextNodeOnPath(n[1]);
    n[1]->SetNextNodeOnPath(n[2]);
    graph.RemoveNode(*n[1]);
    EXPECT_EQ(n[0]->GetNextNodeOnPath(), nullptr);
    EXPECT_EQ(n[2]->GetPreviousNodeOnPath(), nullptr);
}

TEST(VoGraph, PathIteratorWalksBothWays)
{
    VoGraph graph;
    auto n = addNodes(graph, 3);
    n[0]->SetNextNodeOnPath(n[1]);
    n[1]->SetNextNodeOnPath(n[2]);
    auto collect = [](VoGraphPathIterator& it) {
        std::vector<VoGraphNode*> visited;
        while (it.HasMoreElements())
            visited.push_back(it.GetNext());
        return visited;
    };
    VoGraphPathIterator forward(*n[0], *n[2], VoGraphPathIterator::eD_Forward);
    EXPECT_EQ(collect(forward), (std::vector<VoGraphNode*>{n[0], n[1], n[2]}));
    EXPECT_EQ(forward.GetNext(), nullptr);
    forward.SetDirection(static_cast<VoGraphPathIterator::EDirection>(7));  // any non-zero walks backward
    forward.Restart();
    EXPECT_EQ(collect(forward), (std::vector<VoGraphNode*>{n[2], n[1], n[0]}));
    VoGraphPathIterator empty;
    EXPECT_FALSE(empty.HasMoreElements());
    EXPECT_EQ(empty.GetStart(), nullptr);
}

TEST(VoGraph, AttributesWeightsAndTypeInformation)
{
    VoGraph graph;
    auto n = addNodes(graph, 3);
    EXPECT_TRUE(graph.Has(VoGraph::eNA_Branch));
    EXPECT_FALSE(graph.Has(VoGraph::eNA_InQueue));
    const VoAttributeDefinition& branch = graph.Assert(VoGraph::eNA_Branch);
    EXPECT_EQ(branch.GetName(), L"eNA_Branch");
    EXPECT_EQ(branch.GetElementSize(), 4u);
    EXPECT_THROW(graph.Assert(VoGraph::eNA_InQueue), BxExceptionPreconditionViolation);
    EXPECT_EQ(graph.Get<std::uint32_t>(branch, n[1]->GetAttributeElement()), 0u);
    graph.Get<std::uint32_t>(branch, n[1]->GetAttributeElement()) = 9;
    EXPECT_EQ(graph.Get<std::uint32_t>(branch, n[2]->GetAttributeElement()), 0u);
    EXPECT_EQ(graph.GetElementCount(), 3u);

    n[0]->SetAttributeFlags(0x7);
    n[2]->SetAttributeFlags(0x5);
    graph.RemoveAttributes(0x5);
    EXPECT_EQ(n[0]->GetAttributeFlags(), 0x2u);
    EXPECT_EQ(n[2]->GetAttributeFlags(), 0u);

    n[0]->SetWeight(1.0f);
    graph.ResetWeights();
    EXPECT_EQ(n[0]->GetWeight(), VoGraphNode::GetInitialWeight());

    EXPECT_STREQ(graph.GetClassNameW(), L"VoGraph");
    EXPECT_TRUE(graph.IsKindOf(VoGraph::RTTI));
    EXPECT_NE(BxRTTI::CreateByName(L"VoGraph"), nullptr);
    graph.RemoveNode(*n[1]);
    EXPECT_EQ(graph.GetElementCount(), 2u);
}

TEST(VoGraph, DotOutputNamesEachUndirectedEdgeOnce)
{
    VoGraph graph;
    auto n = addNodes(graph, 3);
    n[0]->AddConnection(*n[1], 2.5f);
    n[1]->AddConnection(*n[0], 2.5f);
    n[1]->AddConnection(*n[1], 1.0f);
    n[2]->AddConnection(*n[0], 0.25f);

    BxStreamWriteASCIIStringT<CStringW> directed;
    graph.DumpDot(directed, 1);
    EXPECT_EQ(directed.GetString(),
              L"digraph G {\r\n0 -> 1 [label = \"2.5\"];\r\n1 -> 0 [label = \"2.5\"];\r\n"
              L"1 -> 1 [label = \"1\"];\r\n2 -> 0 [label = \"0.25\"];\r\n}\r\n");
    BxStreamWriteASCIIStringT<CStringW> undirected;
    graph.DumpDot(undirected, 0);
    EXPECT_EQ(undirected.GetString(), L"graph G {\r\n0 -- 1 [label = \"2.5\"];\r\n1 -- 1 [label = \"1\"];\r\n}\r\n");

    BxStreamWriteASCIIStringT<CStringW> dump;
    graph.Dump(dump);
    EXPECT_EQ(dump.GetString().substr(0, 18), L"VoGraph: 3 nodes\r\n");
    EXPECT_NE(dump.GetString().find(L"Node 1 weight 3.4028235e+38: -> 0 (2.5) -> 1 (1)\r\n"), CStringW::npos)
        << dump.GetString();
}

TEST(VoGraph, SerialisationRoundTripsIndicesEdgesAndWeights)
{
    VoGraph graph;
    auto n = addNodes(graph, 3);
    n[0]->AddConnection(*n[1], 2.5f);
    n[1]->AddConnection(*n[2], 1.0f);
    n[0]->SetWeight(7.0f);
    const auto bytes = serialize(graph);
    EXPECT_EQ(bytes, bytesOf(1u, 3u, 0u, 1u, 2u, 1u, 1u, 2.5f, 1u, 2u, 1.0f, 0u));

    VoGraph copy;
    addNodes(copy, 2);  // replaced by the read
    read(copy, bytes);
    EXPECT_EQ(indices(copy), (std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_TRUE(copy.IsIndicesAccurate());
    EXPECT_EQ(targets(copy.FindNode(0)->GetOutgoingConnections()), (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(copy.FindNode(0)->GetOutgoingConnections()[0]->GetWeight(), 2.5f);
    EXPECT_EQ(targets(copy.FindNode(1)->GetOutgoingConnections()), (std::vector<std::uint32_t>{2}));
    EXPECT_EQ(sources(copy.FindNode(2)->GetIncomingConnections()), (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(copy.FindNode(0)->GetWeight(), 3.4028235e38f);
    EXPECT_EQ(serialize(copy), bytes);
}

TEST(VoGraph, SerialisationKeepsIndicesWithHoles)
{
    VoGraph graph;
    auto n = addNodes(graph, 4);
    n[3]->AddConnection(*n[0], 1.5f);
    n[0]->AddConnection(*n[3], 0.5f);
    graph.RemoveNode(*n[1]);  // indices 0, 2, 3
    const auto bytes = serialize(graph);
    VoGraph copy;
    read(copy, bytes);
    EXPECT_EQ(indices(copy), (std::vector<std::uint32_t>{0, 2, 3}));
    EXPECT_FALSE(copy.IsIndicesAccurate());
    EXPECT_EQ(targets(copy.FindNode(3)->GetOutgoingConnections()), (std::vector<std::uint32_t>{0}));
    EXPECT_EQ(serialize(copy), bytes);
}

TEST(VoGraph, BadStreamsThrowAndLeaveAnEmptyGraph)
{
    VoGraph graph;
    auto n = addNodes(graph, 3);
    n[0]->AddConnection(*n[1], 2.5f);
    n[2]->AddConnection(*n[0], 1.0f);
    const auto bytes = serialize(graph);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        VoGraph copy;
        addNodes(copy, 1);
        const std::vector<std::byte> truncated(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_THROW(read(copy, truncated), BxExceptionStream) << size;
        EXPECT_EQ(copy.GetCount(), size < 4 ? 1u : 0u) << size;  // the version is read before anything changes
    }

    VoGraph copy;
    // A target index that no node has.
    EXPECT_THROW(read(copy, bytesOf(1u, 2u, 0u, 1u, 1u, 5u, 1.0f, 0u)), BxExceptionStream);
    EXPECT_EQ(copy.GetCount(), 0u);
    EXPECT_THROW(read(copy, bytesOf(1u, 2u, 0u, 7u, 1u, 1u, 1.0f, 0u)), BxExceptionStream);  // holes: 1 is missing
    // A huge count that the data does not back.
    EXPECT_THROW(read(copy, bytesOf(1u, 0xFFFFFFFFu, 0u)), BxExceptionStream);
    EXPECT_EQ(copy.GetCount(), 0u);
    EXPECT_THROW(read(copy, bytesOf(2u, 0u)), BxExceptionWrongFileVersion);
}

TEST(VoGraph, ListEntriesMirrorWeightsAndTheIndicesOfTheOtherEnd)
{
    auto entriesOf = [](const VoGraphConnectionList& list) {
        std::vector<std::pair<std::uint32_t, float>> result;
        for (const auto& e : list.GetEntries()) {
            result.push_back({e.index, e.weight});
            EXPECT_EQ(e.weight, e.connection->GetWeight());
        }
        return result;
    };
    using Entries = std::vector<std::pair<std::uint32_t, float>>;

    // Nodes joined before they are inserted get their indices mirrored on insertion.
    auto* a = new VoGraphNode;
    auto* b = new VoGraphNode;
    auto ab = a->AddConnection(*b, 1.0f);
    VoGraph graph;
    auto n = addNodes(graph, 2);
    graph.InsertNode(a);  // index 2
    graph.InsertNode(b);  // index 3
    EXPECT_EQ(entriesOf(a->GetOutgoingConnections()), (Entries{{3, 1.0f}}));
    EXPECT_EQ(entriesOf(b->GetIncomingConnections()), (Entries{{2, 1.0f}}));

    n[1]->AddConnection(*b, 2.0f);
    b->AddConnection(*b, 4.0f);
    ab->SetWeight(0.5f);
    EXPECT_EQ(entriesOf(b->GetIncomingConnections()), (Entries{{2, 0.5f}, {1, 2.0f}, {3, 4.0f}}));
    EXPECT_EQ(entriesOf(b->GetOutgoingConnections()), (Entries{{3, 4.0f}}));

    // Renumbering updates the mirrors in the neighbours' lists, self-loops included.
    graph.RemoveNode(*n[0]);
    graph.CreateIndices();  // n1 0, a 1, b 2
    EXPECT_EQ(entriesOf(b->GetIncomingConnections()), (Entries{{1, 0.5f}, {0, 2.0f}, {2, 4.0f}}));
    EXPECT_EQ(entriesOf(a->GetOutgoingConnections()), (Entries{{2, 0.5f}}));
    EXPECT_EQ(entriesOf(b->GetOutgoingConnections()), (Entries{{2, 4.0f}}));

    // A connection that left its lists no longer writes into them.
    EXPECT_TRUE(a->RemoveConnection(*b));
    ab->SetWeight(9.0f);
    EXPECT_EQ(entriesOf(b->GetIncomingConnections()), (Entries{{0, 2.0f}, {2, 4.0f}}));
    EXPECT_THROW(b->GetIncomingConnections().AddConnection(b->GetIncomingConnections()[0]), BxExceptionContainer);
    EXPECT_THROW(b->GetIncomingConnections().AddConnection(new VoGraphConnection), BxExceptionPreconditionViolation);
}

namespace {

// A plain model of a graph under edits: nodes in list order, and per node
// its outgoing and incoming connections in order, each connection named by
// a number of its own so that parallel connections stay apart.
struct SModel
{
    struct SConnection
    {
        int from;
        int to;
        float weight;
    };
    std::vector<int> order;                   // node numbers in list order
    std::map<int, std::vector<int>> out, in;  // connection numbers per node
    std::map<int, SConnection> connections;

    void eraseFrom(std::vector<int>& list, int connection) { list.erase(std::find(list.begin(), list.end(), connection)); }
    void removeConnection(int connection)
    {
        eraseFrom(out[connections[connection].from], connection);
        eraseFrom(in[connections[connection].to], connection);
        connections.erase(connection);
    }
};

// Compares the graph with the model: node order, both lists of every node
// (ends, weights and order), the entries' mirrors, and each connection's
// sharing by exactly its two lists.
void expectMatches(const VoGraph& graph, const SModel& model, const std::map<const VoGraphNode*, int>& numberOf,
                   const std::map<const VoGraphConnection*, int>& connectionNumberOf)
{
    ASSERT_EQ(graph.GetCount(), model.order.size());
    std::size_t at = 0;
    for (const VoGraphNode& node : graph) {
        const int number = numberOf.at(&node);
        ASSERT_EQ(number, model.order[at++]);
        for (const bool outgoing : {true, false}) {
            const VoGraphConnectionList& list = outgoing ? node.GetOutgoingConnections() : node.GetIncomingConnections();
            const std::vector<int>& expected = (outgoing ? model.out : model.in).at(number);
            ASSERT_EQ(list.GetCount(), expected.size()) << "node " << number;
            for (std::uint32_t k = 0; k < list.GetCount(); ++k) {
                const VoGraphConnection& c = *list[k];
                const SModel::SConnection& m = model.connections.at(expected[k]);
                ASSERT_EQ(connectionNumberOf.at(&c), expected[k]) << "node " << number << " entry " << k;
                EXPECT_EQ(numberOf.at(c.GetNode(VoGraphConnection::eNT_Source)), m.from);
                EXPECT_EQ(numberOf.at(c.GetNode(VoGraphConnection::eNT_Target)), m.to);
                EXPECT_EQ(c.GetWeight(), m.weight);
                const VoGraphConnectionList::SEntry& e = list.GetEntries()[k];
                const VoGraphNode* far = c.GetNode(outgoing ? VoGraphConnection::eNT_Target : VoGraphConnection::eNT_Source);
                EXPECT_EQ(e.index, far->GetIndex());
                EXPECT_EQ(e.weight, m.weight);
            }
        }
    }
}

}  // namespace

TEST(VoGraph, RandomEditsMatchAPlainModel)
{
    std::mt19937 random(17);
    for (int round = 0; round < 12; ++round) {
        VoGraph graph;
        SModel model;
        std::map<const VoGraphNode*, int> numberOf;
        std::map<int, VoGraphNode*> nodeOf;
        std::map<const VoGraphConnection*, int> connectionNumberOf;
        std::map<int, BxSmartPointer<VoGraphConnection>> connectionOf;  // keeps them alive for the identity map
        int nextNode = 0, nextConnection = 0;
        auto addNode = [&] {
            auto* node = new VoGraphNode;
            graph.InsertNode(node);
            numberOf[node] = nextNode;
            nodeOf[nextNode] = node;
            model.order.push_back(nextNode);
            model.out[nextNode];
            model.in[nextNode];
            ++nextNode;
        };
        auto anyNode = [&] { return model.order[random() % model.order.size()]; };
        for (int i = 0; i < 20; ++i)
            addNode();
        for (int step = 0; step < 600; ++step) {
            const int what = random() % 100;
            if (what < 55) {  // a connection, self-loops and parallel ones included
                const int from = anyNode(), to = anyNode();
                const float weight = float(random() % 7);
                BxSmartPointer<VoGraphConnection> c = nodeOf[from]->AddConnection(*nodeOf[to], weight);
                connectionNumberOf[c.get()] = nextConnection;
                connectionOf[nextConnection] = c;
                model.connections[nextConnection] = {from, to, weight};
                model.out[from].push_back(nextConnection);
                model.in[to].push_back(nextConnection);
                ++nextConnection;
            } else if (what < 70) {  // the first connection to a target goes
                const int from = anyNode(), to = anyNode();
                int first = -1;
                for (int c : model.out[from])
                    if (model.connections[c].to == to) {
                        first = c;
                        break;
                    }
                EXPECT_EQ(nodeOf[from]->RemoveConnection(*nodeOf[to]), first >= 0);
                if (first >= 0)
                    model.removeConnection(first);
            } else if (what < 78) {  // a new weight
                if (model.connections.empty())
                    continue;
                auto it = std::next(model.connections.begin(), random() % model.connections.size());
                it->second.weight = float(random() % 7);
                connectionOf[it->first]->SetWeight(it->second.weight);
            } else if (what < 83) {  // a list sorted by weight, equal weights keeping their order
                const int number = anyNode();
                const bool outgoing = random() % 2 == 0;
                (outgoing ? nodeOf[number]->GetOutgoingConnections() : nodeOf[number]->GetIncomingConnections()).Sort();
                std::vector<int>& list = (outgoing ? model.out : model.in)[number];
                std::stable_sort(list.begin(), list.end(), [&](int a, int b) {
                    return model.connections[a].weight < model.connections[b].weight;
                });
            } else if (what < 88 && model.order.size() > 2) {  // a node goes, with its connections
                const int number = anyNode();
                std::vector<int> gone = model.out[number];
                for (int c : model.in[number])
                    if (std::find(gone.begin(), gone.end(), c) == gone.end())
                        gone.push_back(c);
                for (int c : gone)
                    model.removeConnection(c);
                model.order.erase(std::find(model.order.begin(), model.order.end(), number));
                VoGraphNode* node = nodeOf[number];
                numberOf.erase(node);
                nodeOf.erase(number);
                graph.RemoveNode(*node);
            } else if (what < 94) {
                addNode();
            } else {  // renumbering: indices follow the list order again
                graph.CreateIndices();
                std::uint32_t index = 0;
                for (const VoGraphNode& node : graph)
                    ASSERT_EQ(node.GetIndex(), index++);
            }
            if (step % 50 == 0)
                expectMatches(graph, model, numberOf, connectionNumberOf);
        }
        expectMatches(graph, model, numberOf, connectionNumberOf);
        // The copy read back has the same outgoing lists; its incoming lists
        // hold the same sources in the order the connections were read.
        graph.CreateIndices();
        {
            VoGraph copy;
            read(copy, serialize(graph));
            ASSERT_EQ(copy.GetCount(), graph.GetCount());
            auto original = graph.begin();
            for (const VoGraphNode& node : copy) {
                EXPECT_EQ(targets(node.GetOutgoingConnections()), targets(original->GetOutgoingConnections()));
                auto copied = sources(node.GetIncomingConnections());
                auto kept = sources(original->GetIncomingConnections());
                std::sort(kept.begin(), kept.end());
                EXPECT_EQ(copied, kept);
                ++original;
            }
        }
    }
}
