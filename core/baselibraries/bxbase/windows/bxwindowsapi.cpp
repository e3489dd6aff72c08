#include <bxbase/windows/bxwindowsapi.h>

#include <bxbase/windows/bxmessagequeue.h>
#include <bxbase/windows/bxwindowtable.h>

#include <cstdlib>
#include <unistd.h>

namespace
{
HINSTANCE const kProcessModule = reinterpret_cast<HINSTANCE>(static_cast<std::uintptr_t>(0x400000));

// Checks the window filter of GetMessageW / PeekMessageW.
bool validFilter(HWND hwnd)
{
    if (hwnd == nullptr || hwnd == reinterpret_cast<HWND>(static_cast<std::intptr_t>(-1)))
        return true;
    if (BxWindowTable::IsOwnedByCurrentThread(hwnd))
        return true;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return false;
}
} // namespace

ATOM RegisterClassExW(const WNDCLASSEXW* windowClass)
{
    if (windowClass == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return BxWindowTable::RegisterClass(*windowClass);
}

BOOL GetClassInfoExW(HINSTANCE, LPCWSTR className, WNDCLASSEXW* windowClass)
{
    if (windowClass == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return BxWindowTable::GetClassInfo(className, *windowClass);
}

BOOL UnregisterClassW(LPCWSTR className, HINSTANCE)
{
    return BxWindowTable::UnregisterClass(className);
}

HWND CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR windowName, DWORD, int, int, int, int, HWND, void*, HINSTANCE,
                     LPVOID param)
{
    return BxWindowTable::Create(className, windowName, param);
}

BOOL DestroyWindow(HWND hwnd)
{
    return BxWindowTable::Destroy(hwnd);
}

BOOL IsWindow(HWND hwnd)
{
    return BxWindowTable::IsWindow(hwnd);
}

DWORD GetWindowThreadProcessId(HWND hwnd, DWORD* processId)
{
    DWORD thread = BxWindowTable::GetThreadId(hwnd);
    if (processId != nullptr)
        *processId = thread != 0 ? static_cast<DWORD>(::getpid()) : 0;
    return thread;
}

LONG_PTR SetWindowLongPtrW(HWND hwnd, int index, LONG_PTR value)
{
    return BxWindowTable::SetLongPtr(hwnd, index, value);
}

LONG_PTR GetWindowLongPtrW(HWND hwnd, int index)
{
    return BxWindowTable::GetLongPtr(hwnd, index);
}

BOOL PostMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    return BxWindowTable::Post(hwnd, message, wParam, lParam);
}

LRESULT SendMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    return BxWindowTable::Send(hwnd, message, wParam, lParam);
}

void PostQuitMessage(int exitCode)
{
    BxMessageQueue::ForCurrentThread().PostQuit(exitCode);
}

BOOL GetMessageW(MSG* msg, HWND hwnd, UINT min, UINT max)
{
    if (msg == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    if (!validFilter(hwnd))
        return -1;
    BxMessageQueue::ForCurrentThread().Retrieve(*msg, {hwnd, min, max}, BxMessageQueue::eRemove, INFINITE);
    return msg->message == WM_QUIT ? 0 : 1;
}

BOOL PeekMessageW(MSG* msg, HWND hwnd, UINT min, UINT max, UINT remove)
{
    if (msg == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!validFilter(hwnd))
        return 0;
    auto mode = (remove & PM_REMOVE) ? BxMessageQueue::eRemove : BxMessageQueue::eKeep;
    return BxMessageQueue::ForCurrentThread().Retrieve(*msg, {hwnd, min, max}, mode, 0) ? 1 : 0;
}

BOOL TranslateMessage(const MSG*)
{
    return 0;
}

LRESULT DispatchMessageW(const MSG* msg)
{
    if (msg == nullptr || msg->hwnd == nullptr)
        return 0;
    return BxWindowTable::Send(msg->hwnd, msg->message, msg->wParam, msg->lParam);
}

LRESULT DefWindowProcW(HWND, UINT, WPARAM, LPARAM)
{
    return 0;
}

HMODULE GetModuleHandleW(LPCWSTR moduleName)
{
    if (moduleName != nullptr)
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    return kProcessModule;
}

void* CoTaskMemAlloc(std::size_t size)
{
    return std::malloc(size == 0 ? 1 : size);
}

void CoTaskMemFree(void* p)
{
    std::free(p);
}
