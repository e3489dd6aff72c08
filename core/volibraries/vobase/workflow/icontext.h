// Base of the context objects that a workflow manager hands to its
// interceptors (Workflow::IInterceptorWorkflowManager).
//
//   void OnStart(const Workflow::CContextStart& c) override { trace(c.GetWorkflowManager().GetName()); }
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/interceptor/icontext.h>

class VoWorkflowManager;

namespace Workflow {

/// Base of the context objects that a workflow manager hands to its interceptors
/// (Workflow::IInterceptorWorkflowManager).
class VOBASE_API IContext : public Interceptor::IContext
{
public:
    /// A context raised by `manager` (not owned; it outlives the hook call).
    explicit IContext(const VoWorkflowManager& manager) noexcept : m_manager(&manager) {}
    /// The manager that raised the hook.
    const VoWorkflowManager& GetWorkflowManager() const noexcept { return *m_manager; }

private:
    const VoWorkflowManager* m_manager;  ///< not owned; lives as long as the hook call
};

}  // namespace Workflow
