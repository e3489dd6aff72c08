// Trace recorder benchmarks: the cost of one recorded event with the recorder
// on (a span, an instant, a flow), and of a hook point with it off beside the
// same loop without the hook.
//
// The runtime's hook points with the recorder off (BM_TracingOff*): a post to
// a threaded handler until handled, a send round trip, pool tasks, a small
// task graph run and a data-manager lock cycle. The same source is built a
// second time as bench_trace_nohooks, against copies of the libraries built
// without hook points (VOBASE_TRACE_HOOKS=0): bench/peers.json pairs each
// figure here with the same figure of that program, measured in the same
// report run (bench/report.py runs the two programs in turns).
#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>
#include <vobase/objects/vonode.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/votaskmanager.h>

#include <bxbase/diagnostics/bxtracerecorder.h>
#include <bxbase/diagnostics/bxtracescope.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxtask.h>
#include <bxbase/threading/bxthreadpool.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

std::atomic<std::uint64_t> g_work{0};

/// The work a hook point surrounds: one relaxed increment.
void work() { g_work.fetch_add(1, std::memory_order_relaxed); }

/// Seconds per iteration (one event each), which the report shows in ns.
void countPerEvent(benchmark::State& state)
{
    state.counters["ns_per_event"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_TraceSpanOn(benchmark::State& state)
{
    BxTraceRecorder::Start(4096); // a small ring: steady state overwrites, as a long recording does
    for (auto _ : state) {
        BxTraceScope span("bench", "work item");
        work();
    }
    BxTraceRecorder::Stop();
    countPerEvent(state);
}
BENCHMARK(BM_TraceSpanOn);

void BM_TraceInstantOn(benchmark::State& state)
{
    BxTraceRecorder::Start(4096);
    for (auto _ : state) {
        BxTraceRecorder::Instant("bench", "transition");
        work();
    }
    BxTraceRecorder::Stop();
    countPerEvent(state);
}
BENCHMARK(BM_TraceInstantOn);

void BM_TraceWideFlowOn(benchmark::State& state)
{
    BxTraceRecorder::Start(4096);
    for (auto _ : state) {
        BxTraceRecorder::FlowStart("bench", std::wstring_view(L"VoMessageString"), BxTraceRecorder::NewId());
        work();
    }
    BxTraceRecorder::Stop();
    countPerEvent(state);
}
BENCHMARK(BM_TraceWideFlowOn);

void BM_TraceSpanOff(benchmark::State& state)
{
    BxTraceRecorder::Stop();
    for (auto _ : state) {
        BxTraceScope span("bench", "work item");
        work();
    }
}
BENCHMARK(BM_TraceSpanOff);

void BM_NoHook(benchmark::State& state)
{
    for (auto _ : state)
        work();
}
BENCHMARK(BM_NoHook);

// --- the runtime's hook points with the recorder off -------------------------------------------

constexpr int c_postBatch = 1000; // posts per iteration
constexpr int c_poolBatch = 256;  // pool tasks per iteration

class CBenchTraceMsg : public VoMessage
{
    BX_DECLARE_RTTI();
};
BX_IMPLEMENT_RTTI(CBenchTraceMsg, &VoMessage::RTTI)

/// Answers 1 to every CBenchTraceMsg.
class CBenchHandler : public VoMessageHandlerThreaded
{
public:
    CBenchHandler() : VoMessageHandlerThreaded(L"BenchTraceHooks", eTP_Normal) {}
    ~CBenchHandler() override { UnsubscribeAll(); }
    std::atomic<long long> handled{0};

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CBenchTraceMsg::RTTI))
            return VoMessageHandlerThreaded::handleMessage(message);
        handled.fetch_add(1, std::memory_order_relaxed);
        return 1;
    }
};

/// The dispatcher runs and one threaded handler subscribes to CBenchTraceMsg.
struct SMessaging
{
    CBenchHandler handler;
    SMessaging()
    {
        BxTraceRecorder::Stop();
        VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
        if (!dispatcher.IsRunning())
            dispatcher.StartAndWait();
        handler.StartAndWait();
        handler.Subscribe(CBenchTraceMsg::RTTI);
    }
};

