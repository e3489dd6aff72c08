// The Win32-style thread and process functions the framework relies on.
//
//   DWORD me = GetCurrentThreadId();                  // the kernel thread id (gettid)
//   DWORD_PTR processMask = 0, systemMask = 0;
//   if (GetProcessAffinityMask(GetCurrentProcess(), &processMask, &systemMask))
//       thread.SetAffinityMask(processMask);
//
//   if (!PostMessageW(hwnd, WM_USER, 0, 0))
//       log(GetLastError());                          // this thread's latest error code
//
// Affinity masks have one bit per CPU, CPU 0 in bit 0; CPUs from 64 on cannot
// be named in a mask.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxtypes.h>

#include <cstdint>

using HANDLE = void*;
using DWORD_PTR = std::uintptr_t;

/// Error codes set by the framework's Win32-style functions (GetLastError).
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_THREAD_ID = 1444;

/// Exit code of a thread that has not ended yet.
inline constexpr DWORD STILL_ACTIVE = 259;

/// The calling thread's kernel id (gettid), never 0.
BXBASE_API DWORD GetCurrentThreadId();

/// Pseudo handle of the current process, accepted by GetProcessAffinityMask.
BXBASE_API HANDLE GetCurrentProcess();

/// The CPUs the process may run on and the CPUs of the system. Only the
/// handle of GetCurrentProcess is known; any other handle or a null pointer
/// gives FALSE with ERROR_INVALID_HANDLE or ERROR_INVALID_PARAMETER.
BXBASE_API BOOL GetProcessAffinityMask(HANDLE process, DWORD_PTR* processMask, DWORD_PTR* systemMask);

/// The calling thread's latest error code, as the last failing framework call set it.
BXBASE_API DWORD GetLastError();
/// Sets the calling thread's latest error code.
BXBASE_API void SetLastError(DWORD error);
