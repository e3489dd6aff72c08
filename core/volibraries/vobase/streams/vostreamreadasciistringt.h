// Token reader over a string (see VoStreamReadASCIIT for the rules).
//
//   VoStreamReadASCIIStringT<CStringW> in(L"width 640\nheight 480\n");
//   CStringW key; int value;
//   in >> key >> value;   // L"width", 640
//
// A wide string is read as its Windows-1252 bytes (characters that code page
// cannot hold become '?'), as an ANSI text file holding it would be.
#pragma once

#include <vobase/streams/vostreamreadasciit.h>
#include <vobase/vobaseapi.h>

#include <cstddef>
#include <string>

/// Token reader over a string (see VoStreamReadASCIIT for the rules).
template <class TString>
class VOBASE_API VoStreamReadASCIIStringT : public VoStreamReadASCIIT<TString>
{
public:
    /// Reads a copy of `text`.
    explicit VoStreamReadASCIIStringT(const TString& text);

    /// Bytes not read yet.
    std::size_t GetRemaining() const noexcept { return m_bytes.size() - m_position; }

protected:
    bool read(char& c) override;

private:
    std::string m_bytes;
    std::size_t m_position = 0;
};

extern template class VoStreamReadASCIIStringT<std::string>;
extern template class VoStreamReadASCIIStringT<std::wstring>;
