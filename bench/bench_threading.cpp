// Threading primitives beside the bare standard-library (or oneTBB) code they
// compete with. Read the figures as ratios of one run:
//   - BM_EventPingPong vs BM_CondVarPingPong: round trip between two threads;
//   - BM_PostMessage vs BM_MutexDequeQueue: one-way message throughput;
//   - BM_ThreadPool (tasks added from outside the pool) and
//     BM_ThreadPoolForkJoin (forked and joined inside a pool task) vs
//     BM_TbbTaskGroup: trivial tasks per second;
//   - BM_ThreadPoolFib vs BM_TbbFib: recursive fork-join, a Fibonacci-style
//     tree of depth 25, one trivial task per inner node.
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthreadpool.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <benchmark/benchmark.h>
#include <tbb/task_group.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
constexpr int kBatch = 1000;

// --- Ping-pong round trip -----------------------------------------------------

void BM_EventPingPong(benchmark::State& state)
{
    BxEvent ping, pong;
    std::atomic<bool> stop{false};
    std::thread partner([&] {
        for (;;)
        {
            ping.Wait();
            ping.Reset();
            if (stop.load(std::memory_order_relaxed))
                return;
            pong.Set();
        }
    });
    for (auto _ : state)
    {
        ping.Set();
        pong.Wait();
        pong.Reset();
    }
    stop = true;
    ping.Set();
    partner.join();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EventPingPong)->UseRealTime();

void BM_CondVarPingPong(benchmark::State& state)
{
    std::mutex lock;
    std::condition_variable toPartner, toMain;
    int turn = 0; // 1: the partner's turn, 0: ours; guarded by lock
    bool stop = false;
    std::thread partner([&] {
        std::unique_lock guard(lock);
        for (;;)
        {
            toPartner.wait(guard, [&] { return turn == 1 || stop; });
            if (stop)
                return;
            turn = 0;
            toMain.notify_one();
        }
    });
    for (auto _ : state)
    {
        std::unique_lock guard(lock);
        turn = 1;
        toPartner.notify_one();
        toMain.wait(guard, [&] { return turn == 0; });
    }
    {
        std::lock_guard guard(lock);
        stop = true;
    }
    toPartner.notify_one();
    partner.join();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CondVarPingPong)->UseRealTime();

// --- One-way message throughput -----------------------------------------------

LRESULT benchProc(HWND, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_USER && wParam == 1)
        reinterpret_cast<BxEvent*>(lParam)->Set(); // end of a batch
    return 0;
}

void BM_PostMessage(benchmark::State& state)
{
    static const bool registered = [] {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = benchProc;
        wc.lpszClassName = L"BenchWindow";
        return RegisterClassExW(&wc) != 0;
    }();
    benchmark::DoNotOptimize(registered);
    HWND hwnd = nullptr;
    BxEvent created, batchDone;
    std::thread consumer([&] {
        hwnd = CreateWindowExW(0, L"BenchWindow", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        created.Set();
        MSG msg;
        while (GetMessageW(&msg, nullptr, 0, 0) > 0)
            DispatchMessageW(&msg);
        DestroyWindow(hwnd);
    });
    created.Wait();
    const auto done = reinterpret_cast<LPARAM>(&batchDone);
    for (auto _ : state)
    {
        for (int i = 0; i < kBatch; ++i)
            PostMessageW(hwnd, WM_USER, i == kBatch - 1 ? 1 : 0, done);
        batchDone.Wait();
        batchDone.Reset();
    }
    PostMessageW(hwnd, WM_QUIT, 0, 0);
    consumer.join();
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_PostMessage)->UseRealTime();

void BM_MutexDequeQueue(benchmark::State& state)
{
    struct SMessage
    {
        unsigned message;
        std::uint64_t wParam;
        std::int64_t lParam;
    };
    std::mutex lock;
    std::condition_variable posted;
    std::deque<SMessage> queue; // guarded by lock
    BxEvent batchDone;
    std::thread consumer([&] {
        for (;;)
        {
            SMessage msg;
            {
                std::unique_lock guard(lock);
                posted.wait(guard, [&] { return !queue.empty(); });
                msg = queue.front();
                queue.pop_front();
            }
            if (msg.message == WM_QUIT)
                return;
            benchProc(nullptr, msg.message, msg.wParam, msg.lParam);
        }
    });
    const auto done = reinterpret_cast<LPARAM>(&batchDone);
    auto post = [&](SMessage msg) {
        {
            std::lock_guard guard(lock);
            queue.push_back(msg);
        }
        posted.notify_one();
    };
    for (auto _ : state)
    {
        for (int i = 0; i < kBatch; ++i)
            post({WM_USER, static_cast<std::uint64_t>(i == kBatch - 1 ? 1 : 0), done});
        batchDone.Wait();
        batchDone.Reset();
    }
    post({WM_QUIT, 0, 0});
    consumer.join();
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_MutexDequeQueue)->UseRealTime();

// --- Thread-pool throughput -----------------------------------------------------

class CTrivialTask : public BxTask
{
public:
    CTrivialTask(std::atomic<int>& remaining, BxEvent& allDone) : m_remaining(remaining), m_allDone(allDone) {}

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        if (m_remaining.fetch_sub(1, std::memory_order_acq_rel) == 1)
            m_allDone.Set();
        return true;
    }

private:
    std::atomic<int>& m_remaining;
    BxEvent& m_allDone;
};