void BM_TracingOffPostHandled(benchmark::State& state)
{
    SMessaging messaging;
    for (auto _ : state) {
        for (int i = 0; i < c_postBatch; ++i)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CBenchTraceMsg));
        // Routed after every post and handled after them on the handler's thread.
        VoMessageDispatcher::SendMessageW(CBenchTraceMsg(), messaging.handler);
    }
    if (messaging.handler.handled.load() != static_cast<long long>(state.iterations()) * (c_postBatch + 1))
        state.SkipWithError("a post was not handled");
    state.SetItemsProcessed(state.iterations() * c_postBatch);
}
BENCHMARK(BM_TracingOffPostHandled)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_TracingOffSendRoundTrip(benchmark::State& state)
{
    SMessaging messaging;
    const CBenchTraceMsg message;
    for (auto _ : state)
        benchmark::DoNotOptimize(VoMessageDispatcher::SendMessageW(message));
    if (messaging.handler.handled.load() != static_cast<long long>(state.iterations()))
        state.SkipWithError("a send was not handled");
}
BENCHMARK(BM_TracingOffSendRoundTrip)->UseRealTime();

class CBenchTask : public BxTask
{
protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        work();
        return true;
    }
};

void BM_TracingOffPoolTasks(benchmark::State& state)
{
    BxTraceRecorder::Stop();
    BxThreadPool& pool = BxThreadPool::GetInstance();
    std::vector<BxSmartPointer<BxTask>> tasks;
    for (int i = 0; i < c_poolBatch; ++i)
        tasks.emplace_back(new CBenchTask);
    for (auto _ : state) {
        for (const auto& task : tasks)
            pool.AddTask(task, BxThreadPool::ePriorityNormal);
        for (const auto& task : tasks)
            task->WaitUntilTerminate(INFINITE);
    }
    state.SetItemsProcessed(state.iterations() * c_poolBatch);
}
BENCHMARK(BM_TracingOffPoolTasks)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// A work item that does one increment.
class CBenchItem : public IWorkItem
{
public:
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    void Run(TaskManager::SWorkItemStatus&) override { work(); }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    mutable BxReferenceCounter<unsigned int> m_counter;
};

/// fork -> four branches -> join, run to its end.
void BM_TracingOffTaskGraph(benchmark::State& state)
{
    BxTraceRecorder::Stop();
    VoTaskManager manager;
    BxSmartPointer<Logging::CLogger> logger(new Logging::CLogger(L"Core.TaskManager"));
    logger->SetLevel(Logging::eLL_Warn);
    manager.SetLogger(logger);
    manager.Add("fork", BxSmartPointer<IWorkItem>(new CBenchItem));
    manager.Add("join", BxSmartPointer<IWorkItem>(new CBenchItem));
    for (int i = 0; i < 4; ++i) {
        const std::string branch = "b" + std::to_string(i);
        manager.Add(branch.c_str(), BxSmartPointer<IWorkItem>(new CBenchItem));
        manager.AddDependency("fork", branch.c_str());
        manager.AddDependency(branch.c_str(), "join");
    }
    for (auto _ : state) {
        manager.Start("fork", ITaskManager::eP_Normal);
        manager.WaitUntilTerminate("join");
    }
}
BENCHMARK(BM_TracingOffTaskGraph)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// Request, grant and release of a write lock on a leaf of a two-node tree.
void BM_TracingOffLockCycle(benchmark::State& state)
{
    BxTraceRecorder::Stop();
    VoDataManager manager;
    BxSmartPointer<VoNode> leaf(new VoNode(L"Leaf", true, VoNode::eTMM_Track));
    if (!manager.InsertNode(manager.GetRootNode(), leaf))
        state.SkipWithError("no tree");
    for (auto _ : state) {
        VoDataHandleLockOnly<1> handle(manager, leaf);
        if (!manager.TryLock())
            state.SkipWithError("lock refused");
    }
}
BENCHMARK(BM_TracingOffLockCycle);

} // namespace

BENCHMARK_MAIN();
