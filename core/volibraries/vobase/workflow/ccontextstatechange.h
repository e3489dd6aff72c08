// The context of the state-change hook: the state left (null at start) and
// the state entered (null when the workflow stops or a transfer function
// takes over).
//
//   void OnStateChange(const Workflow::CContextStateChange& c) override { moved(c.GetFrom(), c.GetTo()); }
#pragma once

#include <vobase/workflow/icontext.h>
#include <vobase/workflow/voworkflowstate.h>

namespace Workflow {

/// The context of the state-change hook: the state left (null at start) and the state entered (null when the
/// workflow stops or a transfer function takes over).
class VOBASE_API CContextStateChange : public IContext
{
public:
    /// A change of `manager`'s current state from `from` to `to`; either may be null.
    CContextStateChange(const VoWorkflowManager& manager, BxSmartPointer<const VoWorkflowState> from,
                        BxSmartPointer<const VoWorkflowState> to)
        : IContext(manager), m_from(std::move(from)), m_to(std::move(to))
    {
    }
    /// The state that was current before; null at the start and when a transfer function has just ended.
    const BxSmartPointer<const VoWorkflowState>& GetFrom() const noexcept { return m_from; }
    /// The state that is current now; null when the workflow stopped or a transfer function took over.
    const BxSmartPointer<const VoWorkflowState>& GetTo() const noexcept { return m_to; }

private:
    BxSmartPointer<const VoWorkflowState> m_from;
    BxSmartPointer<const VoWorkflowState> m_to;
};

}  // namespace Workflow
