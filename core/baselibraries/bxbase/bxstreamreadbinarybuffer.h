// Binary input stream over a block of memory that it does not own.
//
//   BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
//   int value;
//   in >> value;
//
// The caller keeps the block alive while the stream reads it.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamreadbinary.h>

/// Binary input stream over a block of memory that it does not own.
class BXBASE_API BxStreamReadBinaryBuffer : public BxStreamReadBinary
{
public:
    BxStreamReadBinaryBuffer(const void* data, std::size_t size);

    /// Bytes read so far.
    std::size_t GetPosition() const noexcept { return static_cast<std::size_t>(getPointer() - m_begin); }
    /// Size of the block.
    std::size_t GetSize() const noexcept { return m_size; }
    /// Bytes still unread.
    std::size_t GetRemaining() const noexcept { return m_size - GetPosition(); }
    /// Moves the read position to `position` (at most the block's size).
    void SetPosition(std::size_t position);

protected:
    std::size_t read(void* data, std::size_t count) override;
    std::optional<std::uint64_t> remaining() const override { return GetRemaining(); }

private:
    const std::byte* m_begin;
    std::size_t m_size;
};
