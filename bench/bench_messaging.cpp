// Messaging benchmarks, each beside its peer:
//  - a synchronous send through the dispatcher to a threaded handler and back
//    (caller -> dispatcher thread -> handler thread -> caller) beside a bare
//    std::condition_variable ping-pong between two threads;
//  - one-way posts through the dispatcher to one threaded handler beside a
//    single-hop deque guarded by a mutex and a condition variable;
//  - the subscriber lookup of a message five classes deep with 100
//    subscribers per level (500 handlers in the answer);
//  - the latency of one PostMessageW to a thread in GetMessageW while a
//    producer keeps a steady load of 1 M posts/s, beside the same load on a
//    mutex + condition-variable deque (median and 99th percentile in ns).
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vomessagehandler.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>

#include <bxbase/threading/bxevent.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int c_postBatch = 10000;  // posts per measured batch

class CBenchPing : public VoMessage
{
    BX_DECLARE_RTTI();
};
BX_IMPLEMENT_RTTI(CBenchPing, &VoMessage::RTTI)

// Five levels: CLevel1 derives from VoMessage, CLevel5 from CLevel4.
class CLevel1 : public VoMessage { BX_DECLARE_RTTI(); };
class CLevel2 : public CLevel1 { BX_DECLARE_RTTI(); };
class CLevel3 : public CLevel2 { BX_DECLARE_RTTI(); };
class CLevel4 : public CLevel3 { BX_DECLARE_RTTI(); };
class CLevel5 : public CLevel4 { BX_DECLARE_RTTI(); };
BX_IMPLEMENT_RTTI(CLevel1, &VoMessage::RTTI)
BX_IMPLEMENT_RTTI(CLevel2, &CLevel1::RTTI)
BX_IMPLEMENT_RTTI(CLevel3, &CLevel2::RTTI)
BX_IMPLEMENT_RTTI(CLevel4, &CLevel3::RTTI)
BX_IMPLEMENT_RTTI(CLevel5, &CLevel4::RTTI)

/// Counts the pings it handles; answers 1.
class CPingHandler : public VoMessageHandlerThreaded
{
public:
    CPingHandler() : VoMessageHandlerThreaded(L"BenchPing", eTP_Normal) {}
    ~CPingHandler() override { UnsubscribeAll(); }
    std::atomic<long long> handled{0};

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CBenchPing::RTTI))
            return VoMessageHandlerThreaded::handleMessage(message);
        handled.fetch_add(1, std::memory_order_relaxed);
        return 1;
    }
};

VoMessageDispatcher& runningDispatcher()
{
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    if (!dispatcher.IsRunning())
        dispatcher.StartAndWait();
    return dispatcher;
}

// --- synchronous round trip ---------------------------------------------------------------------

void BM_DispatcherSendRoundTrip(benchmark::State& state)
{
    runningDispatcher();
    CPingHandler handler;
    handler.StartAndWait();
    handler.Subscribe(CBenchPing::RTTI);
    const CBenchPing ping;
    for (auto _ : state)
        benchmark::DoNotOptimize(VoMessageDispatcher::SendMessageW(ping));
    if (handler.handled.load() != static_cast<long long>(state.iterations()))
        state.SkipWithError("a send was not handled");
}
BENCHMARK(BM_DispatcherSendRoundTrip)->UseRealTime();

void BM_CondVarPingPongRoundTrip(benchmark::State& state)
{
    std::mutex mutex;
    std::condition_variable wake;
    long long requests = 0, replies = 0;  // guarded by mutex
    bool stop = false;
    std::thread peer([&] {
        std::unique_lock lock(mutex);
        for (;;)
        {
            wake.wait(lock, [&] { return stop || requests > replies; });
            if (stop)
                return;
            ++replies;
            wake.notify_all();
        }
    });
    for (auto _ : state)
    {
        std::unique_lock lock(mutex);
        ++requests;
        wake.notify_all();
        wake.wait(lock, [&] { return replies == requests; });
    }
    {
        std::lock_guard lock(mutex);
        stop = true;
    }
    wake.notify_all();
    peer.join();
}
BENCHMARK(BM_CondVarPingPongRoundTrip)->UseRealTime();

