// Abstract binary output stream.
//
// Values are written little-endian, without padding or type tags: bool and the
// char types 1 byte, short 2, int and unsigned 4, long long 8, float and double
// as IEEE 754 (4 and 8), std::string as a u32 byte count and the bytes,
// std::wstring as a u32 count of UTF-16 code units and the UTF-16LE units.
//
//   BxStreamWriteBinaryBuffer out;
//   out.WriteVersion(1);
//   out << 42 << 3.5 << std::wstring(L"name");
//
// A concrete stream overrides only the protected write(). A stream may also
// lend the base class a block of free memory (the put area, set with
// setPutArea) into which small values are copied without a virtual call;
// write() is called when the put area is too small, and the stream must take
// the bytes already placed in it into account (see BxStreamWriteBinaryBuffer).
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamwrite.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

class ISerializable;

/// Abstract binary output stream.
class BXBASE_API BxStreamWriteBinary : public BxStreamWrite
{
public:
    /// Appends `count` bytes.
    void WriteBuffer(const void* data, std::size_t count)
    {
        if (static_cast<std::size_t>(m_putEnd - m_put) >= count) {
            if (count)
                std::memcpy(m_put, data, count);
            m_put += count;
        } else {
            write(data, count);
        }
    }

    /// Writes `count` values in a row, exactly as `count` single writes would,
    /// but with one copy (the targets are little-endian, like the format).
    template <class T>
    void WriteArray(const T* values, std::size_t count)
    {
        static_assert(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>, "plain numbers only");
        WriteBuffer(values, count * sizeof(T));
    }

    /// Writes a version word (u32).
    void WriteVersion(unsigned int version) { *this << static_cast<std::uint32_t>(version); }

    /// Writes an object with its class name so that ReadChunk can re-create it:
    /// the class name (wide string), the u32 byte count of its binary form, the form.
    void WriteChunk(const ISerializable& object);

    /// @name Writing values
    /// Each operator writes its value in the binary form and returns the
    /// stream: numbers little-endian in their size (bool as one byte 0 or 1),
    /// narrow text as a u32 byte count and the bytes, wide text as a u32 count
    /// of UTF-16 code units and the UTF-16LE units.
    //@{
    BxStreamWriteBinary& operator<<(bool v) { return put(static_cast<std::uint8_t>(v ? 1 : 0)); }
    BxStreamWriteBinary& operator<<(char v) { return put(v); }
    BxStreamWriteBinary& operator<<(signed char v) { return put(v); }
    BxStreamWriteBinary& operator<<(unsigned char v) { return put(v); }
    BxStreamWriteBinary& operator<<(short v) { return put(v); }
    BxStreamWriteBinary& operator<<(unsigned short v) { return put(v); }
    BxStreamWriteBinary& operator<<(int v) { return put(v); }
    BxStreamWriteBinary& operator<<(unsigned int v) { return put(v); }
    BxStreamWriteBinary& operator<<(long v) { return put(v); }
    BxStreamWriteBinary& operator<<(unsigned long v) { return put(v); }
    BxStreamWriteBinary& operator<<(long long v) { return put(v); }
    BxStreamWriteBinary& operator<<(unsigned long long v) { return put(v); }
    BxStreamWriteBinary& operator<<(float v) { return put(v); }
    BxStreamWriteBinary& operator<<(double v) { return put(v); }
    BxStreamWriteBinary& operator<<(std::string_view v);
    BxStreamWriteBinary& operator<<(const std::string& v) { return *this << std::string_view(v); }
    BxStreamWriteBinary& operator<<(const char* v) { return *this << std::string_view(v); }
    BxStreamWriteBinary& operator<<(std::wstring_view v);
    BxStreamWriteBinary& operator<<(const std::wstring& v) { return *this << std::wstring_view(v); }
    BxStreamWriteBinary& operator<<(const wchar_t* v) { return *this << std::wstring_view(v); }
    //@}

protected:
    BxStreamWriteBinary() = default;
    BxStreamWriteBinary(const BxStreamWriteBinary&) = delete;
    BxStreamWriteBinary& operator=(const BxStreamWriteBinary&) = delete;

    /// Takes `count` bytes; throws BxExceptionStream when it cannot.
    virtual BxStreamWriteBinary& write(const void* data, std::size_t count) = 0;

    /// Lends [begin, end) as the put area; (nullptr, nullptr) withdraws it.
    void setPutArea(std::byte* begin, std::byte* end) noexcept
    {
        m_put = begin;
        m_putEnd = end;
    }
    /// The next free byte of the put area.
    std::byte* putPointer() const noexcept { return m_put; }

private:
    // The fast path of every typed write: the cursor is read into a local, one
    // bounds check, one copy; write() is called only when the put area is full.
    template <class T>
    BxStreamWriteBinary& put(T v)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        std::byte* next = m_put;
        if (fits(next, sizeof(T), m_putEnd)) [[likely]] {
            std::memcpy(next, &v, sizeof(T));  // the targets are little-endian
            m_put = next + sizeof(T);
            return *this;
        }
        return putSlow(v);
    }
    // next + size <= end, compared as addresses: one add and one compare, and
    // no pointer arithmetic beyond the area (or on null, when there is none).
    static bool fits(const std::byte* next, std::size_t size, const std::byte* end) noexcept
    {
        return reinterpret_cast<std::uintptr_t>(next) + size <= reinterpret_cast<std::uintptr_t>(end);
    }
    // The put area is full: hand the value to write(). Out of line, so that the
    // value can stay in a register on the fast path.
    template <class T>
    [[gnu::cold, gnu::noinline]] BxStreamWriteBinary& putSlow(T v)
    {
        return write(&v, sizeof(T));
    }

    std::byte* m_put = nullptr;
    std::byte* m_putEnd = nullptr;
};
