// The context of the Add hook: the work item's name and a flag (1).
//
//   void OnAdd(const TaskManager::CContextWorkItem& c) override { names.push_back(c.GetName()); }
#pragma once

#include <vobase/tasks/icontext.h>

#include <string>

namespace TaskManager {

/// The context of the Add hook: the work item's name and a flag (1).
class VOBASE_API CContextWorkItem : public IContext
{
public:
    /// The context of `manager`'s Add of the work item `name`; the manager
    /// passes the default flag 1.
    CContextWorkItem(VoTaskManager& manager, std::string name, int flag = 1)
        : IContext(manager), m_name(std::move(name)), m_flag(flag)
    {
    }

    /// The name of the work item being added.
    const std::string& GetName() const noexcept { return m_name; }
    /// The flag given at construction; 1 for the Add hook.
    int GetFlag() const noexcept { return m_flag; }

private:
    std::string m_name;
    int m_flag;
};

}  // namespace TaskManager
