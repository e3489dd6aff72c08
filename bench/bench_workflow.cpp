// Workflow benchmarks: one transition on one thread (action message, blocking
// automatic transfer function, target entered) beside a hand-written state
// table; one transition through the pool and the dispatcher beside a bare
// pool round trip.
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/voworkflowmanager.h>

#include <bxbase/threading/bxthreadpool.h>
#include <bxbase/windows/bxmessageloop.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <unordered_map>

namespace {

class CMsgStep : public VoMessageWorkflowAction
{
    BX_DECLARE_RTTI();

public:
    bool operator==(const VoMessage& other) const override { return other.IsKindOf(CMsgStep::RTTI); }
};
BX_IMPLEMENT_RTTI_CLONABLE(CMsgStep, &VoMessageWorkflowAction::RTTI)

class CStep : public VoTransferFunctionAutomatic
{
public:
    CStep(const VoMessageHandlerBase& handler, bool blocking)
        : VoTransferFunctionAutomatic(handler, BxSmartPointer<const VoMessageWorkflowAction>(new CMsgStep), false,
                                      blocking, L"Step")
    {
    }
    int counter = 0;

protected:
    void execute(const VoMessageWorkflowAction&) override { benchmark::DoNotOptimize(++counter); }
};

void ensureDispatcher()
{
    if (!VoMessageDispatcher::GetInstance().IsRunning())
        VoMessageDispatcher::GetInstance().StartAndWait();
}

// Two states, A -> B and B -> A, each by a CMsgStep.
void setUp(VoWorkflowManager& manager, bool blocking)
{
    BxSmartPointer<VoWorkflowState> a(new VoWorkflowState), b(new VoWorkflowState);
    manager.RegisterWorkflowState(a);
    manager.RegisterWorkflowState(b);
    manager.RegisterTransferFunction(a, b, BxSmartPointer<VoTransferFunctionAutomatic>(new CStep(manager, blocking)));
    manager.RegisterTransferFunction(b, a, BxSmartPointer<VoTransferFunctionAutomatic>(new CStep(manager, blocking)));
    manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Ignore();
}

void BM_WorkflowBlockingTransition(benchmark::State& state)
{
    ensureDispatcher();
    VoWorkflowManager manager(L"BenchBlocking", VoWorkflowManager::eWMF_None);
    setUp(manager, true);
    const CMsgStep step;
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.HandleMessage(step).Get());
    manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Ignore();
    manager.UnsubscribeAll();
}
BENCHMARK(BM_WorkflowBlockingTransition);

// Peer: a hand-written state table (state x message -> action, next state).
void BM_PeerStateTableTransition(benchmark::State& state)
{
    struct SEdge
    {
        std::function<void(const VoMessage&)> action;
        int target;
    };
    int counter = 0;
    std::unordered_map<long long, SEdge> table;
    table[0] = {[&](const VoMessage&) { benchmark::DoNotOptimize(++counter); }, 1};
    table[1] = {[&](const VoMessage&) { benchmark::DoNotOptimize(++counter); }, 0};
    int current = 0;
    const CMsgStep step;
    for (auto _ : state) {
        SEdge& edge = table.at(current);
        edge.action(step);
        current = edge.target;
        benchmark::DoNotOptimize(current);
    }
}
BENCHMARK(BM_PeerStateTableTransition);

void BM_WorkflowPooledTransition(benchmark::State& state)
{
    ensureDispatcher();
    VoWorkflowManager manager(L"BenchPooled", VoWorkflowManager::eWMF_None);
    if (!manager.initMessageHandler()) {
        state.SkipWithError("no window");
        return;
    }
    setUp(manager, false);
    const CMsgStep step;
    BxEvent entered = manager.GetStateEvent();
    for (auto _ : state) {
        manager.HandleMessage(step).Ignore();
        while (!entered.IsSet())
            BxMessageLoop::ProcessPending(100);
    }
    manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Ignore();
    manager.UnsubscribeAll();
}
BENCHMARK(BM_WorkflowPooledTransition)->UseRealTime();

// Peer: a bare round trip through the pool (task, then an event back).
class CSignal : public BxTask
{
public:
    BxEvent done;

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        done.Set();
        return true;
    }
};

void BM_PeerPoolRoundTrip(benchmark::State& state)
{
    for (auto _ : state) {
        BxSmartPointer<CSignal> task(new CSignal);
        BxThreadPool::GetInstance().AddTask(task, BxThreadPool::ePriorityNormal);
        task->done.Wait();
    }
}
BENCHMARK(BM_PeerPoolRoundTrip)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
