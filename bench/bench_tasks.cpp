// Task-graph benchmarks: the task manager beside a prebuilt oneTBB flow graph
// of the same shape (a chain of 1,000 trivial items; a fork-join of width 2
// to 64), and the latency of Start to the return of WaitUntilTerminate for
// one trivial item beside a bare std::condition_variable ping-pong between
// two threads (the two thread hops the manager needs).
#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/votaskmanager.h>

#include <bxbase/bxreferencecounter.h>
#include <bxbase/logging/clogger.h>

#include <benchmark/benchmark.h>
#include <tbb/flow_graph.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int c_chainLength = 1000;

std::atomic<long> g_work{0};

/// A work item that does (almost) nothing.
class CTrivialItem : public IWorkItem
{
public:
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    void Run(TaskManager::SWorkItemStatus&) override { g_work.fetch_add(1, std::memory_order_relaxed); }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    mutable BxReferenceCounter<unsigned int> m_counter;
};

BxSmartPointer<IWorkItem> trivial() { return BxSmartPointer<IWorkItem>(new CTrivialItem); }

/// A manager whose info lines are filtered out, as in production.
std::unique_ptr<VoTaskManager> quietManager()
{
    auto manager = std::make_unique<VoTaskManager>();
    BxSmartPointer<Logging::CLogger> logger(new Logging::CLogger(L"Core.TaskManager"));
    logger->SetLevel(Logging::eLL_Warn);
    manager->SetLogger(logger);
    return manager;
}

std::string nodeName(int i) { return "n" + std::to_string(i); }

// --- chain -------------------------------------------------------------------------

void BM_TaskManagerChain1000(benchmark::State& state)
{
    auto manager = quietManager();
    for (int i = 0; i < c_chainLength; ++i)
    {
        manager->Add(nodeName(i).c_str(), trivial());
        if (i > 0)
            manager->AddDependency(nodeName(i - 1).c_str(), nodeName(i).c_str());
    }
    const std::string first = nodeName(0), last = nodeName(c_chainLength - 1);
    for (auto _ : state)
    {
        manager->Start(first.c_str(), ITaskManager::eP_Normal);
        manager->WaitUntilTerminate(last.c_str());
    }
    state.SetItemsProcessed(state.iterations() * c_chainLength);
}
BENCHMARK(BM_TaskManagerChain1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_TbbFlowGraphChain1000(benchmark::State& state)
{
    using Node = tbb::flow::continue_node<tbb::flow::continue_msg>;
    tbb::flow::graph graph;
    std::vector<std::unique_ptr<Node>> nodes;
    for (int i = 0; i < c_chainLength; ++i)
    {
        nodes.push_back(std::make_unique<Node>(graph, [](const tbb::flow::continue_msg&) {
            g_work.fetch_add(1, std::memory_order_relaxed);
        }));
        if (i > 0)
            tbb::flow::make_edge(*nodes[i - 1], *nodes[i]);
    }
    for (auto _ : state)
    {
        nodes.front()->try_put(tbb::flow::continue_msg());
        graph.wait_for_all();
    }
    state.SetItemsProcessed(state.iterations() * c_chainLength);
}
BENCHMARK(BM_TbbFlowGraphChain1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

// --- fork-join --------------------------------------------------------------------------

void BM_TaskManagerForkJoin(benchmark::State& state)
{
    const int width = static_cast<int>(state.range(0));
    auto manager = quietManager();
    manager->Add("fork", trivial());
    manager->Add("join", trivial());
    for (int i = 0; i < width; ++i)
    {
        manager->Add(nodeName(i).c_str(), trivial());
        manager->AddDependency("fork", nodeName(i).c_str());
        manager->AddDependency(nodeName(i).c_str(), "join");
    }
    for (auto _ : state)
    {
        manager->Start("fork", ITaskManager::eP_Normal);
        manager->WaitUntilTerminate("join");
    }
    state.SetItemsProcessed(state.iterations() * (width + 2));
}
BENCHMARK(BM_TaskManagerForkJoin)->RangeMultiplier(2)->Range(2, 64)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_TbbFlowGraphForkJoin(benchmark::State& state)
{
    using Node = tbb::flow::continue_node<tbb::flow::continue_msg>;
    const int width = static_cast<int>(state.range(0));
    auto body = [](const tbb::flow::continue_msg&) { g_work.fetch_add(1, std::memory_order_relaxed); };
    tbb::flow::graph graph;
    Node fork(graph, body), join(graph, body);
    std::vector<std::unique_ptr<Node>> branches;
    for (int i = 0; i < width; ++i)
    {
        branches.push_back(std::make_unique<Node>(graph, body));
        tbb::flow::make_edge(fork, *branches.back());
        tbb::flow::make_edge(*branches.back(), join);  // the join waits for all its predecessors
    }
    for (auto _ : state)
    {
        fork.try_put(tbb::flow::continue_msg());
        graph.wait_for_all();
    }
    state.SetItemsProcessed(state.iterations() * (width + 2));
}
BENCHMARK(BM_TbbFlowGraphForkJoin)->RangeMultiplier(2)->Range(2, 64)->UseRealTime()->Unit(benchmark::kMicrosecond);

// --- latency ----------------------------------------------------------------------------

void BM_TaskManagerStartWaitOneItem(benchmark::State& state)
{
    auto manager = quietManager();
    manager->Add("one", trivial());
    for (auto _ : state)
    {
        manager->Start("one", ITaskManager::eP_Normal);
        manager->WaitUntilTerminate("one");
    }
}
BENCHMARK(BM_TaskManagerStartWaitOneItem)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// One round trip: this thread wakes a partner through a condition variable
/// and waits until the partner answers the same way.
void BM_CondVarPingPong(benchmark::State& state)
{
    std::mutex mutex;
    std::condition_variable wake;
    long ping = 0, pong = 0;
    bool stop = false;
    std::thread partner([&] {
        std::unique_lock lock(mutex);
        for (;;)
        {
            wake.wait(lock, [&] { return stop || ping != pong; });
            if (stop)
                return;
            pong = ping;
            wake.notify_all();
        }
    });
    for (auto _ : state)
    {
        std::unique_lock lock(mutex);
        ++ping;
        wake.notify_all();
        wake.wait(lock, [&] { return pong == ping; });
    }
    {
        std::lock_guard lock(mutex);
        stop = true;
    }
    wake.notify_all();
    partner.join();
}
BENCHMARK(BM_CondVarPingPong)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
