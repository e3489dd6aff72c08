#include <bxbase/bxstreamwriteasciit.h>

#include <charconv>

namespace {

template <class T>
void format(T value, char (&buffer)[64])
{
    auto result = std::to_chars(buffer, buffer + sizeof buffer - 1, value);
    *result.ptr = 0;
}

}  // namespace

template <class TString>
BxStreamWriteASCIIT<TString>& BxStreamWriteASCIIT<TString>::operator<<(long long v)
{
    char buffer[64];
    format(v, buffer);
    write(buffer);
    return *this;
}

template <class TString>
BxStreamWriteASCIIT<TString>& BxStreamWriteASCIIT<TString>::operator<<(unsigned long long v)
{
    char buffer[64];
    format(v, buffer);
    write(buffer);
    return *this;
}

template <class TString>
BxStreamWriteASCIIT<TString>& BxStreamWriteASCIIT<TString>::operator<<(float v)
{
    char buffer[64];
    format(v, buffer);
    write(buffer);
    return *this;
}

template <class TString>
BxStreamWriteASCIIT<TString>& BxStreamWriteASCIIT<TString>::operator<<(double v)
{
    char buffer[64];
    format(v, buffer);
    write(buffer);
    return *this;
}

template class BxStreamWriteASCIIT<std::string>;
template class BxStreamWriteASCIIT<std::wstring>;
