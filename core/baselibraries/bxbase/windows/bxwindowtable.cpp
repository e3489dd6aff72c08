#include <bxbase/windows/bxwindowtable.h>

#include <bxbase/threading/bxnohelpscope.h>
#include <bxbase/windows/bxmessagequeue.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace
{
struct SClass
{
    WNDPROC proc = nullptr;
    HINSTANCE instance = nullptr;
    unsigned windows = 0; ///< live windows of the class; guarded by the class lock
    ATOM atom = 0;
};

struct SSlot
{
    std::atomic<std::uint32_t> generation{0};        ///< odd while a window lives here
    std::atomic<BxMessageQueue*> queue{nullptr};     ///< the owner's queue (queues are never freed)
    std::atomic<DWORD> threadId{0};
    std::atomic<WNDPROC> proc{nullptr};
    std::atomic<LONG_PTR> userData{0};
    std::wstring className;                          ///< owning thread only
    bool destroying = false;                         ///< owning thread only
};

constexpr std::uint32_t kChunkSize = 256;
constexpr std::uint32_t kMaxChunks = 4096; // about a million windows at once

struct SChunk
{
    std::array<SSlot, kChunkSize> slots;
};

// Never destroyed: windows may outlive static destruction order (thread ends
// at exit), and stale handles must always point into valid memory.
struct STable
{
    std::mutex classLock;
    std::map<std::wstring, SClass> classes; ///< guarded by classLock
    ATOM nextAtom = 0xC000;                 ///< guarded by classLock

    std::mutex slotLock;
    std::vector<std::uint32_t> freeSlots;   ///< guarded by slotLock
    std::uint32_t usedSlots = 0;            ///< guarded by slotLock
    std::array<std::atomic<SChunk*>, kMaxChunks> chunks{};
};

STable& table()
{
    static auto* s_table = new STable;
    return *s_table;
}

HWND makeHandle(std::uint32_t index, std::uint32_t generation)
{
    auto value = (static_cast<std::uint64_t>(generation) << 32) | (static_cast<std::uint64_t>(index) + 1);
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(value));
}

SSlot* slotAt(std::uint32_t index)
{
    if (index / kChunkSize >= kMaxChunks)
        return nullptr;
    SChunk* chunk = table().chunks[index / kChunkSize].load(std::memory_order_acquire);
    return chunk ? &chunk->slots[index % kChunkSize] : nullptr;
}

// The slot of a live window and the handle's generation, or null.
SSlot* lookup(HWND hwnd, std::uint32_t& generation, std::uint32_t* index = nullptr)
{
    auto value = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(hwnd));
    auto low = static_cast<std::uint32_t>(value);
    generation = static_cast<std::uint32_t>(value >> 32);
    if (low == 0 || (generation & 1u) == 0)
        return nullptr;
    SSlot* slot = slotAt(low - 1);
    if (slot == nullptr || slot->generation.load(std::memory_order_acquire) != generation)
        return nullptr;
    if (index)
        *index = low - 1;
    return slot;
}

SSlot* lookupOrFail(HWND hwnd, std::uint32_t& generation, std::uint32_t* index = nullptr)
{
    SSlot* slot = lookup(hwnd, generation, index);
    if (slot == nullptr)
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return slot;
}

bool allocateSlot(std::uint32_t& index)
{
    STable& t = table();
    std::lock_guard lock(t.slotLock);
    if (!t.freeSlots.empty())
    {
        index = t.freeSlots.back();
        t.freeSlots.pop_back();
        return true;
    }
    if (t.usedSlots == kChunkSize * kMaxChunks)
        return false;
    index = t.usedSlots++;
    auto& chunk = t.chunks[index / kChunkSize];
    if (chunk.load(std::memory_order_relaxed) == nullptr)
        chunk.store(new SChunk, std::memory_order_release);
    return true;
}

void freeSlot(std::uint32_t index)
{
    STable& t = table();
    std::lock_guard lock(t.slotLock);
    t.freeSlots.push_back(index);
}

void changeWindowCount(const std::wstring& className, int delta)
{
    STable& t = table();
    std::lock_guard lock(t.classLock);
    auto it = t.classes.find(className);
    if (it != t.classes.end())
        it->second.windows += delta;
}

