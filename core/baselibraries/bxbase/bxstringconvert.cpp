#include <bxbase/bxstringconvert.h>
#include <bxbase/bxexceptionstream.h>

#include <array>
#include <cstdint>

namespace {

constexpr char32_t c_replacement = 0xFFFD;

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Decodes one UTF-8 sequence at text[i]; advances i. Returns false when the
// sequence is malformed (then i has moved past the bad byte).
bool decodeUtf8(std::string_view text, std::size_t& i, char32_t& out)
{
    const auto b0 = static_cast<unsigned char>(text[i++]);
    if (b0 < 0x80) {
        out = b0;
        return true;
    }
    int extra;
    char32_t min;
    if ((b0 & 0xE0) == 0xC0) { extra = 1; out = b0 & 0x1F; min = 0x80; }
    else if ((b0 & 0xF0) == 0xE0) { extra = 2; out = b0 & 0x0F; min = 0x800; }
    else if ((b0 & 0xF8) == 0xF0) { extra = 3; out = b0 & 0x07; min = 0x10000; }
    else return false;
    for (int k = 0; k < extra; ++k) {
        if (i >= text.size())
            return false;
        const auto b = static_cast<unsigned char>(text[i]);
        if ((b & 0xC0) != 0x80)
            return false;
        out = (out << 6) | (b & 0x3F);
        ++i;
    }
    return out >= min && out <= 0x10FFFF && !isSurrogate(out);
}

void encodeUtf8(char32_t c, std::string& out)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

bool validScalar(char32_t c) { return c <= 0x10FFFF && !isSurrogate(c); }

[[noreturn]] void fail(const char* function, const char* what)
{
    throw BxExceptionStream(__FILE__, __LINE__, function, what);
}

std::string wideToUtf8(std::wstring_view text, bool lossy)
{
    std::string out;
    out.reserve(text.size());
    for (wchar_t w : text) {
        auto c = static_cast<char32_t>(w);
        if (!validScalar(c)) {
            if (!lossy)
                fail("BxStringConvert::WideToUtf8", "invalid code point");
            c = c_replacement;
        }
        encodeUtf8(c, out);
    }
    return out;
}

// `function` names the public conversion in the exception.
std::wstring utf8ToWide(std::string_view text, bool lossy, const char* function = "BxStringConvert::Utf8ToWide")
{
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        char32_t c;
        if (!decodeUtf8(text, i, c)) {
            if (!lossy)
                fail(function, "malformed UTF-8");
            c = c_replacement;
        }
        out += static_cast<wchar_t>(c);
    }
    return out;
}

// Windows-1252 bytes 0x80..0x9F; the unassigned ones map to the C1 control of the same value.
constexpr std::array<char16_t, 32> c_cp1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char toAnsi(char32_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    for (std::size_t k = 0; k < c_cp1252High.size(); ++k)
        if (c_cp1252High[k] == c)
            return static_cast<char>(0x80 + k);
    return '?';
}

// `function` names the public conversion in the exception.
std::wstring utf16ToWide(std::u16string_view text, const char* function)
{
    std::wstring out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t u = text[i];
        if (u >= 0xD800 && u <= 0xDBFF) {
            if (i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF)
                fail(function, "unpaired surrogate");
            const char32_t c = 0x10000 + ((char32_t(u) - 0xD800) << 10) + (char32_t(text[i + 1]) - 0xDC00);
            out += static_cast<wchar_t>(c);
            ++i;
        } else if (u >= 0xDC00 && u <= 0xDFFF) {
            fail(function, "unpaired surrogate");
        } else {
            out += static_cast<wchar_t>(u);
        }
    }
    return out;
}

}  // namespace

std::string BxStringConvert::WideToUtf8(std::wstring_view text) { return wideToUtf8(text, false); }
std::wstring BxStringConvert::Utf8ToWide(std::string_view text) { return utf8ToWide(text, false); }
std::string BxStringConvert::WideToUtf8Lossy(std::wstring_view text) { return wideToUtf8(text, true); }
std::wstring BxStringConvert::Utf8ToWideLossy(std::string_view text) { return utf8ToWide(text, true); }

std::u16string BxStringConvert::WideToUtf16(std::wstring_view text)
{
    std::u16string out;
    out.reserve(text.size());
    for (wchar_t w : text) {
        const auto c = static_cast<char32_t>(w);
        if (!validScalar(c))
            fail("BxStringConvert::WideToUtf16", "invalid code point");
        if (c < 0x10000) {
            out += static_cast<char16_t>(c);
        } else {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return out;
}

std::wstring BxStringConvert::Utf16ToWide(std::u16string_view text)
{
    return utf16ToWide(text, "BxStringConvert::Utf16ToWide");
}

std::string BxStringConvert::Utf16ToUtf8(std::u16string_view text)
{
    return WideToUtf8(utf16ToWide(text, "BxStringConvert::Utf16ToUtf8"));
}

std::u16string BxStringConvert::Utf8ToUtf16(std::string_view text)
{
    return WideToUtf16(utf8ToWide(text, false, "BxStringConvert::Utf8ToUtf16"));
}

std::string BxStringConvert::WideToAnsi(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (wchar_t w : text)
        out += toAnsi(static_cast<char32_t>(w));
    return out;
}

std::wstring BxStringConvert::AnsiToWide(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    for (char ch : text) {
        const auto b = static_cast<unsigned char>(ch);
        out += (b >= 0x80 && b < 0xA0) ? static_cast<wchar_t>(c_cp1252High[b - 0x80]) : static_cast<wchar_t>(b);
    }
    return out;
}

std::wstring BxStringConvert::ToUpperAscii(std::wstring_view text)
{
    std::wstring out(text);
    for (auto& c : out)
        if (c >= L'a' && c <= L'z')
            c = static_cast<wchar_t>(c - L'a' + L'A');
    return out;
}
