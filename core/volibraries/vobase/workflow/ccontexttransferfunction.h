// The context of the transfer-function start and end hooks: the transfer
// function with its source and target states.
//
//   void OnTransferFunctionStart(const Workflow::CContextTransferFunction& c) override {
//       trace(c.GetTransferFunction()->GetName());
//   }
#pragma once

#include <vobase/workflow/icontext.h>
#include <vobase/workflow/votransferfunction.h>
#include <vobase/workflow/voworkflowstate.h>

namespace Workflow {

/// The context of the transfer-function start and end hooks: the transfer function with its source and target
/// states.
class VOBASE_API CContextTransferFunction : public IContext
{
public:
    /// `transferFunction` of `manager`, registered from `source` to `target`.
    CContextTransferFunction(const VoWorkflowManager& manager, BxSmartPointer<const VoTransferFunction> transferFunction,
                             BxSmartPointer<const VoWorkflowState> source, BxSmartPointer<const VoWorkflowState> target)
        : IContext(manager), m_transferFunction(std::move(transferFunction)), m_source(std::move(source)),
          m_target(std::move(target))
    {
    }
    /// The transfer function that starts or ends (automatic or interactive).
    const BxSmartPointer<const VoTransferFunction>& GetTransferFunction() const noexcept { return m_transferFunction; }
    /// The state the transfer function leaves.
    const BxSmartPointer<const VoWorkflowState>& GetSource() const noexcept { return m_source; }
    /// The state the transfer function enters when it ends (unless a stop is pending).
    const BxSmartPointer<const VoWorkflowState>& GetTarget() const noexcept { return m_target; }

private:
    BxSmartPointer<const VoTransferFunction> m_transferFunction;
    BxSmartPointer<const VoWorkflowState> m_source;
    BxSmartPointer<const VoWorkflowState> m_target;
};

}  // namespace Workflow
