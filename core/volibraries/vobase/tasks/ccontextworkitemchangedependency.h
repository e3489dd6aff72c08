// The context of the dependency hooks: a flag (0 from AddDependency, 1 from
// RemoveDependency) and both names.
//
//   void OnAddDependency(const TaskManager::CContextWorkItemChangeDependency& c) override {
//       edges.emplace_back(c.GetFrom(), c.GetTo());
//   }
#pragma once

#include <vobase/tasks/icontext.h>

#include <string>

namespace TaskManager {

/// The context of the dependency hooks: a flag (0 from AddDependency, 1 from RemoveDependency) and both names.
class VOBASE_API CContextWorkItemChangeDependency : public IContext
{
public:
    CContextWorkItemChangeDependency(VoTaskManager& manager, int flag, std::string from, std::string to)
        : IContext(manager), m_flag(flag), m_from(std::move(from)), m_to(std::move(to))
    {
    }

    int GetFlag() const noexcept { return m_flag; }
    const std::string& GetFrom() const noexcept { return m_from; }
    const std::string& GetTo() const noexcept { return m_to; }

private:
    int m_flag;
    std::string m_from;
    std::string m_to;
};

}  // namespace TaskManager
