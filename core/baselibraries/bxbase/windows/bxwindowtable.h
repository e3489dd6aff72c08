// The process-wide table of window classes and message-only windows behind
// bxwindowsapi.h. Applications use those Win32-style functions; this class
// holds the state and the rules.
//
//   WNDCLASSEXW wc{sizeof(wc)}; wc.lpfnWndProc = proc; wc.lpszClassName = L"Worker";
//   BxWindowTable::RegisterClass(wc);
//   HWND hwnd = BxWindowTable::Create(L"Worker", L"title", param);   // WM_CREATE delivered here
//   BxWindowTable::Post(hwnd, WM_USER, 0, 0);                         // from any thread
//
// A window lives in a slot. Slots sit in chunks that are never freed, and a
// handle carries the slot's generation (odd while a window lives in it), so
// looking a handle up needs no lock and a stale handle is recognised safely.
// Posting reads the slot's queue pointer and lets the queue test the
// generation under its own lock: a post either lands before the window is
// destroyed (and is then dropped with the window's other messages) or fails.
//
// Locks: m_classLock guards the class map and the classes' window counts;
// m_slotLock guards slot allocation (free list, chunk creation). Slot fields
// are atomics, or belong to the owning thread (destroying, className).
// Every failing call sets the thread's last error (GetLastError).
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/windows/bxwindowtypes.h>

class BxMessageQueue;

/// The process-wide table of window classes and message-only windows behind bxwindowsapi.h.
class BXBASE_API BxWindowTable
{
public:
    BxWindowTable() = delete;

    /// Registers a class by name; 0 with ERROR_CLASS_ALREADY_EXISTS when the
    /// name is taken, ERROR_INVALID_PARAMETER for a bad description.
    static ATOM RegisterClass(const WNDCLASSEXW& windowClass);
    /// Fills the description of a registered class; false with ERROR_CLASS_DOES_NOT_EXIST.
    static bool GetClassInfo(LPCWSTR className, WNDCLASSEXW& windowClass);
    /// Removes a class without windows; false with ERROR_CLASS_DOES_NOT_EXIST or ERROR_CLASS_HAS_WINDOWS.
    static bool UnregisterClass(LPCWSTR className);

    /// Creates a message-only window owned by the calling thread and delivers
    /// WM_CREATE (lParam: CREATESTRUCTW*) before returning. Null with
    /// ERROR_CANNOT_FIND_WND_CLASS, or when WM_CREATE answered -1 (the window
    /// then receives WM_DESTROY and is gone).
    static HWND Create(LPCWSTR className, LPCWSTR windowName, LPVOID param);
    /// Owning thread only: delivers WM_DESTROY, then the handle becomes
    /// invalid and the window's queued messages are dropped. False with
    /// ERROR_INVALID_WINDOW_HANDLE, or ERROR_WINDOW_OF_OTHER_THREAD from another thread.
    static bool Destroy(HWND hwnd);
    /// True when hwnd is a live window of any thread (not yet destroyed, its thread not ended); any thread may ask.
    static bool IsWindow(HWND hwnd);
    /// Kernel id of the owning thread; 0 with ERROR_INVALID_WINDOW_HANDLE.
    static DWORD GetThreadId(HWND hwnd);

    /// Appends to the owning thread's queue; hwnd null posts a thread message
    /// to the calling thread. False with ERROR_INVALID_WINDOW_HANDLE for a
    /// destroyed window, also when its thread has ended.
    static bool Post(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    /// Calls the window procedure now; the owning thread only (else 0 with
    /// ERROR_WINDOW_OF_OTHER_THREAD).
    static LRESULT Send(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    /// GWLP_USERDATA (any thread) or GWLP_WNDPROC; returns the previous value.
    /// 0 with ERROR_INVALID_INDEX or ERROR_INVALID_WINDOW_HANDLE.
    static LONG_PTR SetLongPtr(HWND hwnd, int index, LONG_PTR value);
    /// The value of GWLP_USERDATA or GWLP_WNDPROC (any thread). 0 with ERROR_INVALID_INDEX or
    /// ERROR_INVALID_WINDOW_HANDLE; a stored 0 comes with ERROR_SUCCESS.
    static LONG_PTR GetLongPtr(HWND hwnd, int index);

    /// True when hwnd is a live window of the calling thread.
    static bool IsOwnedByCurrentThread(HWND hwnd);

    /// Called when a thread ends: its windows are destroyed without WM_DESTROY
    /// (their procedures' objects may be gone), so later posts to them fail.
    static void OnThreadEnd(BxMessageQueue& queue);
};
