#include <vobase/messaging/vohangdetector.h>

#include <vobase/messaging/vomessage.h>
#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/messaging/vothreadsendstatus.h>

#include <bxbase/bxstringconvert.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxthreadapi.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using Handler = VoMessageHandlerBase;

std::uint32_t initialTimeout()
{
    const char* text = std::getenv("VOBASE_HANG_TIMEOUT_MS");
    if (text == nullptr)
        return VoHangDetector::kDefaultTimeoutMs;
    const std::string_view view(text);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), value);
    if (error != std::errc() || end != view.data() + view.size())
        return VoHangDetector::kDefaultTimeoutMs;  // not a number: the default holds
    return value;
}

std::atomic<std::uint32_t>& timeoutSetting()
{
    static std::atomic<std::uint32_t> timeout{initialTimeout()};
    return timeout;
}

BxSmartPointer<Logging::ILogger> defaultLogger()
{
    static const BxSmartPointer<Logging::ILogger> logger(new Logging::CLogger(L"Core.HangDetector"));
    return logger;
}

// A blocked wait in the table, with what the diagnosis needs beside its report.
struct SEntry
{
    VoHangDetector::SBlockedWait wait;
    const VoThreadSendStatus* status = nullptr;  ///< the send's status; null for a task wait
    Clock::time_point since;
    std::vector<const Handler*> waitedOn;        ///< parallel to wait.handlers, from the latest look
    /// The handlers that held the send in their queue at the previous look,
    /// with the count of entries each had taken then.
    std::vector<std::pair<const Handler*, std::uint64_t>> previousLook;
    bool looked = false;
};

// Process-wide and never destroyed: handlers may die during process exit.
struct SState
{
    std::mutex lock;                              ///< guards handlers and table
    std::vector<const Handler*> handlers;         ///< every live handler
    std::map<std::uint32_t, SEntry> table;        ///< blocked waits by waiting thread
    std::mutex loggerLock;                        ///< guards logger
    BxSmartPointer<Logging::ILogger> logger = defaultLogger();
    std::atomic<std::uint64_t> reports{0};
};

SState& state()
{
    static SState* s = new SState;  // immortal on purpose
    return *s;
}

std::uint32_t millisecondsSince(Clock::time_point since, Clock::time_point now)
{
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now - since).count());
}

bool threadAlive(std::uint32_t threadID)
{
    if (threadID == 0)
        return false;
    return ::syscall(SYS_tgkill, ::getpid(), static_cast<pid_t>(threadID), 0) == 0 || errno != ESRCH;
}

std::wstring currentThreadName()
{
    char name[32] = {};
    if (pthread_getname_np(pthread_self(), name, sizeof name) != 0)
        return {};
    return BxStringConvert::Utf8ToWide(name);
}

std::wstring describeThread(std::uint32_t threadID, const std::wstring& name)
{
    std::wstring text = L"thread " + std::to_wstring(threadID);
    if (!name.empty())
        text += L" \"" + name + L"\"";
    return text;
}

std::wstring describeSender(const SEntry& entry)
{
    return describeThread(entry.wait.threadID, entry.wait.threadName) + L" sends " + entry.wait.messageClass;
}

std::wstring blockedFor(std::uint32_t ms)
{
    return L"; blocked for " + std::to_wstring(ms) + L" ms";
}

void log(const std::wstring& text, const char* functionName)
{
    SState& s = state();
    BxSmartPointer<Logging::ILogger> logger;
    {
        std::lock_guard lock(s.loggerLock);
        logger = s.logger;
    }
    s.reports.fetch_add(1, std::memory_order_relaxed);
    logger->Warn(__FILE__, __LINE__, functionName, L"%s", text.c_str());
}

}  // namespace

// The diagnosis of one send, made by its own waiting thread under the state lock.
class VoHangDetector::CDiagnosis
{
public:
    CDiagnosis(SState& s, std::uint32_t self, const Handler& dispatcher, std::uint32_t periodMs)
        : m_state(s), m_self(self), m_dispatcher(dispatcher), m_periodMs(periodMs), m_now(Clock::now())
    {
    }

