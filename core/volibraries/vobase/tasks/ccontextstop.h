// The context of the Stop hook: the name.
//
//   void OnStop(const TaskManager::CContextStop& c) override { stopped(c.GetName()); }
#pragma once

#include <vobase/tasks/icontext.h>

#include <string>

namespace TaskManager {

/// The context of the Stop hook: the name.
class VOBASE_API CContextStop : public IContext
{
public:
    /// The context of `manager`'s Stop of the work item `name`.
    CContextStop(VoTaskManager& manager, std::string name) : IContext(manager), m_name(std::move(name)) {}

    /// The name given to Stop (the hook runs whether or not it exists).
    const std::string& GetName() const noexcept { return m_name; }

private:
    std::string m_name;
};

}  // namespace TaskManager
