// The context of the start hook: the start state and whether the workflow
// started sleeping.
//
//   void OnStart(const Workflow::CContextStart& c) override { started(c.GetState(), c.IsSleeping()); }
#pragma once

#include <vobase/workflow/icontext.h>
#include <vobase/workflow/voworkflowstate.h>

namespace Workflow {

/// The context of the start hook: the start state and whether the workflow started sleeping.
class VOBASE_API CContextStart : public IContext
{
public:
    /// The start of `manager`'s workflow in `state`, asleep when `sleeping`.
    CContextStart(const VoWorkflowManager& manager, BxSmartPointer<const VoWorkflowState> state, bool sleeping)
        : IContext(manager), m_state(std::move(state)), m_sleeping(sleeping)
    {
    }
    /// The state the workflow started in.
    const BxSmartPointer<const VoWorkflowState>& GetState() const noexcept { return m_state; }
    /// True when the workflow started sleeping (eM_StartSleeping): the state's messages are not subscribed yet.
    bool IsSleeping() const noexcept { return m_sleeping; }

private:
    BxSmartPointer<const VoWorkflowState> m_state;
    bool m_sleeping;
};

}  // namespace Workflow