    /// The text to log, or nothing.
    std::optional<std::wstring> Run()
    {
        auto it = m_state.table.find(m_self);
        if (it == m_state.table.end())
            return std::nullopt;
        SEntry& self = it->second;
        lookAtHandlers();
        std::optional<std::wstring> text;
        if (!self.wait.reported)
            text = verdict(self);
        remember(self);
        return text;
    }

private:
    // Finds, for every send in the table, the handlers that hold it in their
    // queue or answer it now.
    void lookAtHandlers()
    {
        std::unordered_map<const VoThreadSendStatus*, SEntry*> byStatus;
        for (auto& [threadID, entry] : m_state.table)
        {
            if (entry.status == nullptr)
                continue;
            entry.wait.handlers.clear();
            entry.waitedOn.clear();
            byStatus.emplace(entry.status, &entry);
        }
        auto add = [](SEntry& entry, const Handler& handler, bool answering) {
            for (std::size_t i = 0; i < entry.waitedOn.size(); ++i)
                if (entry.waitedOn[i] == &handler && entry.wait.handlers[i].answering == answering)
                    return;  // subscribed twice: named once
            entry.waitedOn.push_back(&handler);
            entry.wait.handlers.push_back(
                {handler.GetName(), handler.m_threadID.load(std::memory_order_acquire), answering});
        };
        for (const Handler* handler : m_state.handlers)
        {
            const VoThreadSendStatus* answering = handler->m_answering.load(std::memory_order_relaxed);
            if (answering != nullptr)
                if (auto found = byStatus.find(answering); found != byStatus.end())
                    add(*found->second, *handler, true);
            std::size_t waiting = 0;
            BxCriticalSectionLocker locker(handler->m_sendQueueLock);
            for (const VoSendNotification& queued : handler->m_sendQueue)
            {
                if (queued.message == nullptr)
                    continue;
                ++waiting;
                if (auto found = byStatus.find(queued.status); found != byStatus.end())
                    add(*found->second, *handler, false);
            }
            m_waiting[handler] = waiting;
        }
    }

    std::optional<std::wstring> verdict(SEntry& self)
    {
        const std::uint32_t dispatcherThread = m_dispatcher.m_threadID.load(std::memory_order_acquire);
        const std::uint32_t waitedMs = millisecondsSince(self.since, m_now);
        if (dispatcherThread != 0 && dispatcherThread == m_self)
            return mark(self, VoHangDetector::eK_SendOnDispatcherThread,
                        L"Blocked send: " + describeSender(self) + L" on the dispatcher's own thread" + blockedFor(waitedMs));
        if (waitsInQueueOf(self, m_dispatcher) && !threadAlive(dispatcherThread))
            return mark(self, VoHangDetector::eK_DispatcherNotRunning,
                        L"Blocked send: " + describeSender(self) + L" but the dispatcher's thread does not run" +
                            blockedFor(waitedMs));
        if (auto cycle = findCycle(); !cycle.empty())
            return markCycle(cycle, waitedMs);
        for (std::size_t i = 0; i < self.waitedOn.size(); ++i)
        {
            const VoHangDetector::SWaitedHandler& handler = self.wait.handlers[i];
            if (handler.answering || threadAlive(handler.threadID))
                continue;
            std::wstring where = handler.threadID == 0 ? L", which never had a thread"
                                                       : L", whose thread " + std::to_wstring(handler.threadID) + L" has ended";
            return mark(self, VoHangDetector::eK_HandlerThreadEnded,
                        L"Blocked send: " + describeSender(self) + L" to handler \"" + handler.name + L"\"" + where +
                            blockedFor(waitedMs));
        }
        if (!self.looked)
            return std::nullopt;
        for (std::size_t i = 0; i < self.waitedOn.size(); ++i)
        {
            const Handler* handler = self.waitedOn[i];
            const VoHangDetector::SWaitedHandler& waited = self.wait.handlers[i];
            if (waited.answering || !tookNothingSinceLastLook(self, *handler))
                continue;
            return mark(self, VoHangDetector::eK_HandlerStalled,
                        L"Blocked send: " + describeSender(self) + L" to handler \"" + waited.name + L"\" on thread " +
                            std::to_wstring(waited.threadID) + L", which took no send in " +
                            std::to_wstring(m_periodMs) + L" ms (" + std::to_wstring(m_waiting[handler]) +
                            L" waiting)" + blockedFor(waitedMs));
        }
        return std::nullopt;
    }

    static bool waitsInQueueOf(const SEntry& entry, const Handler& handler)
    {
        for (std::size_t i = 0; i < entry.waitedOn.size(); ++i)
            if (entry.waitedOn[i] == &handler && !entry.wait.handlers[i].answering)
                return true;
        return false;
    }

    bool tookNothingSinceLastLook(const SEntry& entry, const Handler& handler) const
    {
        for (const auto& [before, taken] : entry.previousLook)
            if (before == &handler)
                return handler.m_sendsTaken.load(std::memory_order_relaxed) == taken;
        return false;  // it did not hold the send a period ago
    }

