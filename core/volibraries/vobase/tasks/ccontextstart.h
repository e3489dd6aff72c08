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
    CContextStart(VoTaskManager& manager, std::string name, ITaskManager::EPriority priority)
        : IContext(manager), m_name(std::move(name)), m_priority(priority)
    {
    }

    const std::string& GetName() const noexcept { return m_name; }
    ITaskManager::EPriority GetPriority() const noexcept { return m_priority; }

private:
    std::string m_name;
    ITaskManager::EPriority m_priority;
};

}  // namespace TaskManager
