// The context of the stop hook: the state the workflow stopped in (null
// when it stopped after a transfer function).
//
//   void OnStop(const Workflow::CContextStop& c) override { stopped(c.GetState()); }
#pragma once

#include <vobase/workflow/icontext.h>
#include <vobase/workflow/voworkflowstate.h>

namespace Workflow {

/// The context of the stop hook: the state the workflow stopped in (null when it stopped after a transfer
/// function).
class VOBASE_API CContextStop : public IContext
{
public:
    /// The stop of `manager`'s workflow, which was in `state` (may be null).
    CContextStop(const VoWorkflowManager& manager, BxSmartPointer<const VoWorkflowState> state)
        : IContext(manager), m_state(std::move(state))
    {
    }
    /// The state the workflow stopped in (it is left now), or null.
    const BxSmartPointer<const VoWorkflowState>& GetState() const noexcept { return m_state; }

private:
    BxSmartPointer<const VoWorkflowState> m_state;
};

}  // namespace Workflow