    // Keeps, for the next look, which handlers hold the send in their queue
    // and how many entries each has taken so far.
    static void remember(SEntry& self)
    {
        self.previousLook.clear();
        for (std::size_t i = 0; i < self.waitedOn.size(); ++i)
            if (!self.wait.handlers[i].answering)
                self.previousLook.emplace_back(self.waitedOn[i],
                                               self.waitedOn[i]->m_sendsTaken.load(std::memory_order_relaxed));
        self.looked = true;
    }

    std::wstring mark(SEntry& self, VoHangDetector::EKind kind, std::wstring text)
    {
        self.wait.kind = kind;
        self.wait.reported = true;
        return text;
    }

    // One step of a cycle: a blocked send and the handler it waits on next.
    struct SStep
    {
        SEntry* entry;
        std::size_t handler;  ///< index into entry->wait.handlers
    };

    // A path from this thread through blocked sends back to it, or nothing.
    std::vector<SStep> findCycle()
    {
        std::vector<SStep> path;
        std::set<std::uint32_t> visited{m_self};
        follow(m_self, path, visited);
        return path;
    }

    bool follow(std::uint32_t threadID, std::vector<SStep>& path, std::set<std::uint32_t>& visited)
    {
        auto it = m_state.table.find(threadID);
        if (it == m_state.table.end() || it->second.status == nullptr)
            return false;
        SEntry& entry = it->second;
        for (std::size_t i = 0; i < entry.wait.handlers.size(); ++i)
        {
            const std::uint32_t next = entry.wait.handlers[i].threadID;
            path.push_back({&entry, i});
            if (next == m_self)
                return true;
            if (next != 0 && visited.insert(next).second && follow(next, path, visited))
                return true;
            path.pop_back();
        }
        return false;
    }

