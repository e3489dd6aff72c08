// Fundamental type names shared by the whole framework.
//
// The framework was written against the Windows type names; they map here by
// their Windows width so that binary formats keep their sizes:
// DWORD / unsigned long -> std::uint32_t, long -> std::int32_t.
#pragma once

#include <cstdint>
#include <string>

/// The framework's string class template: a std::basic_string of C.
template <class C>
using CStringT = std::basic_string<C>;

using CStringA = std::string;   ///< narrow text (UTF-8 unless stated otherwise)
using CStringW = std::wstring;  ///< wide text (wchar_t is UTF-32 on Linux)
using CString = std::wstring;   ///< the framework's default string is wide

using DWORD = std::uint32_t;
using BOOL = int;
using HRESULT = std::int32_t;
using LRESULT = std::int64_t;   ///< result of message handling (signed 64-bit)

/// Generic failure code of message handling.
inline constexpr LRESULT E_FAIL = static_cast<std::int32_t>(0x80004005u);
inline constexpr HRESULT S_OK = 0;

/// Wait forever (time-outs are in milliseconds).
inline constexpr DWORD INFINITE = 0xFFFFFFFFu;
