// Text output stream that collects everything in a string.
//
//   BxStreamWriteASCIIStringT<CStringW> out;
//   out << L"count: " << 3;
//   CStringW text = out.GetString();   // L"count: 3"
//
// Narrow text written to a wide stream is read as UTF-8, and wide text written
// to a narrow stream becomes UTF-8.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamwriteasciit.h>

#include <string>

/// Text output stream that collects everything in a string.
template <class TString>
class BXBASE_API BxStreamWriteASCIIStringT : public BxStreamWriteASCIIT<TString>
{
public:
    /// The text written so far.
    const TString& GetString() const noexcept { return m_text; }
    /// Forgets the text written so far.
    void Clear() noexcept { m_text.clear(); }

protected:
    void write(const char* text) override;
    void write(const wchar_t* text) override;

private:
    TString m_text;
};

extern template class BxStreamWriteASCIIStringT<std::string>;
extern template class BxStreamWriteASCIIStringT<std::wstring>;
