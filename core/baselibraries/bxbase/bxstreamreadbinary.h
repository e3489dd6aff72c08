// Abstract binary input stream: the mirror of BxStreamWriteBinary.
//
//   BxStreamReadBinaryBuffer in(data, size);
//   unsigned version = in.ReadAndCompareVersion(1);
//   int count; double value; std::wstring name;
//   in >> count >> value >> name;
//
// Typed reads throw BxExceptionStream when the data ends before the value
// does; ReadBuffer returns the count actually read. A declared string length
// larger than what the stream still holds is refused before anything is
// allocated when the stream knows its remaining size, and otherwise the string
// grows only as its bytes actually arrive.
//
// A concrete stream overrides only the protected read(); it may lend the
// base class a block of readable bytes (the get area, setGetArea) from which
// small values are copied without a virtual call.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamread.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

class ISerializable;

/// Abstract binary input stream: the mirror of BxStreamWriteBinary.
class BXBASE_API BxStreamReadBinary : public BxStreamRead
{
public:
    /// Reads up to `count` bytes and returns how many were read.
    std::size_t ReadBuffer(void* data, std::size_t count)
    {
        if (static_cast<std::size_t>(m_getEnd - m_get) >= count) {
            if (count)
                std::memcpy(data, m_get, count);
            m_get += count;
            return count;
        }
        return readSlow(data, count);
    }

    /// Reads `count` values written by WriteArray (or by single writes) with one
    /// copy; throws BxExceptionStream when the data ends first.
    template <class T>
    void ReadArray(T* values, std::size_t count)
    {
        static_assert(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>, "plain numbers only");
        ReadExactly(values, count * sizeof(T), "BxStreamReadBinary::ReadArray");
    }

    /// Reads a version word and returns it; throws BxExceptionWrongFileVersion
    /// when it is greater than `maxVersion`.
    unsigned int ReadAndCompareVersion(unsigned int maxVersion);

    /// Reads an object written by WriteChunk, created through the type registry
    /// by its class name. Throws BxExceptionStream for an unknown class or a
    /// chunk whose object does not consume exactly its bytes.
    std::unique_ptr<ISerializable> ReadChunk();

    /// @name Reading values
    /// Each operator reads a value in the form BxStreamWriteBinary writes and
    /// returns the stream (any non-zero byte reads as true); data that ends
    /// first throws BxExceptionStream.
    //@{
    BxStreamReadBinary& operator>>(bool& v)
    {
        std::uint8_t byte;
        get(byte);
        v = byte != 0;
        return *this;
    }
    BxStreamReadBinary& operator>>(char& v) { return get(v); }
    BxStreamReadBinary& operator>>(signed char& v) { return get(v); }
    BxStreamReadBinary& operator>>(unsigned char& v) { return get(v); }
    BxStreamReadBinary& operator>>(short& v) { return get(v); }
    BxStreamReadBinary& operator>>(unsigned short& v) { return get(v); }
    BxStreamReadBinary& operator>>(int& v) { return get(v); }
    BxStreamReadBinary& operator>>(unsigned int& v) { return get(v); }
    BxStreamReadBinary& operator>>(long& v) { return get(v); }
    BxStreamReadBinary& operator>>(unsigned long& v) { return get(v); }
    BxStreamReadBinary& operator>>(long long& v) { return get(v); }
    BxStreamReadBinary& operator>>(unsigned long long& v) { return get(v); }
    BxStreamReadBinary& operator>>(float& v) { return get(v); }
    BxStreamReadBinary& operator>>(double& v) { return get(v); }
    BxStreamReadBinary& operator>>(std::string& v);
    BxStreamReadBinary& operator>>(std::wstring& v);
    //@}

    /// Reads exactly `count` bytes or throws BxExceptionStream naming `functionName`.
    void ReadExactly(void* data, std::size_t count, const char* functionName = "BxStreamReadBinary::ReadExactly");

protected:
    BxStreamReadBinary() = default;
    BxStreamReadBinary(const BxStreamReadBinary&) = delete;
    BxStreamReadBinary& operator=(const BxStreamReadBinary&) = delete;

    /// Delivers up to `count` bytes and returns how many (fewer at end of data).
    virtual std::size_t read(void* data, std::size_t count) = 0;

    /// The number of bytes still to come, when the stream knows it.
    virtual std::optional<std::uint64_t> remaining() const { return std::nullopt; }

    /// Lends [begin, end) as the get area; (nullptr, nullptr) withdraws it.
    void setGetArea(const std::byte* begin, const std::byte* end) noexcept
    {
        m_get = begin;
        m_getEnd = end;
    }
    /// The next unread byte of the get area.
    const std::byte* getPointer() const noexcept { return m_get; }
    /// The end of the get area.
    const std::byte* getAreaEnd() const noexcept { return m_getEnd; }
    /// Moves the next unread byte to `next`, which lies within the get area.
    void setGetPointer(const std::byte* next) noexcept { m_get = next; }
    /// Bytes left in the get area.
    std::size_t getAreaSize() const noexcept { return static_cast<std::size_t>(m_getEnd - m_get); }
    /// next + size <= end, compared as addresses: one add and one compare, and
    /// no pointer arithmetic beyond the area (or on null, when there is none).
    static bool fits(const std::byte* next, std::size_t size, const std::byte* end) noexcept
    {
        return reinterpret_cast<std::uintptr_t>(next) + size <= reinterpret_cast<std::uintptr_t>(end);
    }

private:
    // The fast path of every typed read: the cursor is read into a local, one
    // bounds check, one copy. Only when the get area cannot hold the value does
    // the call leave the caller's code, and the value then comes back by value,
    // so that the caller's variable need not live in memory.
    template <class T>
    BxStreamReadBinary& get(T& v)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        const std::byte* next = m_get;
        if (fits(next, sizeof(T), m_getEnd)) [[likely]] {
            std::memcpy(&v, next, sizeof(T));
            m_get = next + sizeof(T);
        } else {
            v = getSlow<T>();
        }
        return *this;
    }
    // The get area is exhausted: refill through read(), or throw at the end of data.
    template <class T>
    [[gnu::cold, gnu::noinline]] T getSlow()
    {
        T v;
        ReadExactly(&v, sizeof(T), "BxStreamReadBinary::operator >>");
        return v;
    }
    std::size_t readSlow(void* data, std::size_t count);
    std::uint32_t readCount(std::uint64_t unitSize, const char* functionName);

    const std::byte* m_get = nullptr;
    const std::byte* m_getEnd = nullptr;
};
