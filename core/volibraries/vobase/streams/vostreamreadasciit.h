// Token reader for text: words, numbers, booleans and whole lines.
//
//   VoStreamReadASCIIStringT<CStringA> in("12 -7 true\r\nrest of the line\n");
//   int a; long long b; bool c; CStringA line;
//   in >> a >> b >> c;
//   in >> VoStreamReadASCIIT<CStringA>::Line(line);   // "" (the end of the first line)
//
// White space is exactly tab, line feed, carriage return and space (vertical
// tab and form feed are not). A word ends at one white-space byte, which is
// consumed, or at the end of the data, which sets the end-of-stream flag.
// Once the flag is set, every further word, number or line read throws
// BxExceptionStream; so does a bad number, a number out of its type's range
// and a boolean other than "true" or "false".
//
// Numbers are read as the original platform read them: 8- and 16-bit values
// and unsigned 32-bit values with strtol/strtoul in base 10 on the whole word
// and a range check (a signed 32-bit value is not range-checked and saturates
// as a 32-bit strtol does); 64-bit values with sscanf "%lli" / "%llu", which
// also accept hexadecimal and octal prefixes and ignore trailing characters.
// Floating-point values need the whole word to parse with strtod; a finite
// value beyond float's range read as a float is out of range too.
//
// For a wide TString the bytes are read as Windows-1252 text.
//
// A concrete reader supplies read(char&).
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamread.h>
#include <bxbase/bxtypes.h>

#include <cstdint>
#include <string>

/// Token reader for text: words, numbers, booleans and whole lines.
template <class TString>
class VOBASE_API VoStreamReadASCIIT : public BxStreamRead
{
public:
    using string_type = TString;

    /// Wraps a string so that operator>> reads a whole line into it.
    struct SLine {
        TString& text;
    };
    /// The line target for operator>>.
    static SLine Line(TString& text) noexcept { return SLine{text}; }

    /// True once the byte source has run dry.
    bool IsEndOfStream() const noexcept { return m_endOfStream; }

    VoStreamReadASCIIT& operator>>(bool& value);
    /// One raw byte (white space included); throws at the end of the data.
    VoStreamReadASCIIT& operator>>(char& value);
    VoStreamReadASCIIT& operator>>(signed char& value);
    VoStreamReadASCIIT& operator>>(unsigned char& value);
    VoStreamReadASCIIT& operator>>(short& value);
    VoStreamReadASCIIT& operator>>(unsigned short& value);
    VoStreamReadASCIIT& operator>>(int& value);
    VoStreamReadASCIIT& operator>>(unsigned int& value);
    /// 64-bit (long is 64 bits wide here, and std::int64_t is long).
    VoStreamReadASCIIT& operator>>(long& value);
    VoStreamReadASCIIT& operator>>(unsigned long& value);
    VoStreamReadASCIIT& operator>>(long long& value);
    VoStreamReadASCIIT& operator>>(unsigned long long& value);
    VoStreamReadASCIIT& operator>>(float& value);
    VoStreamReadASCIIT& operator>>(double& value);
    /// One word.
    VoStreamReadASCIIT& operator>>(TString& word);
    /// One line, without its LF or CR LF ending; lines of any length.
    VoStreamReadASCIIT& operator>>(SLine line);

protected:
    VoStreamReadASCIIT() = default;

    /// Delivers the next byte in `c` and returns false, or returns true when
    /// no byte is available.
    virtual bool read(char& c) = 0;

private:
    bool readWord(TString& word);
    bool readWordBytes(std::string& word);
    std::int32_t readInt();
    std::uint32_t readUInt();
    std::int64_t readInt64();
    std::uint64_t readUInt64();
    double readDouble();
    static bool isSpace(char c) noexcept;
    static bool isLineBreak(char c) noexcept;

    bool m_endOfStream = false;
};

extern template class VoStreamReadASCIIT<std::string>;
extern template class VoStreamReadASCIIT<std::wstring>;
