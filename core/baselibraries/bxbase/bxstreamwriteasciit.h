// Abstract text output stream.
//
//   void CNode::dump(BxStreamWriteASCIIT<CStringW>& out) const {
//       out << L"node " << m_name << L" has " << m_count << L" children\n";
//   }
//
// TString names the text type the stream is meant for (narrow or wide); both
// narrow and wide text can be written to either kind. A concrete stream
// overrides the two protected write() operations, which receive
// null-terminated text. Numbers are written in their shortest decimal form
// (floating point round-trips exactly), booleans as "true" and "false".
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxstreamwrite.h>

#include <string>

/// Abstract text output stream.
template <class TString>
class BXBASE_API BxStreamWriteASCIIT : public BxStreamWrite
{
public:
    /// The text type the stream is meant for.
    using string_type = TString;

    /// @name Writing values as text
    /// Each operator writes its value and returns the stream: text and
    /// characters as they are (a null pointer writes nothing), booleans as
    /// "true" or "false", numbers in their shortest decimal form.
    //@{
    /// Writes narrow (UTF-8) text as it is; a null pointer writes nothing.
    BxStreamWriteASCIIT& operator<<(const char* text) { write(text ? text : ""); return *this; }
    /// Writes wide text as it is; a null pointer writes nothing.
    BxStreamWriteASCIIT& operator<<(const wchar_t* text) { write(text ? text : L""); return *this; }
    /// Writes narrow (UTF-8) text up to its first null character.
    BxStreamWriteASCIIT& operator<<(const std::string& text) { write(text.c_str()); return *this; }
    /// Writes wide text up to its first null character.
    BxStreamWriteASCIIT& operator<<(const std::wstring& text) { write(text.c_str()); return *this; }
    /// Writes one narrow character.
    BxStreamWriteASCIIT& operator<<(char c) { const char t[2] = {c, 0}; write(t); return *this; }
    /// Writes one wide character.
    BxStreamWriteASCIIT& operator<<(wchar_t c) { const wchar_t t[2] = {c, 0}; write(t); return *this; }
    /// Writes "true" or "false".
    BxStreamWriteASCIIT& operator<<(bool v) { write(v ? "true" : "false"); return *this; }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(short v) { return *this << static_cast<long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(unsigned short v) { return *this << static_cast<unsigned long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(int v) { return *this << static_cast<long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(unsigned int v) { return *this << static_cast<unsigned long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(long v) { return *this << static_cast<long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(unsigned long v) { return *this << static_cast<unsigned long long>(v); }
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(long long v);
    /// Writes the number in decimal.
    BxStreamWriteASCIIT& operator<<(unsigned long long v);
    /// Writes the shortest decimal form that reads back as the same float ("0.1", "1e+20", "inf", "nan").
    BxStreamWriteASCIIT& operator<<(float v);
    /// Writes the shortest decimal form that reads back as the same double ("0.1", "1e+100", "inf", "nan").
    BxStreamWriteASCIIT& operator<<(double v);
    //@}

protected:
    /// Writes null-terminated narrow text.
    virtual void write(const char* text) = 0;
    /// Writes null-terminated wide text.
    virtual void write(const wchar_t* text) = 0;
};

extern template class BxStreamWriteASCIIT<std::string>;
extern template class BxStreamWriteASCIIT<std::wstring>;
