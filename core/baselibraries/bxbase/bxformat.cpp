#include <bxbase/bxformat.h>

#include <cstdio>
#include <cwchar>
#include <vector>

std::wstring BxFormat::TranslateWideFormat(const wchar_t* format)
{
    std::wstring out;
    for (const wchar_t* p = format; *p; ++p) {
        out += *p;
        if (*p != L'%')
            continue;
        ++p;
        if (*p == L'%') {
            out += *p;
            continue;
        }
        // flags, width, precision
        while (*p && std::wcschr(L"-+ #0123456789.*", *p))
            out += *p++;
        bool hasLength = false;
        if (p[0] == L'I' && p[1] == L'6' && p[2] == L'4') {
            out += L"ll";
            p += 3;
            hasLength = true;
        }
        while (*p && std::wcschr(L"hlLqjzt", *p)) {
            out += *p++;
            hasLength = true;
        }
        if (!*p)
            break;
        if (!hasLength && (*p == L's' || *p == L'c'))
            out += L'l';
        if (*p == L'S' || *p == L'C')
            out += static_cast<wchar_t>(*p - L'A' + L'a');
        else
            out += *p;
    }
    return out;
}

std::wstring BxFormat::WideV(const wchar_t* format, va_list arguments)
{
    if (!format)
        return {};
    const std::wstring translated = TranslateWideFormat(format);
    std::vector<wchar_t> buffer(256);
    for (;;) {
        va_list copy;
        va_copy(copy, arguments);
        const int written = std::vswprintf(buffer.data(), buffer.size(), translated.c_str(), copy);
        va_end(copy);
        if (written >= 0 && static_cast<std::size_t>(written) < buffer.size())
            return std::wstring(buffer.data(), static_cast<std::size_t>(written));
        // vswprintf does not say how much room it needs; it also fails on
        // characters it cannot convert, so give up past a sane size.
        if (buffer.size() >= (std::size_t(1) << 24))
            return translated;
        buffer.resize(buffer.size() * 4);
    }
}

std::wstring BxFormat::Wide(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::wstring text = WideV(format, arguments);
    va_end(arguments);
    return text;
}

std::string BxFormat::NarrowV(const char* format, va_list arguments)
{
    if (!format)
        return {};
    va_list copy;
    va_copy(copy, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (size <= 0)
        return {};
    std::string text(static_cast<std::size_t>(size), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

std::string BxFormat::Narrow(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = NarrowV(format, arguments);
    va_end(arguments);
    return text;
}
