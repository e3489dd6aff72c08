// Text conversions between the encodings the framework meets.
//
// Wide text (std::wstring, wchar_t) is UTF-32 on Linux; it crosses byte
// boundaries as UTF-16LE in binary streams and as UTF-8 everywhere else. The
// "ANSI code page" of the original platform is Windows-1252.
//
//   std::string utf8 = BxStringConvert::WideToUtf8(L"Grüße");
//   std::u16string units = BxStringConvert::WideToUtf16(L"€");
//   std::string ansi = BxStringConvert::WideToAnsi(L"5 €, 3 ₽");   // "5 \x80, 3 ?"
//
// The strict conversions throw BxExceptionStream on malformed input (bad
// UTF-8 sequences, unpaired surrogates, code points above U+10FFFF); the
// *Lossy ones replace each malformed part with U+FFFD instead.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <string>
#include <string_view>

/// Text conversions between the encodings the framework meets.
class BXBASE_API BxStringConvert
{
public:
    /// Wide text to UTF-8; throws BxExceptionStream on a surrogate or a value above U+10FFFF.
    static std::string WideToUtf8(std::wstring_view text);
    /// UTF-8 to wide text; throws BxExceptionStream on a malformed or overlong sequence.
    static std::wstring Utf8ToWide(std::string_view text);
    /// As WideToUtf8, but each invalid character becomes U+FFFD; never throws on content. Used where text must get
    /// through no matter what (exception messages, logs).
    static std::string WideToUtf8Lossy(std::wstring_view text);
    /// As Utf8ToWide, but each malformed sequence becomes U+FFFD; never throws on content.
    static std::wstring Utf8ToWideLossy(std::string_view text);

    /// Wide text to UTF-16 code units (characters above U+FFFF become surrogate pairs), the form binary streams
    /// store; throws BxExceptionStream on a surrogate or a value above U+10FFFF.
    static std::u16string WideToUtf16(std::wstring_view text);
    /// UTF-16 code units to wide text, joining surrogate pairs; throws BxExceptionStream on an unpaired surrogate.
    static std::wstring Utf16ToWide(std::u16string_view text);

    /// UTF-16 code units to UTF-8; throws BxExceptionStream on an unpaired surrogate.
    static std::string Utf16ToUtf8(std::u16string_view text);
    /// UTF-8 to UTF-16 code units; throws BxExceptionStream on malformed UTF-8.
    static std::u16string Utf8ToUtf16(std::string_view text);

    /// Windows-1252, one byte per character; characters it cannot hold become '?'.
    static std::string WideToAnsi(std::wstring_view text);
    /// Every byte maps to one character (the five unassigned bytes to U+0081,
    /// U+008D, U+008F, U+0090, U+009D, as Windows does).
    static std::wstring AnsiToWide(std::string_view text);

    /// Upper case of ASCII letters only; other characters are kept.
    static std::wstring ToUpperAscii(std::wstring_view text);
};
