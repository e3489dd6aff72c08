#include <vobase/workflow/votransferfunction.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

const BxRTTI VoTransferFunction::RTTI(L"VoTransferFunction", {});

namespace {
// The exception names the constructor's own position in votransferfunction.cpp.
void requireInitMessage(const BxSmartPointer<const VoMessageWorkflowAction>& message, int line)
{
    if (!message)
        throw BxExceptionPreconditionViolation("votransferfunction.cpp", line, "VoTransferFunction::VoTransferFunction",
                                               "the init message is null");
}
}  // namespace

VoTransferFunction::VoTransferFunction(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport)
    : m_breakSupport(breakSupport), m_initMessage(std::move(initMessage))
{
    requireInitMessage(m_initMessage, 49);
}

VoTransferFunction::VoTransferFunction(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                                       const CStringW& name)
    : m_breakSupport(breakSupport), m_initMessage(std::move(initMessage)), m_name(name)
{
    requireInitMessage(m_initMessage, 82);
}
