// Benchmarks of the object model, each beside its peer:
// - VoVariant binary write + read per value, against writing and reading the raw value;
// - a node's read-counter increment + decrement on subtrees of 1, 100 and 10,000
//   nodes (per node), against a plain mutex + hash-map count per node;
// - ApplyRecursive over 100,000 nodes, against a recursive walk with and
//   without a mutex per node.
#include <vobase/objects/vonode.h>
#include <vobase/objects/vovariant.h>

#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <bxbase/threading/bxthreadapi.h>

// The data manager's view of a node (VoNode names this class a friend).
class VoNodeTestAccess
{
public:
    static void Link(const BxSmartPointer<VoNode>& parent, BxSmartPointer<VoNode> child)
    {
        child->setParent(parent);
        parent->addChild(child);
    }
    static void Release(const BxSmartPointer<VoNode>& node) { node->unlinkChildren(); }
    static void IncrementRead(VoNode& node, unsigned thread) { node.incrementReadCounter(thread); }
    static void DecrementRead(VoNode& node, unsigned thread) { node.decrementReadCounter(thread); }
};

namespace {

constexpr int c_values = 1000;

// --- variants -----------------------------------------------------------------

template <class T>
T sample(int i)
{
    if constexpr (std::is_same_v<T, std::wstring>)
        return L"value " + std::to_wstring(i);
    else
        return static_cast<T>(i * 3 + 1);
}

template <class T>
void BM_VariantWriteRead(benchmark::State& state)
{
    std::vector<VoVariant> values(c_values);
    for (int i = 0; i < c_values; ++i)
        values[i] = sample<T>(i);
    BxStreamWriteBinaryBuffer out(1 << 16);
    VoVariant back;
    for (auto _ : state) {
        out.Clear();
        for (const VoVariant& v : values)
            v.Serialize(out);
        BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
        for (int i = 0; i < c_values; ++i)
            back.Serialize(in);
        benchmark::DoNotOptimize(back);
    }
    state.SetItemsProcessed(state.iterations() * c_values);
}

template <class T>
void BM_RawWriteRead(benchmark::State& state)
{
    std::vector<T> values(c_values);
    for (int i = 0; i < c_values; ++i)
        values[i] = sample<T>(i);
    BxStreamWriteBinaryBuffer out(1 << 16);
    T back{};
    for (auto _ : state) {
        out.Clear();
        for (const T& v : values)
            out << v;
        BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
        for (int i = 0; i < c_values; ++i)
            in >> back;
        benchmark::DoNotOptimize(back);
    }
    state.SetItemsProcessed(state.iterations() * c_values);
}

BENCHMARK_TEMPLATE(BM_VariantWriteRead, int);
BENCHMARK_TEMPLATE(BM_RawWriteRead, int);
BENCHMARK_TEMPLATE(BM_VariantWriteRead, double);
BENCHMARK_TEMPLATE(BM_RawWriteRead, double);
BENCHMARK_TEMPLATE(BM_VariantWriteRead, std::wstring);
BENCHMARK_TEMPLATE(BM_RawWriteRead, std::wstring);

// --- node trees -------------------------------------------------------------------

using Node = BxSmartPointer<VoNode>;

// A tree of `count` nodes, filled level by level with ten children per node.
struct NodeTree
{
    std::vector<Node> nodes;
    explicit NodeTree(int count)
    {
        nodes.reserve(count);
        nodes.emplace_back(new VoNode(L"root", true, VoNode::eTMM_Track));
        for (int i = 1; i < count; ++i) {
            nodes.emplace_back(new VoNode(L"n", true, VoNode::eTMM_Track));
            VoNodeTestAccess::Link(nodes[(i - 1) / 10], nodes.back());
        }
    }
    ~NodeTree() { VoNodeTestAccess::Release(nodes.front()); }
};

void BM_NodeReadCounter(benchmark::State& state)
{
    NodeTree tree(static_cast<int>(state.range(0)));
    VoNode& root = *tree.nodes.front();
    const unsigned me = GetCurrentThreadId();
    for (auto _ : state) {
        VoNodeTestAccess::IncrementRead(root, me);
        VoNodeTestAccess::DecrementRead(root, me);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["ns_per_node"] = benchmark::Counter(
        static_cast<double>(state.iterations() * state.range(0)),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_NodeReadCounter)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kNanosecond);

// The peer: the same walk over plain nodes that each take a mutex and count in a hash map.
struct PlainNode
{
    std::mutex lock;
    std::unordered_map<unsigned, unsigned> reads;
    unsigned total = 0;
    std::vector<std::unique_ptr<PlainNode>> children;

    void increment(unsigned thread)
    {
        std::lock_guard guard(lock);
        for (auto& child : children)
            child->increment(thread);
        ++reads[thread];
        ++total;
    }
    void decrement(unsigned thread)
    {
        std::lock_guard guard(lock);
        for (auto& child : children)
            child->decrement(thread);
        --reads[thread];
        --total;
    }
    void apply(const std::function<void(PlainNode&)>& f)
    {
        f(*this);
        for (auto& child : children)
            child->apply(f);
    }
    void applyLocked(const std::function<void(PlainNode&)>& f)
    {
        std::lock_guard guard(lock);
        f(*this);
        for (auto& child : children)
            child->applyLocked(f);
    }
};

std::unique_ptr<PlainNode> makePlainTree(int count)
{
    std::vector<PlainNode*> all;
    auto root = std::make_unique<PlainNode>();
    all.push_back(root.get());
    for (int i = 1; i < count; ++i) {
        auto node = std::make_unique<PlainNode>();
        all.push_back(node.get());
        all[(i - 1) / 10]->children.push_back(std::move(node));
    }
    return root;
}

void BM_PeerMutexMapCounter(benchmark::State& state)
{
    auto root = makePlainTree(static_cast<int>(state.range(0)));
    const unsigned me = GetCurrentThreadId();
    for (auto _ : state) {
        root->increment(me);
        root->decrement(me);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["ns_per_node"] = benchmark::Counter(
        static_cast<double>(state.iterations() * state.range(0)),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PeerMutexMapCounter)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kNanosecond);

void BM_NodeApplyRecursive(benchmark::State& state)
{
    NodeTree tree(100000);
    std::size_t visited = 0;
    for (auto _ : state) {
        tree.nodes.front()->ApplyRecursive([&](BxSmartPointer<VoNode> node) { visited += node->IsSerializeLeaves(); });
        benchmark::DoNotOptimize(visited);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_NodeApplyRecursive)->Unit(benchmark::kMillisecond);

void BM_PeerPlainApplyRecursive(benchmark::State& state)
{
    auto root = makePlainTree(100000);
    std::size_t visited = 0;
    for (auto _ : state) {
        root->apply([&](PlainNode& node) { visited += node.total == 0; });
        benchmark::DoNotOptimize(visited);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_PeerPlainApplyRecursive)->Unit(benchmark::kMillisecond);

void BM_PeerLockedApplyRecursive(benchmark::State& state)
{
    auto root = makePlainTree(100000);
    std::size_t visited = 0;
    for (auto _ : state) {
        root->applyLocked([&](PlainNode& node) { visited += node.total == 0; });
        benchmark::DoNotOptimize(visited);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_PeerLockedApplyRecursive)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
