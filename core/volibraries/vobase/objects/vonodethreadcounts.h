// The per-thread read and write counts of one node, kept compact while few
// threads hold locks on it: the first c_inlineEntries threads have their
// entries in an array inside the object (one cache line in all), further
// threads go to a hash map that is made on the first overflow and freed again
// when its last entry drops to zero.
//
//   VoNodeThreadCounts counts;                 // empty, nothing allocated
//   ++counts.Get(tid).readCount;               // entry made on first use
//   if (VoNodeThreadCounts::SReadWriteCount* entry = counts.Find(tid)) {
//       --entry->readCount;
//       counts.Trim(tid, *entry);              // an overflow entry at zero goes
//   }
//   counts.ForEach([](std::uint32_t thread, const auto& c) { show(thread, c); });
//
// An entry whose counts are both zero means the same as no entry: the thread
// holds nothing on the node. Inline entries at zero stay until another thread
// needs their slot, so that a thread locking the same node again and again
// finds its entry at once; overflow entries at zero are erased by Trim.
//
// A thread has at most one entry (inline or in the map). Entry references stay
// valid until the next Get of another thread, Trim or Clear.
//
// Not thread-safe: the owning node's lock guards every member.
#pragma once

#include <vobase/vobaseapi.h>

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>

/// A node's read and write lock counts per thread: a few inline entries, a map beyond them.
class VOBASE_API VoNodeThreadCounts
{
public:
    /// The read and write counts of one thread on one node.
    struct SReadWriteCount
    {
        std::uint32_t readCount = 0;  ///< read locks the thread holds on the node
        std::uint32_t writeCount = 0; ///< write locks the thread holds on the node
    };

    /// Threads whose entries live inside the object.
    static constexpr std::size_t c_inlineEntries = 4;

    VoNodeThreadCounts() = default;
    VoNodeThreadCounts(const VoNodeThreadCounts&) = delete;
    VoNodeThreadCounts& operator=(const VoNodeThreadCounts&) = delete;
    ~VoNodeThreadCounts();

    /// The thread's entry, or null when it has none.
    SReadWriteCount* Find(std::uint32_t threadId) noexcept
    {
        for (std::uint32_t i = 0; i < m_inlineCount; ++i)
            if (m_inline[i].threadId == threadId)
                return &m_inline[i].counts;
        return m_overflow ? findOverflow(threadId) : nullptr;
    }
    /// The thread's entry, or null when it has none (read-only form).
    const SReadWriteCount* Find(std::uint32_t threadId) const noexcept
    {
        return const_cast<VoNodeThreadCounts*>(this)->Find(threadId);
    }

    /// The thread's entry, made with zero counts when missing: in a free
    /// inline slot (one at zero counts is free too), else in the overflow map.
    SReadWriteCount& Get(std::uint32_t threadId)
    {
        if (m_inlineCount > 0 && m_inline[0].threadId == threadId)
            return m_inline[0].counts;
        return getSlow(threadId);
    }

    /// Called after the thread's entry was decremented: an overflow entry at
    /// zero counts is erased, and the map is freed when it is empty.
    void Trim(std::uint32_t threadId, const SReadWriteCount& entry)
    {
        if (m_overflow && !isInline(entry) && entry.readCount == 0 && entry.writeCount == 0)
            eraseOverflow(threadId);
    }

    /// Drops every entry and frees the overflow map.
    void Clear() noexcept;

    /// Calls f(threadId, counts) for every entry, inline ones first (zero
    /// entries included; the order is otherwise unspecified).
    template <class F>
    void ForEach(F&& f) const
    {
        for (std::uint32_t i = 0; i < m_inlineCount; ++i)
            f(m_inline[i].threadId, static_cast<const SReadWriteCount&>(m_inline[i].counts));
        if (m_overflow)
            for (const auto& [threadId, counts] : *m_overflow)
                f(threadId, counts);
    }

    /// The number of entries, zero entries included.
    std::size_t Size() const noexcept { return m_inlineCount + (m_overflow ? m_overflow->size() : 0); }
    /// True while the overflow map exists.
    bool HasOverflow() const noexcept { return m_overflow != nullptr; }

private:
    struct SEntry
    {
        std::uint32_t threadId;
        SReadWriteCount counts;
    };
    using Overflow = std::unordered_map<std::uint32_t, SReadWriteCount>;

    bool isInline(const SReadWriteCount& entry) const noexcept
    {
        const auto* address = reinterpret_cast<const unsigned char*>(&entry);
        return address >= reinterpret_cast<const unsigned char*>(m_inline.data()) &&
               address < reinterpret_cast<const unsigned char*>(m_inline.data() + c_inlineEntries);
    }
    SReadWriteCount* findOverflow(std::uint32_t threadId) noexcept;
    SReadWriteCount& getSlow(std::uint32_t threadId);
    void eraseOverflow(std::uint32_t threadId) noexcept;

    std::uint32_t m_inlineCount = 0;
    std::array<SEntry, c_inlineEntries> m_inline{};
    /// Threads beyond the inline slots; null while there are none.
    std::unique_ptr<Overflow> m_overflow;
};
