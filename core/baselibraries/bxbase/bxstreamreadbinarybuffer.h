// Binary input stream over a block of memory that it does not own.
//
//   BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
//   int value;
//   in >> value;
//
// The caller keeps the block alive while the stream reads it.
//
// The whole block is the get area, so an exhausted area is the end of the
// data. The typed reads of this class rely on that: their slow path throws
// and never returns, which lets the compiler keep the cursor in the caller's
// registers across a loop of reads. Read through a BxStreamReadBinary& the
// same stream takes the base class's path, with the same results.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamreadbinary.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Binary input stream over a block of memory that it does not own.
class BXBASE_API BxStreamReadBinaryBuffer final : public BxStreamReadBinary
{
public:
    /// Reads the `size` bytes at `data` (none when `data` is null).
    BxStreamReadBinaryBuffer(const void* data, std::size_t size);

    /// Bytes read so far.
    std::size_t GetPosition() const noexcept { return static_cast<std::size_t>(getPointer() - m_begin); }
    /// Size of the block.
    std::size_t GetSize() const noexcept { return m_size; }
    /// Bytes still unread.
    std::size_t GetRemaining() const noexcept { return m_size - GetPosition(); }
    /// Moves the read position to `position` (at most the block's size).
    void SetPosition(std::size_t position);

    // The base class's string reads, documented there (hidden from the reference).
    /// @cond
    using BxStreamReadBinary::operator>>;
    /// @endcond
    /// @name Reading values
    /// The base class's typed reads (same encoding, same BxExceptionStream at
    /// the end of the data), with the cursor kept in the caller's registers.
    //@{
    /// Reads one byte: any non-zero byte is true.
    BxStreamReadBinaryBuffer& operator>>(bool& v)
    {
        std::uint8_t byte;
        get(byte);
        v = byte != 0;
        return *this;
    }
    /// Reads a `char` (little-endian, sizeof(char) bytes).
    BxStreamReadBinaryBuffer& operator>>(char& v) { return get(v); }
    /// Reads a `signed char` (little-endian, sizeof(signed char) bytes).
    BxStreamReadBinaryBuffer& operator>>(signed char& v) { return get(v); }
    /// Reads a `unsigned char` (little-endian, sizeof(unsigned char) bytes).
    BxStreamReadBinaryBuffer& operator>>(unsigned char& v) { return get(v); }
    /// Reads a `short` (little-endian, sizeof(short) bytes).
    BxStreamReadBinaryBuffer& operator>>(short& v) { return get(v); }
    /// Reads a `unsigned short` (little-endian, sizeof(unsigned short) bytes).
    BxStreamReadBinaryBuffer& operator>>(unsigned short& v) { return get(v); }
    /// Reads a `int` (little-endian, sizeof(int) bytes).
    BxStreamReadBinaryBuffer& operator>>(int& v) { return get(v); }
    /// Reads a `unsigned int` (little-endian, sizeof(unsigned int) bytes).
    BxStreamReadBinaryBuffer& operator>>(unsigned int& v) { return get(v); }
    /// Reads a `long` (little-endian, sizeof(long) bytes).
    BxStreamReadBinaryBuffer& operator>>(long& v) { return get(v); }
    /// Reads a `unsigned long` (little-endian, sizeof(unsigned long) bytes).
    BxStreamReadBinaryBuffer& operator>>(unsigned long& v) { return get(v); }
    /// Reads a `long long` (little-endian, sizeof(long long) bytes).
    BxStreamReadBinaryBuffer& operator>>(long long& v) { return get(v); }
    /// Reads a `unsigned long long` (little-endian, sizeof(unsigned long long) bytes).
    BxStreamReadBinaryBuffer& operator>>(unsigned long long& v) { return get(v); }
    /// Reads a `float` (little-endian, sizeof(float) bytes).
    BxStreamReadBinaryBuffer& operator>>(float& v) { return get(v); }
    /// Reads a `double` (little-endian, sizeof(double) bytes).
    BxStreamReadBinaryBuffer& operator>>(double& v) { return get(v); }
    //@}

protected:
    std::size_t read(void* data, std::size_t count) override;  // always 0: the block is the get area
    std::optional<std::uint64_t> remaining() const override { return GetRemaining(); }

private:
    template <class T>
    BxStreamReadBinaryBuffer& get(T& v)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        const std::byte* next = getPointer();
        if (fits(next, sizeof(T), getAreaEnd())) [[likely]] {
            std::memcpy(&v, next, sizeof(T));
            setGetPointer(next + sizeof(T));
            return *this;
        }
        endOfData(sizeof(T));
    }
    // Consumes the bytes left and throws BxExceptionStream, as a typed read of
    // the base class does at the end of the data.
    [[noreturn, gnu::cold]] void endOfData(std::size_t size);

    const std::byte* m_begin;
    std::size_t m_size;
};
