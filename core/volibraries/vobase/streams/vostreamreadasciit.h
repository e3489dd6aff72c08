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
// with strtol/strtoul in base 10 on the whole word and a range check; 32-bit
// values the same way but without the check (a signed one saturates as a
// 32-bit strtol does, an unsigned one gives 0xFFFFFFFF beyond 32 bits);
// 64-bit values with sscanf "%lli" / "%llu", which ignore trailing characters
// ("%lli" also accepts hexadecimal and octal prefixes).
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
    /// The string type that words and lines are read into.
    using string_type = TString;

    /// Wraps a string so that operator>> reads a whole line into it.
    struct SLine {
        /// The string that receives the line (its old content is replaced).
        TString& text;
    };
    /// The line target for operator>>.
    static SLine Line(TString& text) noexcept { return SLine{text}; }

    /// True once the byte source has run dry.
    bool IsEndOfStream() const noexcept { return m_endOfStream; }

    /// A word, "true" or "false" (case-sensitive); any other word throws.
    VoStreamReadASCIIT& operator>>(bool& value);
    /// One raw byte (white space included); throws at the end of the data.
    VoStreamReadASCIIT& operator>>(char& value);
    /// A base-10 number from -128 to 127 (a number, not a character); a value
    /// outside that range throws.
    VoStreamReadASCIIT& operator>>(signed char& value);
    /// A base-10 number from 0 to 255; a value outside that range throws.
    VoStreamReadASCIIT& operator>>(unsigned char& value);
    /// A base-10 number from -32768 to 32767; a value outside that range throws.
    VoStreamReadASCIIT& operator>>(short& value);
    /// A base-10 number from 0 to 65535; a value outside that range throws.
    VoStreamReadASCIIT& operator>>(unsigned short& value);
    /// A base-10 number, not range-checked: it saturates at the 32-bit limits.
    VoStreamReadASCIIT& operator>>(int& value);
    /// A base-10 number, not range-checked: a leading '-' negates modulo 2^32
    /// and a magnitude beyond 32 bits gives 0xFFFFFFFF.
    VoStreamReadASCIIT& operator>>(unsigned int& value);
    /// 64-bit (long is 64 bits wide here, and std::int64_t is long).
    VoStreamReadASCIIT& operator>>(long& value);
    /// 64-bit unsigned, read as unsigned long long.
    VoStreamReadASCIIT& operator>>(unsigned long& value);
    /// A 64-bit number read with "%lli" (decimal, 0x hexadecimal or 0 octal);
    /// characters after the number are ignored, a word without one throws.
    VoStreamReadASCIIT& operator>>(long long& value);
    /// A 64-bit number read with "%llu" (decimal; a leading '-' wraps modulo
    /// 2^64); characters after the number are ignored, a word without one throws.
    VoStreamReadASCIIT& operator>>(unsigned long long& value);
    /// A word that strtod parses whole; a finite value beyond float's range
    /// throws (infinities and NaN are kept).
    VoStreamReadASCIIT& operator>>(float& value);
    /// A word that strtod parses whole ("inf", "nan" and hexadecimal included).
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
