// Trace recorder benchmarks: the cost of one recorded event with the recorder
// on (a span, an instant, a flow), and of a hook point with it off beside the
// same loop without the hook.
#include <bxbase/diagnostics/bxtracerecorder.h>
#include <bxbase/diagnostics/bxtracescope.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>

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

} // namespace

BENCHMARK_MAIN();