// --- one-way post throughput ---------------------------------------------------------------------

void BM_DispatcherPostThroughput(benchmark::State& state)
{
    runningDispatcher();
    CPingHandler handler;
    handler.StartAndWait();
    handler.Subscribe(CBenchPing::RTTI);
    for (auto _ : state)
    {
        for (int i = 0; i < c_postBatch; ++i)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CBenchPing));
        VoMessageDispatcher::SendMessageW(CBenchPing(), handler);  // returns once every post was handled
    }
    state.SetItemsProcessed(state.iterations() * c_postBatch);
}
BENCHMARK(BM_DispatcherPostThroughput)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_MutexDequeThroughput(benchmark::State& state)
{
    std::mutex mutex;
    std::condition_variable wake, drained;
    std::deque<BxSmartPointer<const VoMessage>> queue;  // guarded by mutex
    long long consumed = 0;                             // guarded by mutex
    bool stop = false;
    std::thread consumer([&] {
        std::unique_lock lock(mutex);
        for (;;)
        {
            wake.wait(lock, [&] { return stop || !queue.empty(); });
            if (queue.empty())
                return;
            BxSmartPointer<const VoMessage> message = std::move(queue.front());
            queue.pop_front();
            lock.unlock();
            benchmark::DoNotOptimize(message->GetID());
            message.reset();
            lock.lock();
            if (++consumed % c_postBatch == 0)
                drained.notify_all();
        }
    });
    long long produced = 0;
    for (auto _ : state)
    {
        for (int i = 0; i < c_postBatch; ++i)
        {
            BxSmartPointer<const VoMessage> message(new CBenchPing);
            std::lock_guard lock(mutex);
            queue.push_back(std::move(message));
            wake.notify_one();
        }
        produced += c_postBatch;
        std::unique_lock lock(mutex);
        drained.wait(lock, [&] { return consumed == produced; });
    }
    {
        std::lock_guard lock(mutex);
        stop = true;
    }
    wake.notify_all();
    consumer.join();
    state.SetItemsProcessed(state.iterations() * c_postBatch);
}
BENCHMARK(BM_MutexDequeThroughput)->UseRealTime()->Unit(benchmark::kMillisecond);

// --- subscriber lookup ---------------------------------------------------------------------------

void BM_SubscriberLookupFiveLevels(benchmark::State& state)
{
    VoMessageDispatcher& dispatcher = runningDispatcher();
    const BxRTTI* levels[] = {&CLevel1::RTTI, &CLevel2::RTTI, &CLevel3::RTTI, &CLevel4::RTTI, &CLevel5::RTTI};
    std::vector<std::unique_ptr<VoMessageHandler>> handlers;
    for (int level = 0; level < 5; ++level)
    {
        for (int i = 0; i < 100; ++i)
        {
            handlers.push_back(std::make_unique<VoMessageHandler>(L"Lookup" + std::to_wstring(level * 100 + i)));
            handlers.back()->Subscribe(*levels[level]);
        }
    }
    // The subscriptions were made by synchronous sends and no routing runs
    // now, so this thread may read the dispatcher's tables.
    const CLevel5 message;
    std::size_t found = 0;
    for (auto _ : state)
    {
        found = dispatcher.getSubscribers(nullptr, message).size();
        benchmark::DoNotOptimize(found);
    }
    for (auto& handler : handlers)
        handler->UnsubscribeAll();
    if (found != 500)
        state.SkipWithError("wrong number of subscribers");
}
BENCHMARK(BM_SubscriberLookupFiveLevels);

// --- latency of one post under a steady load ----------------------------------------------------

constexpr int c_latencyBatch = 20000;             // posts per measured batch (20 ms at the rate below)
constexpr std::int64_t c_latencyPeriodNs = 1000;  // one post per microsecond: 1 M posts/s

std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Posts one batch at the steady rate; `post(last, stamp)` sends one message
/// carrying its time of posting. A producer that falls behind posts at once.
template <class Post>
void postAtSteadyRate(Post&& post)
{
    std::int64_t next = nowNs();
    for (int i = 0; i < c_latencyBatch; ++i)
    {
        next += c_latencyPeriodNs;
        std::int64_t now;
        while ((now = nowNs()) < next)
        {
        }
        post(i == c_latencyBatch - 1, now);
    }
}

