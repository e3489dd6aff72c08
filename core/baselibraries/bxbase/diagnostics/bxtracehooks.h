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

#include <cstdint>

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

/// The span of a hook point: it begins when made, while hook points record,
/// and hands its start to `Record` when destroyed. The subject must outlive it.
///
///   static void Record(const BxTask& task, std::uint64_t start) noexcept;   // out of line
///   using CScope = BxTraceHookScope<BxTask, &Record>;
///   const CScope span(task);
template <typename Subject, void (*Record)(const Subject&, std::uint64_t) noexcept>
class BxTraceHookScope
{
public:
    /// Begins the span of `subject` while hook points record.
    explicit BxTraceHookScope(const Subject& subject) noexcept
        : m_subject(subject), m_start(BxTraceHooks::IsOn() ? BxTraceRecorder::Now() : 0)
    {
    }
    ~BxTraceHookScope()
    {
        if (m_start != 0)
            Record(m_subject, m_start);
    }
    BxTraceHookScope(const BxTraceHookScope&) = delete;
    BxTraceHookScope& operator=(const BxTraceHookScope&) = delete;

private:
    const Subject& m_subject;
    std::uint64_t m_start; ///< 0: not recording
};
