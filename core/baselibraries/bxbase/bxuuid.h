// 128-bit unique identifiers with the Windows field layout and the platform
// functions that make, format, parse and hash them.
//
//   _GUID id;
//   UuidCreate(&id);                         // random, version 4
//   std::wstring text;
//   UuidToStringW(&id, text);                // "1b4e28ba-2fa1-11d2-883f-0016d3cca427"
//   _GUID back;
//   bool ok = UuidFromStringW(text.c_str(), &back) == RPC_S_OK;
//
// The text form is made from the fields (Data1, Data2, Data3, Data4), not
// from memory order, and always has lower-case digits; parsing accepts exactly
// the 8-4-4-4-12 form in either case, without braces.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <algorithm>
#include <cstdint>
#include <string>

/// A 128-bit identifier in the Windows field layout (16 bytes, no padding); an aggregate, all zero when
/// value-initialised. Equality compares all 16 bytes.
struct _GUID
{
    std::uint32_t Data1;   ///< First group of the text form: 8 hex digits.
    std::uint16_t Data2;   ///< Second group: 4 hex digits.
    std::uint16_t Data3;   ///< Third group: 4 hex digits (the version nibble at the top).
    std::uint8_t Data4[8]; ///< Fourth group (bytes 0 and 1, variant bits at the top of byte 0) and the last 12 digits.

    friend bool operator==(const _GUID& a, const _GUID& b) noexcept
    {
        return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
               std::equal(a.Data4, a.Data4 + 8, b.Data4);
    }
};
using GUID = _GUID;
using UUID = _GUID;

using RPC_STATUS = std::int32_t;
inline constexpr RPC_STATUS RPC_S_OK = 0;
inline constexpr RPC_STATUS RPC_S_INVALID_STRING_UUID = 1705;

/// Makes a random (version 4, variant 1) identifier. Always RPC_S_OK.
BXBASE_API RPC_STATUS UuidCreate(_GUID* uuid);
/// Formats the identifier as lower-case 8-4-4-4-12 hex.
BXBASE_API RPC_STATUS UuidToStringW(const _GUID* uuid, std::wstring& text);
/// Parses the 8-4-4-4-12 form (either case); RPC_S_INVALID_STRING_UUID otherwise.
BXBASE_API RPC_STATUS UuidFromStringW(const wchar_t* text, _GUID* uuid);
/// The narrow twin of UuidFromStringW.
BXBASE_API RPC_STATUS UuidFromStringA(const char* text, _GUID* uuid);
/// A 16-bit hash of the 16 bytes.
BXBASE_API unsigned short UuidHash(const _GUID* uuid, RPC_STATUS* status);
