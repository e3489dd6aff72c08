// Graphs beside Boost.Graph: Dijkstra, topological sort, union-find and
// building the graph, each on 1,000,000 nodes and 5,000,000 random edges.
//
//   bench_graphs --benchmark_enable_random_interleaving=true --benchmark_repetitions=3
#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vompgraphtopologicalsort.h>
#include <vobase/graphs/vompgraphtoshortestpath.h>
#include <vobase/graphs/vounionfind.h>

#include <benchmark/benchmark.h>
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/dijkstra_shortest_paths.hpp>
#include <boost/graph/topological_sort.hpp>
#include <boost/iterator/counting_iterator.hpp>
#include <boost/pending/disjoint_sets.hpp>

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr std::uint32_t kNodes = 1'000'000;
constexpr std::uint32_t kEdges = 5'000'000;

struct SEdge
{
    std::uint32_t from;
    std::uint32_t to;
    float weight;
};

using BoostGraph = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS, boost::no_property,
                                         boost::property<boost::edge_weight_t, float>>;
using BoostBidirectionalGraph = boost::adjacency_list<boost::vecS, boost::vecS, boost::bidirectionalS,
                                                      boost::no_property, boost::property<boost::edge_weight_t, float>>;

// Random edges; with `acyclic` every edge runs from a lower to a higher hidden rank.
std::vector<SEdge> makeEdges(bool acyclic, std::uint32_t seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::uint32_t> node(0, kNodes - 1);
    std::uniform_real_distribution<float> weight(0.0f, 1.0f);
    std::vector<std::uint32_t> rank(kNodes);
    std::iota(rank.begin(), rank.end(), 0u);
    std::shuffle(rank.begin(), rank.end(), random);
    std::vector<SEdge> edges;
    edges.reserve(kEdges);
    while (edges.size() < kEdges) {
        std::uint32_t a = node(random), b = node(random);
        if (acyclic) {
            if (rank[a] == rank[b])
                continue;
            if (rank[a] > rank[b])
                std::swap(a, b);
        }
        edges.push_back({a, b, weight(random)});
    }
    return edges;
}

const std::vector<SEdge>& randomEdges()
{
    static const std::vector<SEdge> edges = makeEdges(false, 1);
    return edges;
}

const std::vector<SEdge>& dagEdges()
{
    static const std::vector<SEdge> edges = makeEdges(true, 2);
    return edges;
}

std::unique_ptr<VoGraph> buildVoGraph(const std::vector<SEdge>& edges)
{
    auto graph = std::make_unique<VoGraph>();
    for (std::uint32_t i = 0; i < kNodes; ++i)
        graph->InsertNode(new VoGraphNode);
    const std::vector<VoGraphNode*>& nodes = graph->GetNodesByIndex();
    for (const SEdge& e : edges)
        nodes[e.from]->AddConnection(*nodes[e.to], e.weight);
    return graph;
}

template <class Graph>
std::unique_ptr<Graph> buildBoostGraph(const std::vector<SEdge>& edges)
{
    auto graph = std::make_unique<Graph>(kNodes);
    for (const SEdge& e : edges)
        boost::add_edge(e.from, e.to, e.weight, *graph);
    return graph;
}

// A node that no edge reaches, so that a search towards it settles the whole graph.
std::uint32_t unreachedNode(const std::vector<SEdge>& edges)
{
    std::vector<bool> reached(kNodes);
    for (const SEdge& e : edges)
        reached[e.to] = true;
    for (std::uint32_t i = 1; i < kNodes; ++i)
        if (!reached[i])
            return i;
    return 0;
}

void BM_Dijkstra_VoGraph(benchmark::State& state)
{
    static const std::unique_ptr<VoGraph> graph = buildVoGraph(randomEdges());
    VoGraphNode* start = graph->FindNode(0);
    VoGraphNode* end = graph->FindNode(unreachedNode(randomEdges()));
    VoMpGraphToShortestPath algorithm;
    for (auto _ : state) {
        algorithm.SetInput(*graph, *start, *end);
        if (!algorithm.Compute())
            state.SkipWithError("compute failed");
        benchmark::DoNotOptimize(end->GetWeight());
    }
}
BENCHMARK(BM_Dijkstra_VoGraph)->Unit(benchmark::kMillisecond);

void BM_Dijkstra_Boost(benchmark::State& state)
{
    static const std::unique_ptr<BoostGraph> graph = buildBoostGraph<BoostGraph>(randomEdges());
    std::vector<float> distance(kNodes);
    std::vector<std::uint32_t> predecessor(kNodes);
    for (auto _ : state) {
        boost::dijkstra_shortest_paths(*graph, 0,
                                       boost::predecessor_map(predecessor.data()).distance_map(distance.data()));
        benchmark::DoNotOptimize(distance.data());
    }
}
BENCHMARK(BM_Dijkstra_Boost)->Unit(benchmark::kMillisecond);

