// Reads typed entries by key (see Persistence::ISerializable).
//
//   unsigned tag;
//   if (!reader.Read("UInt32VariantType", tag)) { ...missing... }
//   reader.ReadRequired("Major", major);   // throws Persistence::CException when missing
//
// Read returns false when the key is absent and throws Persistence::CException
// when the entry exists but does not hold a value of the requested type and
// range.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <cstdint>
#include <string>

namespace Persistence {

class ISerializable;

/// Reads typed entries by key (see Persistence::ISerializable).
class BXBASE_API IDataReader
{
public:
    virtual ~IDataReader() = default;

    /// True when an entry named `key` exists, whatever its type.
    virtual bool Has(const std::string& key) const = 0;

    /// Reads the entry `key` as true or false. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, bool& value) const = 0;
    /// Reads the entry `key` as an integer in char's range. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, char& value) const = 0;
    /// Reads the entry `key` as an integer in -128..127. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, signed char& value) const = 0;
    /// Reads the entry `key` as an integer in 0..255. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, unsigned char& value) const = 0;
    /// Reads the entry `key` as an integer in short's range. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, short& value) const = 0;
    /// Reads the entry `key` as an integer in 0..65535. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, unsigned short& value) const = 0;
    /// Reads the entry `key` as an integer in int's range. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, int& value) const = 0;
    /// Reads the entry `key` as an integer in 0..4294967295. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, unsigned int& value) const = 0;
    /// Reads the entry `key` as an integer in long long's range. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, long long& value) const = 0;
    /// Reads the entry `key` as a non-negative integer. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, unsigned long long& value) const = 0;
    /// Reads the entry `key` as a number in float's range (a stored null reads as NaN). False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, float& value) const = 0;
    /// Reads the entry `key` as a number (a stored null reads as NaN). False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, double& value) const = 0;
    /// Reads the entry `key` as a text, as UTF-8. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, std::string& value) const = 0;
    /// Reads the entry `key` as a text, converted from UTF-8. False (and `value` untouched) when the key is absent; throws
    /// Persistence::CException when the entry holds another type or a value out of range.
    virtual bool Read(const std::string& key, std::wstring& value) const = 0;

    /// Reads the nested object under `key` into `object`; false when absent.
    virtual bool ReadObject(const std::string& key, ISerializable& object) const = 0;

    /// Read, but a missing key throws Persistence::CException.
    template <class T>
    void ReadRequired(const std::string& key, T& value) const;
};

}  // namespace Persistence

#include <bxbase/persistence/cexception.h>

template <class T>
void Persistence::IDataReader::ReadRequired(const std::string& key, T& value) const
{
    if (!Read(key, value))
        throw Persistence::CException(__FILE__, __LINE__, "Persistence::IDataReader::ReadRequired",
                                      "missing entry \"" + key + "\"");
}
