#include <vobase/objects/vonodethreadcounts.h>

VoNodeThreadCounts::~VoNodeThreadCounts() = default;

VoNodeThreadCounts::SReadWriteCount* VoNodeThreadCounts::findOverflow(std::uint32_t threadId) noexcept
{
    const auto found = m_overflow->find(threadId);
    return found == m_overflow->end() ? nullptr : &found->second;
}

VoNodeThreadCounts::SReadWriteCount& VoNodeThreadCounts::getSlow(std::uint32_t threadId)
{
    SEntry* freeSlot = nullptr;
    for (std::uint32_t i = 0; i < m_inlineCount; ++i) {
        SEntry& entry = m_inline[i];
        if (entry.threadId == threadId)
            return entry.counts;
        if (!freeSlot && entry.counts.readCount == 0 && entry.counts.writeCount == 0)
            freeSlot = &entry;
    }
    if (m_overflow)
        if (SReadWriteCount* found = findOverflow(threadId))
            return *found;
    if (!freeSlot && m_inlineCount < c_inlineEntries)
        freeSlot = &m_inline[m_inlineCount++];
    if (freeSlot) {
        *freeSlot = SEntry{threadId, SReadWriteCount{}};
        return freeSlot->counts;
    }
    if (!m_overflow)
        m_overflow = std::make_unique<Overflow>();
    return (*m_overflow)[threadId];
}

void VoNodeThreadCounts::eraseOverflow(std::uint32_t threadId) noexcept
{
    m_overflow->erase(threadId);
    if (m_overflow->empty())
        m_overflow.reset();
}

void VoNodeThreadCounts::Clear() noexcept
{
    m_inlineCount = 0;
    m_overflow.reset();
}
