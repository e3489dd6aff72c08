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
    CContextWorkItem(VoTaskManager& manager, std::string name, int flag = 1)
        : IContext(manager), m_name(std::move(name)), m_flag(flag)
    {
    }

    const std::string& GetName() const noexcept { return m_name; }
    int GetFlag() const noexcept { return m_flag; }

private:
    std::string m_name;
    int m_flag;
};

}  // namespace TaskManager
