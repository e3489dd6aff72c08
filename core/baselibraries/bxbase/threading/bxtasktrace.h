// Records each run of a BxTask as a span of the trace (BxTraceRecorder),
// category "tasks", named by the task's class ("TaskManager::VoTaskGraphProcessing"),
// on the thread that runs it: a pool worker, a thread that runs the task it
// waits for, or a caller of BxTask::Run.
//
//   void BxTask::runClaimed()
//   {
//       SFinish finish{*this};              // marks the termination last...
//       const BxTaskTrace::CScope span(*this); // ...so the span is recorded before a waiter wakes
//       run();
//   }
//
// With the recorder off (or hook points built out, see BxTraceHooks) the
// scope costs one branch when it begins and one test of a local when it ends.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/diagnostics/bxtracehooks.h>

#include <cstdint>

class BxTask;

/// Records each run of a BxTask as a span of the trace.
class BXBASE_API BxTaskTrace
{
public:
    /// The category of the task spans.
    static constexpr const char* kCategory = "tasks";

    /// Records the span of a run of `task` that began at `start` (BxTraceRecorder::Now()) and ends now.
    static void Record(const BxTask& task, std::uint64_t start) noexcept;

    /// The span of one run: begins when made (while hook points record), is recorded when destroyed.
    using CScope = BxTraceHookScope<BxTask, &BxTaskTrace::Record>;
};
