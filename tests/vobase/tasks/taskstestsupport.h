// Helpers of the task tests: a thread-safe capturing logger and work items
// driven by functions.
#pragma once

#include <vobase/tasks/iworkitem.h>
#include <vobase/tasks/votaskmanager.h>

#include <bxbase/bxreferencecounter.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace TaskTests {

/// Keeps every line at or above its level; counts the IsEnabled questions too.
class CCapturingLogger : public Logging::ILogger
{
public:
    explicit CCapturingLogger(Logging::ELogLevel level = Logging::eLL_Trace) : m_level(level) {}

    bool IsEnabled(Logging::ELogLevel level) const override { return level <= m_level; }
    void Log(Logging::ELogLevel level, const char*, int, const char*, const std::wstring& message) override
    {
        std::lock_guard lock(m_mutex);
        m_lines.push_back({level, message});
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

    struct SLine
    {
        Logging::ELogLevel level;
        std::wstring message;
    };
    std::vector<SLine> Lines() const
    {
        std::lock_guard lock(m_mutex);
        return m_lines;
    }
    std::vector<std::wstring> Messages() const
    {
        std::vector<std::wstring> texts;
        for (const SLine& line : Lines())
            texts.push_back(line.message);
        return texts;
    }
    bool Has(const std::wstring& message) const
    {
        for (const SLine& line : Lines())
            if (line.message == message)
                return true;
        return false;
    }
    std::size_t Count(const std::wstring& message) const
    {
        std::size_t count = 0;
        for (const SLine& line : Lines())
            count += line.message == message;
        return count;
    }

private:
    Logging::ELogLevel m_level;
    mutable std::mutex m_mutex;
    std::vector<SLine> m_lines;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

/// A work item whose Run calls a function; IsReady answers `ready`.
class CItem : public IWorkItem
{
public:
    using Body = std::function<void(TaskManager::SWorkItemStatus&)>;
    explicit CItem(Body body = {}, bool ready = true) : m_body(std::move(body)), m_ready(ready) {}

    void Prepare(VoGraphNode&) override { ++prepared; }
    bool IsReady() const override { return m_ready; }
    void Run(TaskManager::SWorkItemStatus& status) override
    {
        if (m_body)
            m_body(status);
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

    std::atomic<int> prepared{0};

private:
    Body m_body;
    bool m_ready;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

inline BxSmartPointer<IWorkItem> item(CItem::Body body = {}, bool ready = true)
{
    return BxSmartPointer<IWorkItem>(new CItem(std::move(body), ready));
}

/// Records the order in which items ran (thread-safe).
class CJournal
{
public:
    void Note(const std::string& name)
    {
        std::lock_guard lock(m_mutex);
        m_names.push_back(name);
    }
    std::vector<std::string> Names() const
    {
        std::lock_guard lock(m_mutex);
        return m_names;
    }
    /// An item that notes its name.
    BxSmartPointer<IWorkItem> Item(const std::string& name)
    {
        return item([this, name](TaskManager::SWorkItemStatus&) { Note(name); });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_names;
};

/// An item that signals `entered` and then blocks until `open` or its break event is set.
inline BxSmartPointer<IWorkItem> gatedItem(BxEvent entered, BxEvent open, std::function<void()> after = {})
{
    return item([entered, open, after](TaskManager::SWorkItemStatus& status) mutable {
        entered.Set();
        BxEvent::WaitForMultipleEvents({open, status.breakEvent}, INFINITE);
        if (after)
            after();
    });
}

}  // namespace TaskTests
