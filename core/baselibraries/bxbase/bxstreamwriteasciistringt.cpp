#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstringconvert.h>

#include <cwchar>
#include <cstring>

template <class TString>
void BxStreamWriteASCIIStringT<TString>::write(const char* text)
{
    if constexpr (sizeof(typename TString::value_type) == 1) {
        m_text += text;
    } else {
        // Dumps are mostly ASCII: append it directly and convert only the rest.
        const std::size_t length = std::strlen(text);
        bool ascii = true;
        for (std::size_t k = 0; k < length && ascii; ++k)
            ascii = static_cast<unsigned char>(text[k]) < 0x80;
        if (ascii)
            m_text.append(text, text + length);
        else
            m_text += BxStringConvert::Utf8ToWideLossy(std::string_view(text, length));
    }
}

template <class TString>
void BxStreamWriteASCIIStringT<TString>::write(const wchar_t* text)
{
    if constexpr (sizeof(typename TString::value_type) == 1)
        m_text += BxStringConvert::WideToUtf8Lossy(text);
    else
        m_text += text;
}

template class BxStreamWriteASCIIStringT<std::string>;
template class BxStreamWriteASCIIStringT<std::wstring>;
