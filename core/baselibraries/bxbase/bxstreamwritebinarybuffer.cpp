#include <bxbase/bxstreamwritebinarybuffer.h>

#include <algorithm>
#include <cstring>

BxStreamWriteBinaryBuffer::BxStreamWriteBinaryBuffer(std::size_t initialCapacity)
    : m_data(std::make_unique_for_overwrite<std::byte[]>(std::max<std::size_t>(initialCapacity, 16))),
      m_capacity(std::max<std::size_t>(initialCapacity, 16))
{
    setPutArea(m_data.get(), m_data.get() + m_capacity);
}

void BxStreamWriteBinaryBuffer::grow(std::size_t needed)
{
    const std::size_t count = GetCount();
    std::size_t capacity = m_capacity * 2;
    while (capacity < count + needed)
        capacity *= 2;
    auto data = std::make_unique_for_overwrite<std::byte[]>(capacity);
    std::memcpy(data.get(), m_data.get(), count);
    m_data = std::move(data);
    m_capacity = capacity;
    setPutArea(m_data.get() + count, m_data.get() + m_capacity);
}

BxStreamWriteBinary& BxStreamWriteBinaryBuffer::write(const void* data, std::size_t count)
{
    // Called only when the put area is too small.
    grow(count);
    WriteBuffer(data, count);
    return *this;
}
