// One thread's bounded ring of trace events, written by that thread alone.
//
// The owning thread appends with Append(); when the ring is full the oldest
// events are overwritten and counted as dropped. Another thread reads the
// events with CopyTo() only while recording is quiescent: BxTraceRecorder
// stops recording and waits until no owner is inside Append() before it reads
// (see BxTraceRecorder::Write). Appending takes no lock; the only shared write
// on the hot path is the owner's own "inside" flag, which the recorder needs
// to know when a buffer may be read.
//
//   BxTraceBuffer buffer(4096, GetCurrentThreadId(), "worker");
//   if (buffer.Enter())                  // false when recording was switched off
//   {
//       buffer.Append(event);
//       buffer.Leave();
//   }
#pragma once

#include <bxbase/bxbaseapi.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One recorded event of the Trace Event Format.
struct BxTraceEvent
{
    /// Longest name kept (longer names are cut at this many bytes).
    static constexpr std::size_t kNameCapacity = 63;

    std::uint64_t time = 0;          ///< nanoseconds on the steady clock
    std::uint64_t duration = 0;      ///< nanoseconds, complete events ('X') only
    std::uint64_t id = 0;            ///< flow or async id ('s', 'f', 'b', 'e')
    const char* category = "";       ///< a string literal (never freed)
    char phase = 'i';                ///< 'X', 'B', 'E', 'i', 's', 'f', 'b', 'e'
    char name[kNameCapacity + 1] = {}; ///< UTF-8, zero-terminated

    /// Copies `text` into name, cut at kNameCapacity bytes on a UTF-8 boundary.
    void SetName(std::string_view text) noexcept;
};

/// One thread's bounded ring of trace events, written by that thread alone.
class BXBASE_API BxTraceBuffer
{
public:
    /// A ring of `capacity` events (at least 1) for the thread `threadId` named `threadName`.
    BxTraceBuffer(std::size_t capacity, std::uint32_t threadId, std::string threadName);
    BxTraceBuffer(const BxTraceBuffer&) = delete;
    BxTraceBuffer& operator=(const BxTraceBuffer&) = delete;

    /// Owner only: marks the buffer busy; false (and not busy) when recording is off.
    bool Enter(const std::atomic<bool>& recording) noexcept
    {
        m_inside.store(true, std::memory_order_seq_cst);
        if (recording.load(std::memory_order_seq_cst))
            return true;
        m_inside.store(false, std::memory_order_release);
        return false;
    }
    /// Owner only: ends what Enter() began.
    void Leave() noexcept { m_inside.store(false, std::memory_order_release); }

    /// Owner only, between Enter() and Leave(): appends, overwriting the oldest event when full.
    void Append(const BxTraceEvent& event) noexcept
    {
        const std::uint64_t head = m_head.load(std::memory_order_relaxed);
        m_events[head % m_capacity] = event;
        m_head.store(head + 1, std::memory_order_relaxed);
    }

    /// Waits until the owner is outside Append(); the recorder calls it after switching off.
    void WaitUntilQuiet() const noexcept;

    /// Reader, while quiescent: the kept events, oldest first.
    void CopyTo(std::vector<BxTraceEvent>& out) const;
    /// Reader, while quiescent: how many events were overwritten.
    std::uint64_t GetDropped() const noexcept;
    /// Reader, while quiescent: forgets every event.
    void Clear() noexcept;

    /// The owning thread's id.
    std::uint32_t GetThreadId() const noexcept { return m_threadId; }
    /// The owning thread's name when the buffer was made (may be empty).
    const std::string& GetThreadName() const noexcept { return m_threadName; }

private:
    /// Frees the ring's storage (its events need no destruction).
    struct SFree
    {
        void operator()(BxTraceEvent* events) const noexcept { ::operator delete(events); }
    };

    const std::size_t m_capacity;                      ///< events the ring holds
    std::unique_ptr<BxTraceEvent[], SFree> m_events;   ///< the ring; written by the owner only
    std::atomic<std::uint64_t> m_head{0};    ///< events appended since the last Clear
    std::atomic<bool> m_inside{false};       ///< the owner is between Enter and Leave
    const std::uint32_t m_threadId;
    const std::string m_threadName;
};
