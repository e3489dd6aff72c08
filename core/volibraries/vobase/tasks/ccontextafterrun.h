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
    CContextAfterRun(VoTaskManager& manager, std::string name, std::uint64_t elapsedMicroseconds)
        : IContext(manager), m_name(std::move(name)), m_elapsed(elapsedMicroseconds)
    {
    }

    const std::string& GetName() const noexcept { return m_name; }
    std::uint64_t GetElapsedMicroseconds() const noexcept { return m_elapsed; }

private:
    std::string m_name;
    std::uint64_t m_elapsed;
};

}  // namespace TaskManager