void BM_TopologicalSort_VoGraph(benchmark::State& state)
{
    static const std::unique_ptr<VoGraph> graph = buildVoGraph(dagEdges());
    VoMpGraphTopologicalSort algorithm;
    for (auto _ : state) {
        BxList<std::uint32_t> order;
        algorithm.SetInput(*graph, order);
        if (!algorithm.Compute())
            state.SkipWithError("compute failed");
        benchmark::DoNotOptimize(order.front());
    }
}
BENCHMARK(BM_TopologicalSort_VoGraph)->Unit(benchmark::kMillisecond);

void BM_TopologicalSort_Boost(benchmark::State& state)
{
    static const std::unique_ptr<BoostGraph> graph = buildBoostGraph<BoostGraph>(dagEdges());
    std::vector<std::uint32_t> order;
    order.reserve(kNodes);
    for (auto _ : state) {
        order.clear();
        boost::topological_sort(*graph, std::back_inserter(order));
        benchmark::DoNotOptimize(order.data());
    }
}
BENCHMARK(BM_TopologicalSort_Boost)->Unit(benchmark::kMillisecond);

// The same output type as VoMpGraphTopologicalSort's: a std::list filled at the front.
void BM_TopologicalSort_BoostIntoList(benchmark::State& state)
{
    static const std::unique_ptr<BoostGraph> graph = buildBoostGraph<BoostGraph>(dagEdges());
    for (auto _ : state) {
        std::list<std::uint32_t> order;
        boost::topological_sort(*graph, std::front_inserter(order));
        benchmark::DoNotOptimize(order.front());
    }
}
BENCHMARK(BM_TopologicalSort_BoostIntoList)->Unit(benchmark::kMillisecond);

const std::vector<std::pair<std::uint32_t, std::uint32_t>>& unionPairs()
{
    static const auto pairs = [] {
        std::mt19937 random(3);
        std::uniform_int_distribution<std::uint32_t> element(0, kNodes - 1);
        std::vector<std::pair<std::uint32_t, std::uint32_t>> result(kNodes);
        for (auto& p : result)
            p = {element(random), element(random)};
        return result;
    }();
    return pairs;
}

void BM_UnionFind_VoUnionFind(benchmark::State& state)
{
    const auto& pairs = unionPairs();
    VoUnionFind sets;
    for (auto _ : state) {
        sets.InitElements(kNodes);
        for (const auto& [a, b] : pairs)
            sets.AddPair(a, b);
        benchmark::DoNotOptimize(sets.CreateSetNumbers());
    }
}
BENCHMARK(BM_UnionFind_VoUnionFind)->Unit(benchmark::kMillisecond);

void BM_UnionFind_BoostDisjointSets(benchmark::State& state)
{
    const auto& pairs = unionPairs();
    std::vector<std::uint32_t> rank(kNodes), parent(kNodes), number(kNodes), setNumber(kNodes);
    for (auto _ : state) {
        boost::disjoint_sets<std::uint32_t*, std::uint32_t*> sets(rank.data(), parent.data());
        for (std::uint32_t i = 0; i < kNodes; ++i)
            sets.make_set(i);
        for (const auto& [a, b] : pairs)
            sets.union_set(a, b);
        // Set numbers in the order of the representatives, as VoUnionFind gives them.
        sets.compress_sets(boost::counting_iterator<std::uint32_t>(0),
                           boost::counting_iterator<std::uint32_t>(kNodes));
        std::uint32_t next = 0;
        for (std::uint32_t i = 0; i < kNodes; ++i)
            if (parent[i] == i)
                number[i] = next++;
        for (std::uint32_t i = 0; i < kNodes; ++i)
            setNumber[i] = number[parent[i]];
        benchmark::DoNotOptimize(setNumber.data());
    }
}
BENCHMARK(BM_UnionFind_BoostDisjointSets)->Unit(benchmark::kMillisecond);

void BM_Build_VoGraph(benchmark::State& state)
{
    const auto& edges = randomEdges();
    for (auto _ : state) {
        auto graph = buildVoGraph(edges);
        benchmark::DoNotOptimize(graph.get());
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Build_VoGraph)->Unit(benchmark::kMillisecond);

void BM_Build_BoostDirected(benchmark::State& state)
{
    const auto& edges = randomEdges();
    for (auto _ : state) {
        auto graph = buildBoostGraph<BoostGraph>(edges);
        benchmark::DoNotOptimize(graph.get());
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Build_BoostDirected)->Unit(benchmark::kMillisecond);

// Boost's form that, like VoGraph, keeps incoming edges too.
void BM_Build_BoostBidirectional(benchmark::State& state)
{
    const auto& edges = randomEdges();
    for (auto _ : state) {
        auto graph = buildBoostGraph<BoostBidirectionalGraph>(edges);
        benchmark::DoNotOptimize(graph.get());
        state.PauseTiming();
        graph.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Build_BoostBidirectional)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