// Makes the window unreachable: generation even (under its queue's lock, which
// also drops its queued messages), removed from the owner's list, slot freed.
void retire(SSlot& slot, std::uint32_t index, std::uint32_t generation, BxMessageQueue& queue, bool unlist)
{
    queue.Invalidate(slot.generation, generation + 1, makeHandle(index, generation));
    if (unlist)
    {
        auto& owned = queue.OwnedWindows();
        owned.erase(std::remove(owned.begin(), owned.end(), index), owned.end());
    }
    changeWindowCount(slot.className, -1);
    BxNoHelpScope::Lower(slot.threadId.load(std::memory_order_relaxed));
    slot.className.clear();
    slot.destroying = false;
    slot.userData.store(0, std::memory_order_relaxed);
    slot.proc.store(nullptr, std::memory_order_relaxed);
    freeSlot(index);
}

LRESULT callProcedure(HWND hwnd, SSlot& slot, UINT message, WPARAM wParam, LPARAM lParam)
{
    WNDPROC proc = slot.proc.load(std::memory_order_acquire);
    return proc ? proc(hwnd, message, wParam, lParam) : 0;
}
} // namespace

ATOM BxWindowTable::RegisterClass(const WNDCLASSEXW& windowClass)
{
    if (windowClass.cbSize != sizeof(WNDCLASSEXW) || windowClass.lpfnWndProc == nullptr ||
        windowClass.lpszClassName == nullptr || windowClass.lpszClassName[0] == L'\0')
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    STable& t = table();
    std::lock_guard lock(t.classLock);
    auto [it, inserted] = t.classes.try_emplace(windowClass.lpszClassName);
    if (!inserted)
    {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    it->second.proc = windowClass.lpfnWndProc;
    it->second.instance = windowClass.hInstance;
    it->second.atom = t.nextAtom == 0xFFFF ? 0xC000 : t.nextAtom++;
    return it->second.atom;
}

bool BxWindowTable::GetClassInfo(LPCWSTR className, WNDCLASSEXW& windowClass)
{
    STable& t = table();
    std::lock_guard lock(t.classLock);
    auto it = className ? t.classes.find(className) : t.classes.end();
    if (it == t.classes.end())
    {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return false;
    }
    windowClass = WNDCLASSEXW{};
    windowClass.cbSize = sizeof(WNDCLASSEXW);
    windowClass.lpfnWndProc = it->second.proc;
    windowClass.hInstance = it->second.instance;
    windowClass.lpszClassName = it->first.c_str(); // valid while the class stays registered
    return true;
}

bool BxWindowTable::UnregisterClass(LPCWSTR className)
{
    STable& t = table();
    std::lock_guard lock(t.classLock);
    auto it = className ? t.classes.find(className) : t.classes.end();
    if (it == t.classes.end())
    {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return false;
    }
    if (it->second.windows > 0)
    {
        SetLastError(ERROR_CLASS_HAS_WINDOWS);
        return false;
    }
    t.classes.erase(it);
    return true;
}

HWND BxWindowTable::Create(LPCWSTR className, LPCWSTR windowName, LPVOID param)
{
    WNDPROC proc = nullptr;
    HINSTANCE instance = nullptr;
    {
        STable& t = table();
        std::lock_guard lock(t.classLock);
        auto it = className ? t.classes.find(className) : t.classes.end();
        if (it == t.classes.end())
        {
            SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
            return nullptr;
        }
        proc = it->second.proc;
        instance = it->second.instance;
        ++it->second.windows;
    }
    std::uint32_t index = 0;
    if (!allocateSlot(index))
    {
        changeWindowCount(className, -1);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }

    BxMessageQueue& queue = BxMessageQueue::ForCurrentThread();
    SSlot& slot = *slotAt(index);
    slot.className = className;
    slot.destroying = false;
    slot.proc.store(proc, std::memory_order_relaxed);
    slot.userData.store(0, std::memory_order_relaxed);
    slot.threadId.store(GetCurrentThreadId(), std::memory_order_relaxed);
    slot.queue.store(&queue, std::memory_order_relaxed);
    const std::uint32_t generation = slot.generation.load(std::memory_order_relaxed) + 1; // odd: alive
    slot.generation.store(generation, std::memory_order_release);
    queue.OwnedWindows().push_back(index);
    BxNoHelpScope::Raise(GetCurrentThreadId()); // a thread with windows waits, never runs others' tasks

    HWND hwnd = makeHandle(index, generation);
    CREATESTRUCTW create{param, instance, nullptr, HWND_MESSAGE, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                         CW_USEDEFAULT, 0, windowName, className, 0};
    if (callProcedure(hwnd, slot, WM_CREATE, 0, reinterpret_cast<LPARAM>(&create)) == -1)
    {
        Destroy(hwnd);
        SetLastError(ERROR_SUCCESS); // as in Win32: a refusal is not an error code
        return nullptr;
    }
    return hwnd;
}

bool BxWindowTable::Destroy(HWND hwnd)
{
    std::uint32_t generation = 0, index = 0;
    SSlot* slot = lookupOrFail(hwnd, generation, &index);
    if (slot == nullptr)
        return false;
    if (slot->threadId.load(std::memory_order_relaxed) != GetCurrentThreadId())
    {
        SetLastError(ERROR_WINDOW_OF_OTHER_THREAD);
        return false;
    }
    if (slot->destroying) // DestroyWindow from inside its own WM_DESTROY
    {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    slot->destroying = true;
    callProcedure(hwnd, *slot, WM_DESTROY, 0, 0);
    retire(*slot, index, generation, *slot->queue.load(std::memory_order_relaxed), true);
    return true;
}

bool BxWindowTable::IsWindow(HWND hwnd)
{
    std::uint32_t generation = 0;
    return lookup(hwnd, generation) != nullptr;
}

DWORD BxWindowTable::GetThreadId(HWND hwnd)
{
    std::uint32_t generation = 0;
    SSlot* slot = lookupOrFail(hwnd, generation);
    return slot ? slot->threadId.load(std::memory_order_relaxed) : 0;
}

bool BxWindowTable::IsOwnedByCurrentThread(HWND hwnd)
{
    std::uint32_t generation = 0;
    SSlot* slot = lookup(hwnd, generation);
    return slot != nullptr && slot->threadId.load(std::memory_order_relaxed) == GetCurrentThreadId();
}

bool BxWindowTable::Post(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    const MSG msg{hwnd, message, wParam, lParam, 0, {0, 0}};
    if (hwnd == nullptr)
        return BxMessageQueue::ForCurrentThread().Post(msg);

    std::uint32_t generation = 0;
    SSlot* slot = lookupOrFail(hwnd, generation);
    if (slot == nullptr)
        return false;
    BxMessageQueue* queue = slot->queue.load(std::memory_order_acquire);
    if (queue == nullptr || !queue->Post(msg, &slot->generation, generation))
    {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    return true;
}

LRESULT BxWindowTable::Send(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    std::uint32_t generation = 0;
    SSlot* slot = lookupOrFail(hwnd, generation);
    if (slot == nullptr)
        return 0;
    if (slot->threadId.load(std::memory_order_relaxed) != GetCurrentThreadId())
    {
        SetLastError(ERROR_WINDOW_OF_OTHER_THREAD);
        return 0;
    }
    return callProcedure(hwnd, *slot, message, wParam, lParam);
}

LONG_PTR BxWindowTable::SetLongPtr(HWND hwnd, int index, LONG_PTR value)
{
    std::uint32_t generation = 0;
    SSlot* slot = lookupOrFail(hwnd, generation);
    if (slot == nullptr)
        return 0;
    SetLastError(ERROR_SUCCESS); // a previous value of 0 is told apart from failure by the error code
    if (index == GWLP_USERDATA)
        return slot->userData.exchange(value, std::memory_order_acq_rel);
    if (index == GWLP_WNDPROC && value != 0)
        return reinterpret_cast<LONG_PTR>(slot->proc.exchange(reinterpret_cast<WNDPROC>(value), std::memory_order_acq_rel));
    SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

LONG_PTR BxWindowTable::GetLongPtr(HWND hwnd, int index)
{
    std::uint32_t generation = 0;
    SSlot* slot = lookupOrFail(hwnd, generation);
    if (slot == nullptr)
        return 0;
    SetLastError(ERROR_SUCCESS);
    if (index == GWLP_USERDATA)
        return slot->userData.load(std::memory_order_acquire);
    if (index == GWLP_WNDPROC)
        return reinterpret_cast<LONG_PTR>(slot->proc.load(std::memory_order_acquire));
    SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

void BxWindowTable::OnThreadEnd(BxMessageQueue& queue)
{
    std::vector<std::uint32_t> owned;
    owned.swap(queue.OwnedWindows());
    for (std::uint32_t index : owned)
    {
        SSlot& slot = *slotAt(index);
        retire(slot, index, slot.generation.load(std::memory_order_relaxed), queue, false);
    }
}
