#include <vobase/workflow/votaskendoftransferfunctioninteractive.h>

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/vomessageworkflowendoftf.h>

VoTaskEndOfTransferFunctionInteractive::VoTaskEndOfTransferFunctionInteractive(
    BxSmartPointer<VoTransferFunctionInteractive> transferFunction, const VoMessageHandlerBase& handler,
    BxSmartPointer<Logging::ILogger> logger, bool postEnd)
    : m_transferFunction(std::move(transferFunction)), m_handler(handler), m_logger(std::move(logger)),
      m_postEnd(postEnd)
{
}

void VoTaskEndOfTransferFunctionInteractive::Run(TaskManager::SWorkItemStatus&)
{
    const wchar_t* name = m_transferFunction->GetName().c_str();
    try {
        if (m_logger)
            m_logger->Info(__FILE__, __LINE__, "VoTaskEndOfTransferFunctionInteractive::Run", L"Calling '%s::onExit'",
                           name);
        m_transferFunction->onExit();
    } catch (...) {
        if (m_logger)
            m_logger->Error(__FILE__, __LINE__, "VoTaskEndOfTransferFunctionInteractive::Run",
                            L"Exception in '%s::onExit'", name);
    }
    if (m_postEnd)
        VoMessageDispatcher::PostMessageW(
            BxSmartPointer<const VoMessage>(new VoMessageWorkflowEndOfTF(VoMessageWorkflowEndOfTF::eM_EndOfITFExit)),
            m_handler);
}
