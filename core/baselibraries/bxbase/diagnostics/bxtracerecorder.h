// The process-wide trace recorder: what ran on which thread, when, and what
// waited for what, written in the Trace Event Format (JSON) that Perfetto's UI
// and Chrome's tracing view load.
//
// The runtime records at its hook points (message sends, posts and their
// handling, work items and pool tasks, data-manager locks, workflow
// transitions) only while the recorder is on. Off, a hook point costs one
// predictable branch on IsOn(). On, each event goes into the calling thread's
// own bounded ring (BxTraceBuffer) without a lock; when a ring is full its
// oldest events go, and the written trace says how many.
//
// Switched on by the environment: VOBASE_TRACE=path.json at process start
// records from the start and writes the file when the process exits. Or in code:
//
//   BxTraceRecorder::Start();
//   {
//       BxTraceScope span("app", "load");                 // a complete event ('X')
//       std::uint64_t flow = BxTraceRecorder::NewId();
//       BxTraceRecorder::FlowStart("app", "request", flow); // arrow to where it is handled
//   }
//   BxTraceRecorder::Stop();
//   std::ofstream out("trace.json");
//   BxTraceRecorder::Write(out);
//
// Categories are string literals (the recorder keeps the pointer); names are
// copied, cut at BxTraceEvent::kNameCapacity bytes. Times are nanoseconds on
// the steady clock; the file gives microseconds since Start().
#pragma once

#include <bxbase/bxbaseapi.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

/// The process-wide recorder of the trace (Trace Event Format JSON).
class BXBASE_API BxTraceRecorder
{
public:
    /// Events kept per thread unless Start() is given another figure (about 6 MiB a thread).
    static constexpr std::size_t kDefaultEventsPerThread = 65536;

    /// True while recording: the one branch every hook point pays.
    static bool IsOn() noexcept { return s_recording.load(std::memory_order_relaxed); }

    /// Forgets earlier events and starts recording; threads that record for
    /// the first time get rings of `eventsPerThread` events.
    static void Start(std::size_t eventsPerThread = kDefaultEventsPerThread);
    /// Stops recording; the events stay until the next Start() or Clear().
    static void Stop();
    /// Forgets every recorded event (recording goes on if it was on).
    static void Clear();

    /// Writes everything recorded as Trace Event Format JSON. Recording pauses
    /// while the events are read (events of that moment are not recorded).
    static void Write(std::ostream& out);
    /// Writes to a file; throws BxExceptionStream when it cannot be written.
    static void WriteFile(const std::string& path);

    /// Events overwritten so far because a thread's ring was full.
    static std::uint64_t GetDropped();

    /// Nanoseconds on the steady clock, the recorder's time base.
    static std::uint64_t Now() noexcept;
    /// A process-unique id for a flow or an async span (never 0).
    static std::uint64_t NewId() noexcept;

    /// A span that began at `start` (from Now()) and ends now ('X').
    static void Complete(const char* category, std::string_view name, std::uint64_t start) noexcept;
    /// A point in time on this thread ('i').
    static void Instant(const char* category, std::string_view name) noexcept;
    /// The tail of an arrow: this thread hands `id` to another ('s').
    static void FlowStart(const char* category, std::string_view name, std::uint64_t id) noexcept;
    /// The head of the arrow `id`, bound to the span this thread is in ('f').
    static void FlowEnd(const char* category, std::string_view name, std::uint64_t id) noexcept;
    /// Begins an async span `id`, which may end on another thread and need not nest ('b').
    static void AsyncBegin(const char* category, std::string_view name, std::uint64_t id) noexcept;
    /// Ends the async span `id` ('e'); the name must be the one AsyncBegin gave.
    static void AsyncEnd(const char* category, std::string_view name, std::uint64_t id) noexcept;

    /// Complete() with a wide-text name (a message's class name, for example), kept as UTF-8.
    static void Complete(const char* category, std::wstring_view name, std::uint64_t start) noexcept;
    /// Instant() with a wide-text name, kept as UTF-8.
    static void Instant(const char* category, std::wstring_view name) noexcept;
    /// FlowStart() with a wide-text name, kept as UTF-8.
    static void FlowStart(const char* category, std::wstring_view name, std::uint64_t id) noexcept;
    /// FlowEnd() with a wide-text name, kept as UTF-8.
    static void FlowEnd(const char* category, std::wstring_view name, std::uint64_t id) noexcept;

    /// FlowStart() at `time` (from Now()): the start of the span the arrow
    /// leaves, given with that span's category, binds the arrow to the span
    /// for viewers that match a flow event to a span by time (Chrome DevTools).
    static void FlowStart(const char* category, std::wstring_view name, std::uint64_t id,
                          std::uint64_t time) noexcept;
    /// FlowEnd() at `time`: the start of the span the arrow reaches (see FlowStart).
    static void FlowEnd(const char* category, std::wstring_view name, std::uint64_t id, std::uint64_t time) noexcept;

    /// Starts recording when VOBASE_TRACE names a file, and writes it at exit.
    /// The library calls it once when it is loaded; later calls do nothing.
    static void StartFromEnvironment();

private:
    static void record(char phase, const char* category, std::string_view name, std::uint64_t id,
                       std::uint64_t start) noexcept;
    static void record(char phase, const char* category, std::wstring_view name, std::uint64_t id,
                       std::uint64_t start) noexcept;

    static std::atomic<bool> s_recording; ///< read at every hook point
};
