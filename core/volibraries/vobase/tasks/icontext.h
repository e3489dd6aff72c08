// Base of the context objects that a task manager hands to its interceptors.
//
//   void OnStart(const TaskManager::CContextStart& context) override {
//       trace(context.GetTaskManager(), context.GetName());
//   }
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/interceptor/icontext.h>

class VoTaskManager;

namespace TaskManager {

/// Base of the context objects that a task manager hands to its interceptors.
class VOBASE_API IContext : public Interceptor::IContext
{
public:
    /// A context naming `manager`, which must outlive the context (it is not
    /// owned).
    explicit IContext(VoTaskManager& manager) noexcept : m_manager(&manager) {}

    /// The manager that raised the hook.
    VoTaskManager& GetTaskManager() const noexcept { return *m_manager; }

private:
    VoTaskManager* m_manager; ///< not owned; lives as long as the hook call
};

}  // namespace TaskManager
