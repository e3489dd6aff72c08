// A 128-bit unique identifier with a lazily built, upper-case text form of
// string type T (narrow std::string or wide std::wstring).
//
//   VoUniqueIdT<std::wstring> id;                 // a fresh random identifier
//   const std::wstring& text = id;                // "1B4E28BA-2FA1-11D2-883F-0016D3CCA427"
//   VoUniqueIdT<std::wstring> same(text.c_str());
//   bool equal = (id == same);                    // true
//   std::unordered_set<VoUniqueIdT<std::string>> ids;
//
// The text cache is empty until first asked for; it is built once, under one
// process-wide critical section shared by every instantiation, and cleared
// whenever the GUID changes (assignment, Renew, reading from a stream).
// Reading an identifier while another thread renews it is not guarded.
//
// Ordering compares Data1, then Data2, then the eight Data4 bytes read as one
// little-endian u64. Data3 takes no part in the ordering, on purpose: two
// identifiers that differ only in Data3 are neither less nor greater than each
// other, yet not equal (== compares all 16 bytes).
//
// Binary form (16 bytes): Data1 as u32, Data2 and Data3 as u16, then the eight
// Data4 bytes.
//
// Test mode (EnableTestMode(true), process-wide, set before use) makes new
// identifiers deterministic: Data1 0x7E57DA7A, Data2 and Data3 0x1234, Data4 the
// eight characters that "%8d" makes of a process-wide counter.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxtypes.h>
#include <bxbase/bxuuid.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

class BxStreamReadBinary;
class BxStreamWriteBinary;

/// A 128-bit unique identifier with a lazily built, upper-case text form of string type T (narrow std::string or
/// wide std::wstring).
template <class T>
class VOBASE_API VoUniqueIdT
{
public:
    /// The character type of the text form (char or wchar_t).
    using char_type = typename T::value_type;

    /// A fresh identifier (see Renew).
    VoUniqueIdT();
    /// The invalid identifier (all zero).
    VoUniqueIdT(std::nullptr_t) noexcept;
    /// The given GUID.
    VoUniqueIdT(const _GUID& guid) noexcept;
    /// Parses the 8-4-4-4-12 form (either case); other text gives the invalid identifier.
    VoUniqueIdT(const T& text);
    /// Parses the 8-4-4-4-12 form; null or other text gives the invalid identifier.
    VoUniqueIdT(const char_type* text);
    /// The same GUID; the text form is copied when `other` has built it.
    VoUniqueIdT(const VoUniqueIdT& other);
    /// The same GUID; takes over the text form, leaving `other` with its GUID
    /// and an empty text cache.
    VoUniqueIdT(VoUniqueIdT&& other) noexcept;

    /// Makes this the invalid identifier (as Invalidate).
    VoUniqueIdT& operator=(std::nullptr_t) noexcept;
    /// Takes the given GUID and empties the text cache.
    VoUniqueIdT& operator=(const _GUID& guid) noexcept;
    /// Parses the 8-4-4-4-12 form (either case); other text gives the invalid identifier.
    VoUniqueIdT& operator=(const T& text);
    /// Parses the 8-4-4-4-12 form; null or other text gives the invalid identifier.
    VoUniqueIdT& operator=(const char_type* text);
    /// Takes the GUID of `other`, and its text form when built.
    VoUniqueIdT& operator=(const VoUniqueIdT& other);
    /// Takes the GUID and the text form of `other`, leaving `other` with its
    /// GUID and an empty text cache.
    VoUniqueIdT& operator=(VoUniqueIdT&& other) noexcept;

    /// Makes a new identifier (random, or deterministic in test mode).
    void Renew();
    /// Makes this the invalid identifier.
    void Invalidate() noexcept;
    /// False for the invalid identifier, otherwise true when the text form is non-empty.
    bool IsValid() const;
    /// True for the invalid identifier or when the text form is empty.
    bool IsInvalid() const;
    /// True when the platform's parse accepts the text.
    static bool IsValid(const T& text);
    /// The same for a C string; false for null.
    static bool IsValid(const char_type* text);

