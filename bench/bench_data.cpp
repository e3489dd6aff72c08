// Data manager benchmarks: the lock cycle of a handle (make it, TryLock,
// release) beside std::shared_mutex, the cost of locking whole trees beside a
// walk that takes every node's mutex once, and two threads contending for one
// node beside two threads contending for one std::shared_mutex.
#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using Node = BxSmartPointer<VoNode>;

Node makeNode(const std::wstring& name) { return Node(new VoNode(name.c_str(), true, VoNode::eTMM_Track)); }

/// A manager whose tree holds `count` nodes (the root included), ten children per node.
struct CTree
{
    VoDataManager manager;
    std::vector<Node> nodes;

    explicit CTree(int count)
    {
        nodes.push_back(manager.GetRootNode());
        for (int i = 1; i < count; ++i) {
            nodes.push_back(makeNode(L"n" + std::to_wstring(i)));
            if (!manager.InsertNode(nodes[(i - 1) / 10], nodes.back()))
                throw std::runtime_error("tree construction failed");
        }
    }
};

void BM_DataWriteLockCycleLeaf(benchmark::State& state)
{
    CTree tree(2);
    const Node leaf = tree.nodes.back();
    for (auto _ : state) {
        VoDataHandleLockOnly<1> handle(tree.manager, leaf);
        if (!tree.manager.TryLock())
            state.SkipWithError("lock refused");
    }
}
BENCHMARK(BM_DataWriteLockCycleLeaf);

void BM_SharedMutexLockCycle(benchmark::State& state)
{
    std::shared_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        benchmark::ClobberMemory();
        mutex.unlock();
    }
}
BENCHMARK(BM_SharedMutexLockCycle);

void BM_DataRootLockCycle(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    CTree tree(count);
    for (auto _ : state) {
        VoDataHandleLockOnly<1> handle(tree.manager, tree.manager.GetRootNode());
        if (!tree.manager.TryLock())
            state.SkipWithError("lock refused");
    }
    state.SetItemsProcessed(state.iterations() * count);  // items/s = nodes per second
    // Seconds per node (the report shows it in ns): the cost of one cycle spread over the tree.
    state.counters["ns_per_node"] = benchmark::Counter(static_cast<double>(state.iterations() * count),
                                                       benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_DataRootLockCycle)->Arg(10)->Arg(1000)->Arg(100000);

/// The peer of the root lock cycle: a pre-order walk over a tree of the same
/// shape that takes and releases each node's own mutex once.
struct SPlainNode
{
    std::mutex lock;
    unsigned count = 0;
    std::vector<SPlainNode*> children;
};

void walk(SPlainNode& node)
{
    std::lock_guard<std::mutex> guard(node.lock);
    ++node.count;
    for (SPlainNode* child : node.children)
        walk(*child);
}

void BM_MutexTreeWalk(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    std::vector<std::unique_ptr<SPlainNode>> nodes;
    for (int i = 0; i < count; ++i) {
        nodes.push_back(std::make_unique<SPlainNode>());
        if (i > 0)
            nodes[(i - 1) / 10]->children.push_back(nodes.back().get());
    }
    for (auto _ : state)
        walk(*nodes.front());
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_MutexTreeWalk)->Arg(10)->Arg(1000)->Arg(100000);

/// Two threads take write locks on one node in turn; items/s = grants per second.
void BM_DataContendedWriteLock(benchmark::State& state)
{
    static CTree tree(2);  // shared by both threads, made once
    const Node leaf = tree.nodes.back();
    for (auto _ : state) {
        VoDataHandleLockOnly<1> handle(tree.manager, leaf);
        if (!tree.manager.TryLockAndWait(INFINITE))
            state.SkipWithError("lock refused");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DataContendedWriteLock)->Threads(2)->UseRealTime();

std::shared_mutex g_contendedMutex;

void BM_SharedMutexContended(benchmark::State& state)
{
    for (auto _ : state) {
        g_contendedMutex.lock();
        benchmark::ClobberMemory();
        g_contendedMutex.unlock();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SharedMutexContended)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
