#include <bxbase/threading/bxthreadapi.h>

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
thread_local DWORD t_lastError = ERROR_SUCCESS;
thread_local DWORD t_threadId = 0;

HANDLE const kCurrentProcess = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

DWORD_PTR maskOf(const cpu_set_t& set)
{
    DWORD_PTR mask = 0;
    for (unsigned cpu = 0; cpu < sizeof(DWORD_PTR) * 8; ++cpu)
        if (CPU_ISSET(cpu, &set))
            mask |= DWORD_PTR{1} << cpu;
    return mask;
}
} // namespace

DWORD GetCurrentThreadId()
{
    if (t_threadId == 0)
        t_threadId = static_cast<DWORD>(::syscall(SYS_gettid));
    return t_threadId;
}

HANDLE GetCurrentProcess()
{
    return kCurrentProcess;
}

BOOL GetProcessAffinityMask(HANDLE process, DWORD_PTR* processMask, DWORD_PTR* systemMask)
{
    if (process != kCurrentProcess)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    if (processMask == nullptr || systemMask == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof(set), &set) != 0)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return 0;
    }
    *processMask = maskOf(set);

    long configured = ::sysconf(_SC_NPROCESSORS_CONF);
    DWORD_PTR system = 0;
    for (long cpu = 0; cpu < configured && cpu < static_cast<long>(sizeof(DWORD_PTR) * 8); ++cpu)
        system |= DWORD_PTR{1} << cpu;
    *systemMask = system | *processMask;
    return 1;
}

DWORD GetLastError()
{
    return t_lastError;
}

void SetLastError(DWORD error)
{
    t_lastError = error;
}