    /// The 16-byte GUID itself.
    operator const _GUID&() const noexcept { return m_guid; }
    /// The upper-case text form, built on first use.
    operator const T&() const;

    /// True when all 16 bytes are equal.
    bool operator==(const VoUniqueIdT& other) const noexcept { return m_guid == other.m_guid; }
    /// True when any of the 16 bytes differs.
    bool operator!=(const VoUniqueIdT& other) const noexcept { return !(m_guid == other.m_guid); }
    /// Ordered by Data1, then Data2, then Data4 as a little-endian u64; Data3
    /// takes no part (see the top of this file).
    bool operator<(const VoUniqueIdT& other) const noexcept { return less(m_guid, other.m_guid); }
    /// Not greater than `other` in the same ordering (Data3 ignored).
    bool operator<=(const VoUniqueIdT& other) const noexcept { return !less(other.m_guid, m_guid); }
    /// Greater than `other` in the same ordering (Data3 ignored).
    bool operator>(const VoUniqueIdT& other) const noexcept { return less(other.m_guid, m_guid); }
    /// Not less than `other` in the same ordering (Data3 ignored).
    bool operator>=(const VoUniqueIdT& other) const noexcept { return !less(m_guid, other.m_guid); }
    /// True when all 16 bytes equal the GUID's.
    bool operator==(const _GUID& other) const noexcept { return m_guid == other; }
    /// True when any of the 16 bytes differs from the GUID's.
    bool operator!=(const _GUID& other) const noexcept { return !(m_guid == other); }
    /// Less than the GUID in the identifiers' ordering (Data3 ignored).
    bool operator<(const _GUID& other) const noexcept { return less(m_guid, other); }
    /// Not greater than the GUID in the identifiers' ordering (Data3 ignored).
    bool operator<=(const _GUID& other) const noexcept { return !less(other, m_guid); }
    /// Greater than the GUID in the identifiers' ordering (Data3 ignored).
    bool operator>(const _GUID& other) const noexcept { return less(other, m_guid); }
    /// Not less than the GUID in the identifiers' ordering (Data3 ignored).
    bool operator>=(const _GUID& other) const noexcept { return !less(m_guid, other); }

    /// The text of a fresh identifier.
    static T GetUniqueID();
    /// The text form of a GUID.
    static T GetUniqueID(const _GUID& guid);
    /// The text form of an identifier.
    static T GetUniqueID(const VoUniqueIdT& id);
    /// The one shared invalid identifier of this instantiation.
    static const VoUniqueIdT& GetInvalidID();
    /// Switches the process-wide test mode (deterministic identifiers) on or off.
    static void EnableTestMode(bool enable) noexcept;

    /// Writes the 16-byte binary form.
    void Serialize(BxStreamWriteBinary& stream) const;
    /// Reads the 16-byte binary form and empties the text cache.
    void Serialize(BxStreamReadBinary& stream);

private:
    static bool less(const _GUID& a, const _GUID& b) noexcept;
    void setGuid(const _GUID& guid) noexcept;
    void parse(const char_type* text) noexcept;

    _GUID m_guid;
    /// The text cache; written once under the process-wide text lock.
    mutable T m_text;
    /// Set (release) after m_text is filled, so that a reader may skip the lock.
    mutable std::atomic<bool> m_hasText{false};
};

extern template class VoUniqueIdT<std::string>;
extern template class VoUniqueIdT<std::wstring>;

/// Hashes identifiers with the platform's UUID hash, so that they can key
/// unordered containers. Identifiers that are == hash alike.
template <class T>
struct std::hash<VoUniqueIdT<T>>
{
    /// The platform's UuidHash of the identifier's GUID.
    std::size_t operator()(const VoUniqueIdT<T>& id) const noexcept
    {
        RPC_STATUS status;
        return UuidHash(&static_cast<const _GUID&>(id), &status);
    }
};
