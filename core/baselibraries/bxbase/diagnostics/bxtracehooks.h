// The condition of every hook point of the runtime (message sends, posts and
// their handling, work items, pool tasks, data-manager locks, workflow steps):
//
//   if (BxTraceHooks::IsOn())
//       VoDataTrace::RecordRelease(handle);   // recording code, out of line
//
// Built with hook points (VOBASE_TRACE_HOOKS=1, CMake option
// VOBASE_TRACE_HOOKS ON, the default), IsOn() is BxTraceRecorder::IsOn(): one
// relaxed load and one predictable branch while the recorder is off. Built
// without them (VOBASE_TRACE_HOOKS=0), IsOn() is the constant false and the
// compiler removes every hook point with its recording call; the recorder
// itself and explicit spans (BxTraceScope) still work.
#pragma once

#include <bxbase/diagnostics/bxtracerecorder.h>

#ifndef VOBASE_TRACE_HOOKS
#define VOBASE_TRACE_HOOKS 1
#endif

/// The condition of every hook point of the runtime.
class BxTraceHooks
{
public:
    /// True when the library was built with its hook points.
    static constexpr bool kCompiled = VOBASE_TRACE_HOOKS != 0;

    /// True while hook points record: the recorder is on and the hook points are built in.
    static bool IsOn() noexcept
    {
        if constexpr (kCompiled)
            return BxTraceRecorder::IsOn();
        else
            return false;
    }
};
