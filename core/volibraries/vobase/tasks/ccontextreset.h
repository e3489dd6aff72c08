// The context of the reset hook (Reset and the destructor): only the manager.
//
//   void OnReset(const TaskManager::CContextReset& c) override { forget(&c.GetTaskManager()); }
#pragma once

#include <vobase/tasks/icontext.h>

namespace TaskManager {

/// The context of the reset hook (Reset and the destructor): only the manager.
class VOBASE_API CContextReset : public IContext
{
public:
    /// The context of a reset of `manager` (by Reset or by its destructor).
    explicit CContextReset(VoTaskManager& manager) : IContext(manager) {}
};

}  // namespace TaskManager
