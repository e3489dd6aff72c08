#include <vobase/streams/vostreamreadasciistringt.h>

#include <bxbase/bxstringconvert.h>

#include <type_traits>

template <class TString>
VoStreamReadASCIIStringT<TString>::VoStreamReadASCIIStringT(const TString& text)
{
    if constexpr (std::is_same_v<typename TString::value_type, char>)
        m_bytes = text;
    else
        m_bytes = BxStringConvert::WideToAnsi(text);
}

template <class TString>
bool VoStreamReadASCIIStringT<TString>::read(char& c)
{
    if (m_position == m_bytes.size())
        return true;
    c = m_bytes[m_position++];
    return false;
}

template class VoStreamReadASCIIStringT<std::string>;
template class VoStreamReadASCIIStringT<std::wstring>;
