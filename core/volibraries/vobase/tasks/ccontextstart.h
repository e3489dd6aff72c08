// The context of the Start hook: the name and the requested priority.
//
//   void OnStart(const TaskManager::CContextStart& c) override { started(c.GetName(), c.GetPriority()); }
#pragma once

#include <vobase/tasks/icontext.h>
#include <vobase/tasks/itaskmanager.h>

#include <string>

namespace TaskManager {

/// The context of the Start hook: the name and the requested priority.
class VOBASE_API CContextStart : public IContext
{
public:
    /// The context of `manager`'s Start of the work item `name` at `priority`.
    CContextStart(VoTaskManager& manager, std::string name, ITaskManager::EPriority priority)
        : IContext(manager), m_name(std::move(name)), m_priority(priority)
    {
    }

    /// The name given to Start; the hook runs even when no item of that name
    /// exists or the manager is resetting (the start is then ignored).
    const std::string& GetName() const noexcept { return m_name; }
    /// The priority given to Start, as requested (before it is mapped to a
    /// thread-pool priority).
    ITaskManager::EPriority GetPriority() const noexcept { return m_priority; }

private:
    std::string m_name;
    ITaskManager::EPriority m_priority;
};

}  // namespace TaskManager
