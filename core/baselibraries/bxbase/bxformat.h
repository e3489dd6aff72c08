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
    static std::wstring Wide(const wchar_t* format, ...);
    static std::wstring WideV(const wchar_t* format, va_list arguments);
    static std::string Narrow(const char* format, ...);
    static std::string NarrowV(const char* format, va_list arguments);

    /// Rewrites a wide format of the original conventions into the C library's.
    static std::wstring TranslateWideFormat(const wchar_t* format);
};
