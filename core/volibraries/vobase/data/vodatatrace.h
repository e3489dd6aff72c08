// Records the locks of every data manager in the trace (BxTraceRecorder),
// category "data", as async spans ('b'/'e', which need not nest: a thread
// releases its locks in any order), one track per lock handle (the handle's
// address is the id):
//
//   "wait write Document"  from the request until the grant, or until the
//                          request is withdrawn (time-out, busy, handle gone)
//   "write Document"       the hold, from the grant until the release
//   "read Document"        the same for a read lock
//
// A re-entrant request (the thread holds a lock that covers it) is granted at
// once and has no wait. The data manager calls these functions at its hook
// points, only while BxTraceHooks::IsOn():
//
//   handle.setAccessStatus(false);
//   if (BxTraceHooks::IsOn())
//       VoDataTrace::RecordRelease(handle);
//
// Each handle remembers which of its spans is open, so that a span begun
// while the recorder was on is ended exactly once, and none is ended that was
// not begun. A handle is used by its own thread only; so is that mark.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>

#include <cstdint>
#include <string>

class VoDataHandleBase;

/// Records the locks of every data manager in the trace as async spans.
class VOBASE_API VoDataTrace
{
public:
    /// The category of the lock spans.
    static constexpr const char* kCategory = "data";

    /// A handle asked for its lock: begins its hold when it was granted at
    /// once (re-entry), else its wait.
    static void RecordRequest(VoDataHandleBase& handle) noexcept;
    /// Pending requests were granted: each one's wait ends and its hold begins.
    static void RecordGrant(const BxSet<VoDataHandleBase*>& handles) noexcept;
    /// A pending request is withdrawn without a grant: its wait ends.
    static void RecordWithdraw(VoDataHandleBase& handle) noexcept;
    /// Every pending request of `threadId` in `requests` is withdrawn: their waits end.
    static void RecordWithdraw(const BxMap<std::uint32_t, BxSet<VoDataHandleBase*>>& requests,
                               std::uint32_t threadId) noexcept;
    /// A granted handle is released: its hold ends.
    static void RecordRelease(VoDataHandleBase& handle) noexcept;

private:
    /// The span a handle has open (VoDataHandleBase::m_traceState).
    enum ETraceState : std::uint8_t
    {
        eTS_None = 0,
        eTS_Waiting = 1,
        eTS_Holding = 2
    };

    static void begin(VoDataHandleBase& handle, ETraceState state);
    static void end(VoDataHandleBase& handle);
    static std::string spanName(const VoDataHandleBase& handle, bool wait);
};
