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
    /// The context of a dependency change of `manager` between the work items
    /// `from` and `to`; `flag` is 0 for AddDependency, 1 for RemoveDependency.
    CContextWorkItemChangeDependency(VoTaskManager& manager, int flag, std::string from, std::string to)
        : IContext(manager), m_flag(flag), m_from(std::move(from)), m_to(std::move(to))
    {
    }

    /// 0 when the dependency is being added, 1 when it is being removed.
    int GetFlag() const noexcept { return m_flag; }
    /// The name of the item that runs first (the dependency's source).
    const std::string& GetFrom() const noexcept { return m_from; }
    /// The name of the item that depends on it and runs after it.
    const std::string& GetTo() const noexcept { return m_to; }

private:
    int m_flag;
    std::string m_from;
    std::string m_to;
};

}  // namespace TaskManager
