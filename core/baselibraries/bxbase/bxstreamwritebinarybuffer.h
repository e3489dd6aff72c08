// Binary output stream into a growing block of memory.
//
//   BxStreamWriteBinaryBuffer out;
//   out << 1 << 2.0;
//   send(out.GetData(), out.GetCount());   // 12 bytes
//
// The block doubles when it is full; the whole free part of it is the put
// area, so small typed writes are a bounds check and a copy.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamwritebinary.h>

#include <memory>

/// Binary output stream into a growing block of memory.
class BXBASE_API BxStreamWriteBinaryBuffer : public BxStreamWriteBinary
{
public:
    /// `initialCapacity` bytes are reserved up front.
    explicit BxStreamWriteBinaryBuffer(std::size_t initialCapacity = 256);

    /// The first byte of the block (valid until the next write).
    const std::byte* GetData() const noexcept { return m_data.get(); }
    /// The number of bytes written.
    std::size_t GetCount() const noexcept { return static_cast<std::size_t>(putPointer() - m_data.get()); }

    /// Forgets the contents; the block is kept.
    void Clear() noexcept { setPutArea(m_data.get(), m_data.get() + m_capacity); }

protected:
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

private:
    void grow(std::size_t needed);

    std::unique_ptr<std::byte[]> m_data;
    std::size_t m_capacity = 0;
};
