#include <vobase/streams/vostreamreadasciit.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

constexpr const char* c_readWord = "VoStreamReadASCIIT<TString>::readWord";
constexpr const char* c_readInt = "VoStreamReadASCIIT<TString>::readInt";
constexpr const char* c_readUInt = "VoStreamReadASCIIT<TString>::readUInt";
constexpr const char* c_operator = "VoStreamReadASCIIT<TString>::operator >>";

template <class TString>
TString fromBytes(const std::string& bytes)
{
    if constexpr (std::is_same_v<typename TString::value_type, char>)
        return bytes;
    else
        return BxStringConvert::AnsiToWide(bytes);
}

template <class T, class V>
T checkedNarrow(V value)
{
    if constexpr (std::is_signed_v<T>) {
        if (static_cast<V>(static_cast<T>(value)) != value)
            BX_THROW(BxExceptionStream, c_operator, "number out of range: " + std::to_string(value));
    } else {
        if ((value & std::numeric_limits<T>::max()) != value)
            BX_THROW(BxExceptionStream, c_operator, "number out of range: " + std::to_string(value));
    }
    return static_cast<T>(value);
}

}  // namespace

template <class TString>
bool VoStreamReadASCIIT<TString>::isSpace(char c) noexcept
{
    const auto u = static_cast<unsigned char>(c);
    return u <= 32 && ((0x100002600ULL >> u) & 1) != 0;
}

template <class TString>
bool VoStreamReadASCIIT<TString>::isLineBreak(char c) noexcept
{
    return c == 13 || c == 10;
}

template <class TString>
bool VoStreamReadASCIIT<TString>::readWordBytes(std::string& word)
{
    word.clear();
    if (m_endOfStream)
        BX_THROW(BxExceptionStream, c_readWord, "read past the end of the data");
    char c;
    do {
        if (read(c)) {
            m_endOfStream = true;
            BX_THROW(BxExceptionStream, c_readWord, "read past the end of the data");
        }
    } while (isSpace(c));
    for (;;) {
        word += c;
        if (read(c)) {
            m_endOfStream = true;
            return true;
        }
        if (isSpace(c))
            return false;
    }
}

template <class TString>
bool VoStreamReadASCIIT<TString>::readWord(TString& word)
{
    std::string bytes;
    const bool atEnd = readWordBytes(bytes);
    word = fromBytes<TString>(bytes);
    return atEnd;
}

// Parses like the original platform's 32-bit strtol: base 10, the whole word,
// saturating at the 32-bit limits.
template <class TString>
std::int32_t VoStreamReadASCIIT<TString>::readInt()
{
    std::string word;
    readWordBytes(word);
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(word.c_str(), &end, 10);
    if (end != word.c_str() + word.size())
        BX_THROW(BxExceptionStream, c_readInt, "not a number: " + word);
    if (value > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

// Parses like the original platform's 32-bit strtoul: base 10, the whole word,
// a leading '-' negates modulo 2^32, and magnitudes beyond 32 bits give 0xFFFFFFFF.
template <class TString>
std::uint32_t VoStreamReadASCIIT<TString>::readUInt()
{
    std::string word;
    readWordBytes(word);
    char* end = nullptr;
    errno = 0;
    const unsigned long long parsed = std::strtoull(word.c_str(), &end, 10);
    if (end != word.c_str() + word.size())
        BX_THROW(BxExceptionStream, c_readUInt, "not a number: " + word);
    const bool negative = word.find('-') != std::string::npos;
    const unsigned long long magnitude = negative ? 0 - parsed : parsed;
    if (errno == ERANGE || magnitude > std::numeric_limits<std::uint32_t>::max())
        return std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(negative ? 0u - static_cast<std::uint32_t>(magnitude) : magnitude);
}

template <class TString>
std::int64_t VoStreamReadASCIIT<TString>::readInt64()
{
    std::string word;
    readWordBytes(word);
    long long value = 0;
    if (std::sscanf(word.c_str(), "%lli", &value) != 1)
        BX_THROW(BxExceptionStream, c_operator, "not a number: " + word);
    return value;
}

template <class TString>
std::uint64_t VoStreamReadASCIIT<TString>::readUInt64()
{
    std::string word;
    readWordBytes(word);
    unsigned long long value = 0;
    if (std::sscanf(word.c_str(), "%llu", &value) != 1)
        BX_THROW(BxExceptionStream, c_operator, "not a number: " + word);
    return value;
}

template <class TString>
double VoStreamReadASCIIT<TString>::readDouble()
{
    std::string word;
    readWordBytes(word);
    char* end = nullptr;
    const double value = std::strtod(word.c_str(), &end);
    if (end != word.c_str() + word.size())
        BX_THROW(BxExceptionStream, c_operator, "not a number: " + word);
    return value;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(bool& value)
{
    std::string word;
    readWordBytes(word);
    if (word == "true")
        value = true;
    else if (word == "false")
        value = false;
    else
        BX_THROW(BxExceptionStream, c_operator, "not a boolean: " + word);
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(char& value)
{
    if (read(value)) {
        m_endOfStream = true;
        BX_THROW(BxExceptionStream, c_operator, "read past the end of the data");
    }
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(signed char& value)
{
    value = checkedNarrow<signed char>(readInt());
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(unsigned char& value)
{
    value = checkedNarrow<unsigned char>(readUInt());
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(short& value)
{
    value = checkedNarrow<short>(readInt());
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(unsigned short& value)
{
    value = checkedNarrow<unsigned short>(readUInt());
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(int& value)
{
    value = readInt();  // the 32-bit form is not range-checked
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(unsigned int& value)
{
    value = checkedNarrow<unsigned int>(readUInt());
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(long& value)
{
    value = readInt64();
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(unsigned long& value)
{
    value = readUInt64();
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(long long& value)
{
    value = readInt64();
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(unsigned long long& value)
{
    value = readUInt64();
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(float& value)
{
    const double parsed = readDouble();
    // A finite number beyond float's range has no float value: refused like
    // any other number out of range (infinities and NaN carry over).
    if (std::isfinite(parsed) && std::fabs(parsed) > std::numeric_limits<float>::max())
        BX_THROW(BxExceptionStream, c_operator, "number out of range for float: " + std::to_string(parsed));
    value = static_cast<float>(parsed);
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(double& value)
{
    value = readDouble();
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(TString& word)
{
    readWord(word);
    return *this;
}

template <class TString>
VoStreamReadASCIIT<TString>& VoStreamReadASCIIT<TString>::operator>>(SLine line)
{
    if (m_endOfStream)
        BX_THROW(BxExceptionStream, c_operator, "read past the end of the data");
    constexpr std::size_t c_bufferSize = 128;
    constexpr std::size_t c_chunkSize = 126;
    std::string bytes;
    bool lineEnd = false;
    while (!lineEnd && !m_endOfStream) {
        char buffer[c_bufferSize];
        std::size_t n = 0;
        while (n < c_chunkSize) {
            char c;
            if (read(c)) {
                m_endOfStream = true;
                break;
            }
            if (c == 10) {
                lineEnd = true;
                break;
            }
            buffer[n++] = c;
        }
        bytes.append(buffer, n);
    }
    if (!bytes.empty() && bytes.back() == 13)
        bytes.pop_back();
    line.text = fromBytes<TString>(bytes);
    return *this;
}

template class VoStreamReadASCIIT<std::string>;
template class VoStreamReadASCIIT<std::wstring>;
