// printf-style formatting into std::wstring with the framework's conventions.
//
//   std::wstring text = BxFormat::Wide(L"task '%s' took %d ms", name.c_str(), ms);
//
// In wide formats "%s" and "%c" take wide arguments (wchar_t* and wchar_t),
// as they do in the original platform's wide printf family; "%S" and "%C"
// take narrow ones. "%I64d", "%I64u" and "%I64x" are 64-bit conversions.
// Everything else follows the C library's printf.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <cstdarg>
#include <string>

/// Printf-style formatting into std::wstring with the framework's conventions.
class BXBASE_API BxFormat
{
public:
    /// Formats `format` and the arguments after it with the wide conventions above; a null format gives an empty
    /// text. Does not throw on a bad conversion: the C library's failure leaves the translated format as the result.
    static std::wstring Wide(const wchar_t* format, ...);
    /// Wide() for an argument list that the caller has started (`va_start`) and ends (`va_end`) itself, for
    /// functions that forward their own variable arguments (the loggers do).
    static std::wstring WideV(const wchar_t* format, va_list arguments);
    /// Formats with the C library's printf rules unchanged (narrow "%s" takes char*); a null format or an output
    /// error gives an empty text.
    static std::string Narrow(const char* format, ...);
    /// Narrow() for an argument list that the caller has started (`va_start`) and ends (`va_end`) itself.
    static std::string NarrowV(const char* format, va_list arguments);

    /// Rewrites a wide format of the original conventions into the C library's.
    static std::wstring TranslateWideFormat(const wchar_t* format);
};
