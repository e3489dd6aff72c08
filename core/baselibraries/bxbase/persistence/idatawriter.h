// Writes typed entries by key (see Persistence::ISerializable).
//
//   writer.Write("UInt32VariantType", 2u);
//   writer.Write("Value", 42);
//   writer.WriteObject("Version", version);   // a nested object
//
// Writing a key twice replaces the entry.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <cstdint>
#include <string>

namespace Persistence {

class ISerializable;

/// Writes typed entries by key (see Persistence::ISerializable).
class BXBASE_API IDataWriter
{
public:
    virtual ~IDataWriter() = default;

    /// Writes `value` under `key` as a boolean, replacing an entry of the same key.
    virtual void Write(const std::string& key, bool value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, char value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, signed char value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, unsigned char value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, short value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, unsigned short value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, int value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, unsigned int value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, long long value) = 0;
    /// Writes `value` under `key` as an integer, replacing an entry of the same key.
    virtual void Write(const std::string& key, unsigned long long value) = 0;
    /// Writes `value` under `key` as a number, replacing an entry of the same key.
    virtual void Write(const std::string& key, float value) = 0;
    /// Writes `value` under `key` as a number, replacing an entry of the same key.
    virtual void Write(const std::string& key, double value) = 0;
    /// Writes `value` under `key` as a text (UTF-8), replacing an entry of the same key.
    virtual void Write(const std::string& key, const std::string& value) = 0;
    /// Writes `value` under `key` as a text, replacing an entry of the same key.
    virtual void Write(const std::string& key, const std::wstring& value) = 0;
    /// Writes narrow (UTF-8) text; so that a literal is not taken for a bool.
    /// A null `value` throws BxExceptionPreconditionViolation and writes nothing.
    void Write(const std::string& key, const char* value) { Write(key, std::string(checkedText(value))); }
    /// Writes wide text; so that a literal is not taken for a bool.
    /// A null `value` throws BxExceptionPreconditionViolation and writes nothing.
    void Write(const std::string& key, const wchar_t* value) { Write(key, std::wstring(checkedText(value))); }

    /// Writes `object`'s entries as a nested object under `key`.
    virtual void WriteObject(const std::string& key, const ISerializable& object) = 0;

private:
    template <typename Char>
    static const Char* checkedText(const Char* value)
    {
        if (value == nullptr)
            BX_THROW(BxExceptionPreconditionViolation, "Persistence::IDataWriter::Write", "null text");
        return value;
    }
};

}  // namespace Persistence
