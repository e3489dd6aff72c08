#include <vobase/workflow/votransferfunctioninteractive.h>

const BxRTTI VoTransferFunctionInteractive::RTTI(L"VoTransferFunctionInteractive", {&VoTransferFunction::RTTI});

VoTransferFunctionInteractive::VoTransferFunctionInteractive(BxSmartPointer<const VoMessageWorkflowAction> initMessage,
                                                             bool breakSupport, bool blockingExit)
    : VoTransferFunction(std::move(initMessage), breakSupport), m_blockingExit(blockingExit)
{
}

VoTransferFunctionInteractive::VoTransferFunctionInteractive(BxSmartPointer<const VoMessageWorkflowAction> initMessage,
                                                             bool breakSupport, bool blockingExit,
                                                             const CStringW& name)
    : VoTransferFunction(std::move(initMessage), breakSupport, name), m_blockingExit(blockingExit)
{
}

void VoTransferFunctionInteractive::onInit(const VoMessageWorkflowAction&)
{
    m_running.store(true, std::memory_order_release);
}

void VoTransferFunctionInteractive::onExit()
{
    m_running.store(false, std::memory_order_release);
    m_sleeping.store(false, std::memory_order_release);
}

void VoTransferFunctionInteractive::onSleep()
{
    m_sleeping.store(true, std::memory_order_release);
}

void VoTransferFunctionInteractive::onContinue()
{
    if (IsRunning() && IsSleeping())
        m_sleeping.store(false, std::memory_order_release);
}
