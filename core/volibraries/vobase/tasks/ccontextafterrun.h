// The timing context passed at the end of every processing-task run: the
// work-item name the task started from and the run's elapsed time in
// microseconds.
//
//   void OnAfterRun(const TaskManager::CContextAfterRun& c) override {
//       profile[c.GetName()] += c.GetElapsedMicroseconds();
//   }
#pragma once

#include <vobase/tasks/icontext.h>

#include <cstdint>
#include <string>

namespace TaskManager {

/// The timing context passed at the end of every processing-task run: the work-item name the task started from
/// and the run's elapsed time in microseconds.
class VOBASE_API CContextAfterRun : public IContext
{
public:
    /// The context of one processing-task run of `manager`, started from the
    /// work item `name`, that took `elapsedMicroseconds`.
    CContextAfterRun(VoTaskManager& manager, std::string name, std::uint64_t elapsedMicroseconds)
        : IContext(manager), m_name(std::move(name)), m_elapsed(elapsedMicroseconds)
    {
    }

    /// The name of the work item the run started from (a fork's branch task
    /// reports the item its branch began with).
    const std::string& GetName() const noexcept { return m_name; }
    /// How long the run took, in microseconds, waits for a predecessor task
    /// and for forked branches included.
    std::uint64_t GetElapsedMicroseconds() const noexcept { return m_elapsed; }

private:
    std::string m_name;
    std::uint64_t m_elapsed;
};

}  // namespace TaskManager