/// Median and 99th percentile of the latencies, as counters.
void reportLatencies(benchmark::State& state, std::vector<std::int64_t>& latencies)
{
    if (latencies.empty())
        return;
    auto at = [&latencies](double q) {
        auto nth = latencies.begin() + static_cast<std::ptrdiff_t>(q * static_cast<double>(latencies.size() - 1));
        std::nth_element(latencies.begin(), nth, latencies.end());
        return static_cast<double>(*nth);
    };
    state.counters["p50_ns"] = at(0.5);
    state.counters["p99_ns"] = at(0.99);
    state.SetItemsProcessed(static_cast<std::int64_t>(latencies.size()));
}

std::vector<std::int64_t>* g_latencies = nullptr;  // the consumer's record while a latency benchmark runs

LRESULT latencyProc(HWND, UINT message, WPARAM wParam, LPARAM lParam)
{
    // lParam: the time of posting; wParam: the batch's end event on its last post, else 0
    if (message == WM_USER)
    {
        g_latencies->push_back(nowNs() - lParam);
        if (wParam != 0)
            reinterpret_cast<BxEvent*>(wParam)->Set();
    }
    return 0;
}

void BM_PostMessageLatencyAtOneMillionPerSecond(benchmark::State& state)
{
    static const bool registered = [] {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = latencyProc;
        wc.lpszClassName = L"BenchLatencyWindow";
        return RegisterClassExW(&wc) != 0;
    }();
    benchmark::DoNotOptimize(registered);
    std::vector<std::int64_t> latencies;  // the consumer's; read after it ended
    latencies.reserve(static_cast<std::size_t>(c_latencyBatch) * 64);
    g_latencies = &latencies;
    HWND hwnd = nullptr;
    BxEvent created, batchDone;
    std::thread consumer([&] {
        hwnd = CreateWindowExW(0, L"BenchLatencyWindow", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        created.Set();
        MSG msg;
        while (GetMessageW(&msg, nullptr, 0, 0) > 0)
            DispatchMessageW(&msg);
        DestroyWindow(hwnd);
    });
    created.Wait();
    const auto done = reinterpret_cast<WPARAM>(&batchDone);
    for (auto _ : state)
    {
        postAtSteadyRate([&](bool last, std::int64_t stamp) { ::PostMessageW(hwnd, WM_USER, last ? done : 0, stamp); });
        batchDone.Wait();
        batchDone.Reset();
    }
    ::PostMessageW(hwnd, WM_QUIT, 0, 0);
    consumer.join();
    g_latencies = nullptr;
    reportLatencies(state, latencies);
}
BENCHMARK(BM_PostMessageLatencyAtOneMillionPerSecond)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_MutexDequeLatencyAtOneMillionPerSecond(benchmark::State& state)
{
    struct SEntry
    {
        bool last;
        bool quit;
        std::int64_t stamp;
    };
    std::mutex mutex;
    std::condition_variable posted;
    std::deque<SEntry> queue;  // guarded by mutex
    std::vector<std::int64_t> latencies;
    latencies.reserve(static_cast<std::size_t>(c_latencyBatch) * 64);
    BxEvent batchDone;
    std::thread consumer([&] {
        for (;;)
        {
            SEntry entry;
            {
                std::unique_lock lock(mutex);
                posted.wait(lock, [&] { return !queue.empty(); });
                entry = queue.front();
                queue.pop_front();
            }
            if (entry.quit)
                return;
            latencies.push_back(nowNs() - entry.stamp);
            if (entry.last)
                batchDone.Set();
        }
    });
    auto post = [&](SEntry entry) {
        {
            std::lock_guard lock(mutex);
            queue.push_back(entry);
        }
        posted.notify_one();
    };
    for (auto _ : state)
    {
        postAtSteadyRate([&](bool last, std::int64_t stamp) { post({last, false, stamp}); });
        batchDone.Wait();
        batchDone.Reset();
    }
    post({false, true, 0});
    consumer.join();
    reportLatencies(state, latencies);
}
BENCHMARK(BM_MutexDequeLatencyAtOneMillionPerSecond)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
