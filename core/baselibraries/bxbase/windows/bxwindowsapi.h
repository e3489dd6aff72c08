// The portable subset of the Win32 message-window API: message-only windows
// bound to the thread that creates them, one FIFO message queue per thread
// (made on first use), posting from any thread, and the message loop calls.
//
//   LRESULT workerProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
//   {
//       if (message == WM_CREATE)   // lParam: CREATESTRUCTW*, delivered inside CreateWindowExW
//           SetWindowLongPtrW(hwnd, GWLP_USERDATA,
//                             reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
//       return 0;
//   }
//
//   WNDCLASSEXW wc{};
//   wc.cbSize = sizeof(wc);
//   wc.lpfnWndProc = workerProc;
//   wc.hInstance = GetModuleHandleW(nullptr);
//   wc.lpszClassName = L"Worker";
//   RegisterClassExW(&wc);
//   HWND hwnd = CreateWindowExW(0, L"Worker", L"", 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
//                               CW_USEDEFAULT, HWND_MESSAGE, nullptr, wc.hInstance, this);
//
//   PostMessageW(hwnd, WM_USER + 1, 0, 0);            // any thread
//   MSG msg;
//   while (GetMessageW(&msg, nullptr, 0, 0) > 0)        // the window's thread
//       DispatchMessageW(&msg);
//
// Differences from Win32, all with a defined outcome instead of a crash:
//   - every window is message-only; position, size, style and parent are ignored;
//   - DestroyWindow from another thread fails with ERROR_WINDOW_OF_OTHER_THREAD;
//   - when a thread ends, its windows are destroyed without WM_DESTROY and
//     posting to them fails with ERROR_INVALID_WINDOW_HANDLE;
//   - SendMessageW calls the procedure only on the window's own thread; from
//     another thread it returns 0 with ERROR_WINDOW_OF_OTHER_THREAD;
//   - a destroyed window's queued messages are dropped at once;
//   - waiting in GetMessageW on a pool worker counts as blocked (BxBlockingScope).
// Failing calls set the thread's last error (GetLastError, bxthreadapi.h).
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/windows/bxwindowtypes.h>

#include <cstddef>

/// Registers a window class by name. 0 on failure (ERROR_CLASS_ALREADY_EXISTS, ERROR_INVALID_PARAMETER).
BXBASE_API ATOM RegisterClassExW(const WNDCLASSEXW* windowClass);
/// Fills *windowClass for a registered class name; FALSE with ERROR_CLASS_DOES_NOT_EXIST.
BXBASE_API BOOL GetClassInfoExW(HINSTANCE instance, LPCWSTR className, WNDCLASSEXW* windowClass);
/// Unregisters a class that has no windows.
BXBASE_API BOOL UnregisterClassW(LPCWSTR className, HINSTANCE instance);

/// Creates a message-only window owned by the calling thread; WM_CREATE
/// reaches the procedure before this returns (lParam: CREATESTRUCTW* whose
/// lpCreateParams is param). Null on failure.
BXBASE_API HWND CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y,
                                int width, int height, HWND parent, void* menu, HINSTANCE instance, LPVOID param);
/// Delivers WM_DESTROY and destroys the window; the owning thread only.
BXBASE_API BOOL DestroyWindow(HWND hwnd);
/// TRUE while hwnd names a live window.
BXBASE_API BOOL IsWindow(HWND hwnd);
/// The owning thread's id (and the process id in *processId when not null); 0 for no window.
BXBASE_API DWORD GetWindowThreadProcessId(HWND hwnd, DWORD* processId);

/// Per-window values: GWLP_USERDATA (free for the owner) and GWLP_WNDPROC.
/// Return the previous value; on failure 0 with the last error set (on
/// success the last error is ERROR_SUCCESS, so a previous 0 can be told apart).
BXBASE_API LONG_PTR SetWindowLongPtrW(HWND hwnd, int index, LONG_PTR value);
BXBASE_API LONG_PTR GetWindowLongPtrW(HWND hwnd, int index);

/// Appends a message to the queue of the window's thread and returns at once
/// (any thread). hwnd null posts a thread message to the calling thread.
/// FALSE with ERROR_INVALID_WINDOW_HANDLE for a destroyed window or one whose thread ended.
BXBASE_API BOOL PostMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
/// Calls the window procedure at once (own thread only, see above).
BXBASE_API LRESULT SendMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
/// Asks the calling thread's message loop to end: GetMessageW returns 0
/// (WM_QUIT, wParam = exitCode) once no other matching message is queued.
BXBASE_API void PostQuitMessage(int exitCode);

/// Waits for and removes the calling thread's first message matching the
/// filter. hwnd: null = any window and thread messages, (HWND)-1 = thread
/// messages only, else that window (which must belong to the calling
/// thread). min/max: a range of numbers, 0/0 = all. WM_QUIT always matches.
/// Returns 0 for WM_QUIT, -1 for a bad argument (null msg, a window that is
/// not the caller's), otherwise 1.
BXBASE_API BOOL GetMessageW(MSG* msg, HWND hwnd, UINT min, UINT max);
/// Like GetMessageW without waiting: TRUE when a message was there. remove:
/// PM_REMOVE takes it out, PM_NOREMOVE leaves it queued.
BXBASE_API BOOL PeekMessageW(MSG* msg, HWND hwnd, UINT min, UINT max, UINT remove);
/// Nothing to translate for message-only windows: returns FALSE.
BXBASE_API BOOL TranslateMessage(const MSG* msg);
/// Calls the procedure of msg->hwnd on the calling thread and returns its
/// result; 0 for a thread message, a destroyed window or another thread's window.
BXBASE_API LRESULT DispatchMessageW(const MSG* msg);
/// The default procedure: 0 for every message.
BXBASE_API LRESULT DefWindowProcW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

/// The module handle of the process (moduleName must be null; otherwise null).
BXBASE_API HMODULE GetModuleHandleW(LPCWSTR moduleName);

/// Memory for data handed over in a message (texts in lParam); the receiver frees it.
BXBASE_API void* CoTaskMemAlloc(std::size_t size);
BXBASE_API void CoTaskMemFree(void* p);