void BM_ThreadPool(benchmark::State& state)
{
    BxThreadPool& pool = BxThreadPool::GetInstance();
    std::atomic<int> remaining{0};
    BxEvent allDone;
    for (auto _ : state)
    {
        remaining.store(kBatch, std::memory_order_relaxed);
        allDone.Reset();
        for (int i = 0; i < kBatch; ++i)
            pool.AddTask(BxSmartPointer<BxTask>(new CTrivialTask(remaining, allDone)), BxThreadPool::ePriorityNormal);
        allDone.Wait();
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_ThreadPool)->UseRealTime();

// Fork-join from inside a pool task, as the task manager forks its branches:
// the forking worker runs the children it waits for that no one took yet.
class CForkTask : public BxTask
{
protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        BxThreadPool& pool = BxThreadPool::GetInstance();
        std::atomic<int> remaining{kBatch};
        BxEvent allDone;
        std::vector<BxSmartPointer<BxTask>> children;
        children.reserve(kBatch);
        for (int i = 0; i < kBatch; ++i)
        {
            children.emplace_back(new CTrivialTask(remaining, allDone));
            pool.AddTask(children.back(), BxThreadPool::ePriorityNormal);
        }
        for (auto& child : children)
            child->WaitUntilTerminate();
        return true;
    }
};

void BM_ThreadPoolForkJoin(benchmark::State& state)
{
    BxThreadPool& pool = BxThreadPool::GetInstance();
    for (auto _ : state)
    {
        BxSmartPointer<BxTask> root(new CForkTask);
        pool.AddTask(root, BxThreadPool::ePriorityNormal);
        root->WaitUntilTerminate();
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_ThreadPoolForkJoin)->UseRealTime();

void BM_TbbTaskGroup(benchmark::State& state)
{
    std::atomic<int> counter{0};
    for (auto _ : state)
    {
        tbb::task_group group;
        for (int i = 0; i < kBatch; ++i)
            group.run([&counter] { counter.fetch_add(1, std::memory_order_relaxed); });
        group.wait();
    }
    benchmark::DoNotOptimize(counter.load());
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_TbbTaskGroup)->UseRealTime();

// --- Recursive fork-join -------------------------------------------------------

constexpr int kFibDepth = 25;

// Inner nodes of fib(n)'s call tree: the tasks each benchmark forks.
std::int64_t fibInnerNodes(int n)
{
    return n < 2 ? 0 : 1 + fibInnerNodes(n - 1) + fibInnerNodes(n - 2);
}

// fib(n): forks fib(n - 1) as a task, computes fib(n - 2) itself, joins.
class CFibTask : public BxTask
{
public:
    explicit CFibTask(int n) : m_n(n) {}
    static std::int64_t Compute(int n)
    {
        if (n < 2)
            return n;
        BxSmartPointer<CFibTask> child(new CFibTask(n - 1));
        BxThreadPool::GetInstance().AddTask(child, BxThreadPool::ePriorityNormal);
        const std::int64_t other = Compute(n - 2);
        child->WaitUntilTerminate();
        return child->m_value + other;
    }

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        m_value = Compute(m_n);
        return true;
    }

private:
    const int m_n;
    std::int64_t m_value = 0;
};

void BM_ThreadPoolFib(benchmark::State& state)
{
    BxThreadPool& pool = BxThreadPool::GetInstance();
    for (auto _ : state)
    {
        BxSmartPointer<CFibTask> root(new CFibTask(kFibDepth));
        pool.AddTask(root, BxThreadPool::ePriorityNormal);
        root->WaitUntilTerminate();
    }
    state.SetItemsProcessed(state.iterations() * (fibInnerNodes(kFibDepth) + 1));
}
BENCHMARK(BM_ThreadPoolFib)->UseRealTime()->Unit(benchmark::kMillisecond);

std::int64_t tbbFib(int n)
{
    if (n < 2)
        return n;
    std::int64_t first = 0;
    tbb::task_group group;
    group.run([&first, n] { first = tbbFib(n - 1); });
    const std::int64_t other = tbbFib(n - 2);
    group.wait();
    return first + other;
}

void BM_TbbFib(benchmark::State& state)
{
    for (auto _ : state)
    {
        std::int64_t value = 0;
        tbb::task_group group;
        group.run([&value] { value = tbbFib(kFibDepth); });
        group.wait();
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations() * (fibInnerNodes(kFibDepth) + 1));
}
BENCHMARK(BM_TbbFib)->UseRealTime()->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
