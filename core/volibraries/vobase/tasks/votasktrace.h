// Records every work item run of a task manager as a span of the trace
// (BxTraceRecorder), category "tasks", named by the item's name (its graph
// node's name), on the thread that runs it. The pool tasks that walk the graph
// are recorded by the thread pool itself (BxTaskTrace), so a work item's span
// sits inside the span of the pool task that ran it.
//
//   {
//       const VoTaskTrace::CWorkItemScope span(*entry.node);
//       item.Run(status);
//   }   // recorded here, before the item's terminated event wakes a waiter
//
// With the recorder off (or hook points built out, see BxTraceHooks) the
// scope costs one branch when it begins and one test of a local when it ends.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/diagnostics/bxtracehooks.h>

#include <cstdint>

class VoGraphNode;

/// Records every work item run of a task manager as a span of the trace.
class VOBASE_API VoTaskTrace
{
public:
    /// The category of the work item spans (the pool's task spans share it).
    static constexpr const char* kCategory = "tasks";

    /// Records the span of the work item on `node` that began at `start` (BxTraceRecorder::Now()) and ends now.
    static void RecordWorkItem(const VoGraphNode& node, std::uint64_t start) noexcept;

    /// The span of one run: begins when made (while hook points record), is recorded when destroyed.
    using CWorkItemScope = BxTraceHookScope<VoGraphNode, &VoTaskTrace::RecordWorkItem>;
};
