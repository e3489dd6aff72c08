#include <bxbase/threading/bxthreadcore.h>

#include <bxbase/bxstringconvert.h>
#include <bxbase/threading/bxblockingscope.h>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

namespace
{
// Win32 priority -> nice value.
int niceOf(BxThreadCore::EThreadPriority priority)
{
    switch (priority)
    {
    case BxThreadCore::eTP_Idle: return 19;
    case BxThreadCore::eTP_Lowest: return 10;
    case BxThreadCore::eTP_BelowNormal: return 5;
    case BxThreadCore::eTP_Normal: return 0;
    case BxThreadCore::eTP_AboveNormal: return -5;
    case BxThreadCore::eTP_Highest: return -10;
    case BxThreadCore::eTP_TimeCritical: return -20;
    }
    return 0;
}

// The system keeps at most 15 bytes of a thread name; cut at a character boundary.
std::string systemName(const CStringW& name)
{
    std::string utf8 = BxStringConvert::WideToUtf8Lossy(name);
    std::size_t length = std::min<std::size_t>(utf8.size(), 15);
    while (length > 0 && length < utf8.size() && (static_cast<unsigned char>(utf8[length]) & 0xC0) == 0x80)
        --length;
    return utf8.substr(0, length);
}
} // namespace

BxThreadCore::BxThreadCore(const CStringW& name, EThreadPriority priority) : m_name(name), m_priority(priority) {}

BxThreadCore::~BxThreadCore()
{
    std::thread thread;
    {
        std::lock_guard lock(m_lock);
        thread = std::move(m_thread);
    }
    if (!thread.joinable())
        return;
    if (thread.get_id() == std::this_thread::get_id())
        thread.detach(); // destroyed by its own thread: nothing to wait for
    else
        thread.join();
}

bool BxThreadCore::start(Body body, Deleter deleter)
{
    std::lock_guard lock(m_lock);
    if (IsRunning())
        return false;
    if (m_thread.joinable())
        m_thread.join(); // the previous run has ended; reap it
    m_started.Reset();
    m_terminated.Reset();
    m_threadId.store(0, std::memory_order_release);
    m_exitCode.store(STILL_ACTIVE, std::memory_order_release);
    try
    {
        // The new thread takes m_lock first, so it sees m_thread assigned.
        m_thread = std::thread(&BxThreadCore::threadMain, this, std::move(body), deleter);
    }
    catch (const std::system_error&)
    {
        m_exitCode.store(0, std::memory_order_release);
        m_terminated.Set();
        return false;
    }
    return true;
}

void BxThreadCore::threadMain(Body body, Deleter deleter)
{
    {
        std::lock_guard lock(m_lock);
        m_threadId.store(GetCurrentThreadId(), std::memory_order_release);
        applyName();
        applyPriority();
        applyAffinity();
    }
    m_started.Set();

    DWORD exitCode;
    try
    {
        exitCode = body();
    }
    catch (...)
    {
        exitCode = eExitCodeException;
    }
    if (exitCode == STILL_ACTIVE) // would read as "still running" for ever
        exitCode = 0;

    BxEvent terminated = m_terminated; // outlives a self-deleting object
    bool autoDelete;
    {
        std::lock_guard lock(m_lock);
        autoDelete = m_autoDelete && deleter != nullptr;
        if (autoDelete)
            m_thread.detach();
    }
    m_exitCode.store(exitCode, std::memory_order_release);
    if (autoDelete)
        deleter(this);
    terminated.Set();
}

bool BxThreadCore::WaitUntilTerminate(DWORD timeoutMs) const
{
    return m_terminated.Wait(timeoutMs);
}

void BxThreadCore::SetName(const CStringW& name)
{
    std::lock_guard lock(m_lock);
    m_name = name;
    if (IsRunning() && m_threadId.load(std::memory_order_acquire) != 0)
        applyName();
}

CStringW BxThreadCore::GetName() const
{
    std::lock_guard lock(m_lock);
    return m_name;
}

void BxThreadCore::SetPriority(EThreadPriority priority)
{
    std::lock_guard lock(m_lock);
    m_priority = priority;
    if (IsRunning() && m_threadId.load(std::memory_order_acquire) != 0)
        applyPriority();
}

BxThreadCore::EThreadPriority BxThreadCore::GetPriority() const
{
    std::lock_guard lock(m_lock);
    return m_priority;
}

void BxThreadCore::SetAffinityMask(DWORD_PTR mask)
{
    std::lock_guard lock(m_lock);
    m_affinityMask = mask;
    if (IsRunning() && m_threadId.load(std::memory_order_acquire) != 0)
        applyAffinity();
}

DWORD_PTR BxThreadCore::GetAffinityMask() const
{
    std::lock_guard lock(m_lock);
    return m_affinityMask;
}

void BxThreadCore::SetAutoDelete(bool autoDelete)
{
    std::lock_guard lock(m_lock);
    m_autoDelete = autoDelete;
}

void BxThreadCore::applyName() const
{
    if (!m_name.empty() && m_thread.joinable())
        ::pthread_setname_np(const_cast<std::thread&>(m_thread).native_handle(), systemName(m_name).c_str());
}

void BxThreadCore::applyPriority() const
{
    // Linux keeps a nice value per thread; failure (no right to raise) is ignored.
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(m_threadId.load(std::memory_order_acquire)), niceOf(m_priority));
}

void BxThreadCore::applyAffinity() const
{
    if (m_affinityMask == 0)
        return;
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (::sched_getaffinity(0, sizeof(allowed), &allowed) != 0)
        return;
    cpu_set_t set;
    CPU_ZERO(&set);
    for (unsigned cpu = 0; cpu < sizeof(DWORD_PTR) * 8; ++cpu)
        if ((m_affinityMask >> cpu) & 1u && CPU_ISSET(cpu, &allowed))
            CPU_SET(cpu, &set);
    if (CPU_COUNT(&set) > 0)
        ::sched_setaffinity(static_cast<pid_t>(m_threadId.load(std::memory_order_acquire)), sizeof(set), &set);
}
