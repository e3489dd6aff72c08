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
    explicit CContextReset(VoTaskManager& manager) : IContext(manager) {}
};

}  // namespace TaskManager
