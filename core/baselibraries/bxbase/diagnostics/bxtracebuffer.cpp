#include <bxbase/diagnostics/bxtracebuffer.h>

#include <algorithm>
#include <cstring>
#include <thread>

void BxTraceEvent::SetName(std::string_view text) noexcept
{
    std::size_t size = std::min(text.size(), kNameCapacity);
    // Never cut a UTF-8 sequence: step back over continuation bytes.
    while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    std::memcpy(name, text.data(), size);
    name[size] = '\0';
}

// The ring's storage is allocated, not constructed: an event is written before
// it is read, and the pages are touched as the ring fills. Constructing all of
// them at once would fault in several megabytes inside the first span the
// thread records, and that span would show the cost.
BxTraceBuffer::BxTraceBuffer(std::size_t capacity, std::uint32_t threadId, std::string threadName)
    : m_capacity(std::max<std::size_t>(capacity, 1)),
      m_events(static_cast<BxTraceEvent*>(::operator new(m_capacity * sizeof(BxTraceEvent)))),
      m_threadId(threadId), m_threadName(std::move(threadName))
{
}

void BxTraceBuffer::WaitUntilQuiet() const noexcept
{
    while (m_inside.load(std::memory_order_acquire))
        std::this_thread::yield();
}

void BxTraceBuffer::CopyTo(std::vector<BxTraceEvent>& out) const
{
    const std::uint64_t head = m_head.load(std::memory_order_relaxed);
    const std::uint64_t size = m_capacity;
    const std::uint64_t first = head > size ? head - size : 0;
    out.reserve(out.size() + static_cast<std::size_t>(head - first));
    for (std::uint64_t i = first; i < head; ++i)
        out.push_back(m_events[i % size]);
}

std::uint64_t BxTraceBuffer::GetDropped() const noexcept
{
    const std::uint64_t head = m_head.load(std::memory_order_relaxed);
    return head > m_capacity ? head - m_capacity : 0;
}

void BxTraceBuffer::Clear() noexcept
{
    m_head.store(0, std::memory_order_relaxed);
}