    std::wstring markCycle(const std::vector<SStep>& cycle, std::uint32_t waitedMs)
    {
        std::vector<std::uint32_t> threads;
        for (const SStep& step : cycle)
            threads.push_back(step.entry->wait.threadID);
        std::wstring text = L"Blocked send: cycle of synchronous sends: ";
        for (std::size_t i = 0; i < cycle.size(); ++i)
        {
            SEntry& entry = *cycle[i].entry;
            const VoHangDetector::SWaitedHandler& handler = entry.wait.handlers[cycle[i].handler];
            if (i > 0)
                text += L"; ";
            text += describeSender(entry) + L" to handler \"" + handler.name + L"\" on thread " +
                    std::to_wstring(handler.threadID);
            entry.wait.kind = VoHangDetector::eK_SendCycle;
            entry.wait.reported = true;
            entry.wait.cycle.assign(threads.begin() + static_cast<std::ptrdiff_t>(i), threads.end());
            entry.wait.cycle.insert(entry.wait.cycle.end(), threads.begin(),
                                    threads.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return text + blockedFor(waitedMs);
    }

    SState& m_state;
    std::uint32_t m_self;
    const Handler& m_dispatcher;
    std::uint32_t m_periodMs;
    Clock::time_point m_now;
    std::unordered_map<const Handler*, std::size_t> m_waiting;  ///< sends waiting in each handler's queue
};

namespace {

// The calling thread's entry in the table while it lives.
class CSendEntry
{
public:
    CSendEntry(const VoThreadSendStatus& status, const VoMessage& message, std::uint32_t waitedMs)
    {
        SEntry entry;
        entry.status = &status;
        entry.since = Clock::now() - std::chrono::milliseconds(waitedMs);
        entry.wait.threadID = GetCurrentThreadId();
        entry.wait.threadName = currentThreadName();
        entry.wait.messageClass = message.GetClassNameW();
        SState& s = state();
        std::lock_guard lock(s.lock);
        s.table.insert_or_assign(entry.wait.threadID, std::move(entry));
    }
    ~CSendEntry() { VoHangDetector::EndBlockedWait(); }
    CSendEntry(const CSendEntry&) = delete;
    CSendEntry& operator=(const CSendEntry&) = delete;
};

}  // namespace

std::uint32_t VoHangDetector::GetTimeout() noexcept
{
    return timeoutSetting().load(std::memory_order_relaxed);
}

void VoHangDetector::SetTimeout(std::uint32_t timeoutMs) noexcept
{
    timeoutSetting().store(timeoutMs, std::memory_order_relaxed);
}

void VoHangDetector::SetLogger(BxSmartPointer<Logging::ILogger> logger)
{
    SState& s = state();
    std::lock_guard lock(s.loggerLock);
    s.logger = logger ? std::move(logger) : defaultLogger();
}

std::vector<VoHangDetector::SBlockedWait> VoHangDetector::GetBlockedWaits()
{
    SState& s = state();
    std::vector<SBlockedWait> waits;
    std::lock_guard lock(s.lock);
    const Clock::time_point now = Clock::now();
    waits.reserve(s.table.size());
    for (const auto& [threadID, entry] : s.table)
    {
        waits.push_back(entry.wait);
        waits.back().waitedMs = millisecondsSince(entry.since, now);
    }
    return waits;
}

std::uint64_t VoHangDetector::GetReportCount() noexcept
{
    return state().reports.load(std::memory_order_relaxed);
}

bool VoHangDetector::WaitUntilDispatchedOrReplied(VoThreadSendStatus& status, const VoMessage& message,
                                                  const VoMessageHandlerBase& dispatcher)
{
    const std::uint32_t timeoutMs = GetTimeout();
    const auto result = status.WaitUntilDispatchedOrReplied(timeoutMs == 0 ? INFINITE : timeoutMs);
    if (result != VoThreadSendStatus::eWR_TimedOut)
        return result == VoThreadSendStatus::eWR_Dispatched;
    return watchSend(status, message, dispatcher, true, timeoutMs);
}

void VoHangDetector::WaitUntilReplied(VoThreadSendStatus& status, const VoMessage& message,
                                      const VoMessageHandlerBase& dispatcher)
{
    const std::uint32_t timeoutMs = GetTimeout();
    if (!status.GetRepliedEvent().Wait(timeoutMs == 0 ? INFINITE : timeoutMs))
        watchSend(status, message, dispatcher, false, timeoutMs);
}

bool VoHangDetector::watchSend(VoThreadSendStatus& status, const VoMessage& message,
                               const VoMessageHandlerBase& dispatcher, bool untilDispatched, std::uint32_t timeoutMs)
{
    std::optional<CSendEntry> entry;
    try
    {
        entry.emplace(status, message, timeoutMs);
    }
    catch (...)
    {
        // Without an entry the wait goes on unwatched.
    }
    for (std::uint32_t periodMs = timeoutMs;;)
    {
        if (entry && periodMs != 0)
        {
            try
            {
                std::optional<std::wstring> text;
                {
                    SState& s = state();
                    std::lock_guard lock(s.lock);
                    text = CDiagnosis(s, GetCurrentThreadId(), dispatcher, periodMs).Run();
                }
                if (text)
                    log(*text, "VoMessageDispatcher::SendMessageW");
            }
            catch (...)
            {
                // A diagnosis that fails must not end the wait.
            }
        }
        periodMs = GetTimeout();
        const DWORD waitMs = periodMs == 0 ? INFINITE : periodMs;
        if (untilDispatched)
        {
            const auto result = status.WaitUntilDispatchedOrReplied(waitMs);
            if (result != VoThreadSendStatus::eWR_TimedOut)
                return result == VoThreadSendStatus::eWR_Dispatched;
        }
        else if (status.GetRepliedEvent().Wait(waitMs))
            return false;
    }
}

void VoHangDetector::AddHandler(const VoMessageHandlerBase& handler)
{
    SState& s = state();
    std::lock_guard lock(s.lock);
    s.handlers.push_back(&handler);
}

void VoHangDetector::RemoveHandler(const VoMessageHandlerBase& handler)
{
    SState& s = state();
    std::lock_guard lock(s.lock);
    auto it = std::find(s.handlers.begin(), s.handlers.end(), &handler);
    if (it != s.handlers.end())
    {
        *it = s.handlers.back();
        s.handlers.pop_back();
    }
}

void VoHangDetector::BeginBlockedWait(SBlockedWait wait, std::uint32_t waitedMs, const std::wstring& what,
                                      const char* functionName)
{
    SEntry entry;
    entry.since = Clock::now() - std::chrono::milliseconds(waitedMs);
    entry.wait = std::move(wait);
    entry.wait.threadID = GetCurrentThreadId();
    entry.wait.threadName = currentThreadName();
    entry.wait.reported = true;
    {
        SState& s = state();
        std::lock_guard lock(s.lock);
        s.table.insert_or_assign(entry.wait.threadID, entry);
    }
    log(L"Blocked task wait: " + describeThread(entry.wait.threadID, entry.wait.threadName) + L" " + what +
            blockedFor(waitedMs),
        functionName);
}

void VoHangDetector::EndBlockedWait()
{
    SState& s = state();
    std::lock_guard lock(s.lock);
    s.table.erase(GetCurrentThreadId());
}
