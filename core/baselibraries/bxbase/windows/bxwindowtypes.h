// Types and constants of the message-window layer, named and numbered as in
// Win32 so that code written against the Win32 message API ports as it is.
//
//   LRESULT proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
//   MSG msg;
//   while (GetMessageW(&msg, nullptr, 0, 0) > 0) DispatchMessageW(&msg);
//
// HWND is an opaque handle: it names a window by a slot and a generation, so
// a handle of a destroyed window stays harmless (every call rejects it with
// ERROR_INVALID_WINDOW_HANDLE) and is never reused for another window.
// See bxwindowsapi.h for the functions.
#pragma once

#include <bxbase/bxtypes.h>
#include <bxbase/threading/bxthreadapi.h>

#include <cstdint>

struct HWND__;
using HWND = HWND__*;            ///< opaque window handle; null = no window
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;  ///< module handle (one pseudo handle: GetModuleHandleW(nullptr))
using HMODULE = HINSTANCE;

using UINT = unsigned int;
using WPARAM = std::uint64_t;
using LPARAM = std::int64_t;
using ATOM = std::uint16_t;
using LONG_PTR = std::intptr_t;
using LPCWSTR = const wchar_t*;
using LPVOID = void*;

/// A window procedure: handles one message for one window.
using WNDPROC = LRESULT (*)(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

/// A point in window coordinates.
struct POINT
{
    std::int32_t x; ///< horizontal
    std::int32_t y; ///< vertical
};

/// A queued message. `time` is the monotonic clock in milliseconds when the
/// receiving thread took it over from its posters (messages taken over together
/// share one time).
struct MSG
{
    HWND hwnd;     ///< the window it is for
    UINT message;  ///< the message number
    WPARAM wParam; ///< the first parameter
    LPARAM lParam; ///< the second parameter
    DWORD time;    ///< when it was posted (monotonic milliseconds)
    POINT pt;      ///< the cursor position (not used)
};

/// Window class description (80 bytes on 64-bit systems, as in Win32). Only
/// cbSize, lpfnWndProc, hInstance and lpszClassName are used; cbSize must be
/// sizeof(WNDCLASSEXW).
struct WNDCLASSEXW
{
    UINT cbSize;           ///< sizeof(WNDCLASSEXW)
    UINT style;            ///< not used
    WNDPROC lpfnWndProc;   ///< the window procedure of the class's windows
    int cbClsExtra;        ///< not used
    int cbWndExtra;        ///< not used
    HINSTANCE hInstance;   ///< the module that registers the class
    void* hIcon;           ///< not used
    void* hCursor;         ///< not used
    void* hbrBackground;   ///< not used
    LPCWSTR lpszMenuName;  ///< not used
    LPCWSTR lpszClassName; ///< the class name that windows are created with
    void* hIconSm;         ///< not used
};

/// What WM_CREATE carries in lParam (a pointer to this structure).
struct CREATESTRUCTW
{
    LPVOID lpCreateParams; ///< the creation parameter of CreateWindowExW
    HINSTANCE hInstance;   ///< as given to CreateWindowExW
    void* hMenu;           ///< as given to CreateWindowExW
    HWND hwndParent;       ///< as given to CreateWindowExW
    int cy;                ///< height, as given
    int cx;                ///< width, as given
    int y;                 ///< top, as given
    int x;                 ///< left, as given
    std::int32_t style;    ///< window style, as given
    LPCWSTR lpszName;      ///< window name, as given
    LPCWSTR lpszClass;     ///< class name, as given
    DWORD dwExStyle;       ///< extended style, as given
};

// Message numbers.
inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;  ///< sent (synchronously) while CreateWindowExW runs; -1 refuses
inline constexpr UINT WM_DESTROY = 0x0002; ///< sent (synchronously) while DestroyWindow runs
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;    ///< ends GetMessageW (it returns 0); wParam = exit code
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_USER = 0x0400;    ///< first number free for a window class's own messages
inline constexpr UINT WM_APP = 0x8000;     ///< first number free for an application's own messages

// PeekMessageW flags.
inline constexpr UINT PM_NOREMOVE = 0x0000;
inline constexpr UINT PM_REMOVE = 0x0001;

// SetWindowLongPtrW / GetWindowLongPtrW indexes.
inline constexpr int GWLP_WNDPROC = -4;
inline constexpr int GWLP_USERDATA = -21;

/// Parent handle that asks for a message-only window (every window of this layer is one).
inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(static_cast<std::intptr_t>(-3));
/// Default position and size.
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000u);

// Error codes of this layer (GetLastError), besides those of bxthreadapi.h.
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_WINDOW_OF_OTHER_THREAD = 1408;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_INVALID_INDEX = 1413;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
