#include <vobase/workflow/votasktransferfunctionautomatic.h>

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/vomessageworkflowendoftf.h>

VoTaskTransferFunctionAutomatic::VoTaskTransferFunctionAutomatic(
    BxSmartPointer<VoTransferFunctionAutomatic> transferFunction, const VoMessageHandlerBase& handler,
    BxSmartPointer<Logging::ILogger> logger, bool postEnd)
    : m_transferFunction(std::move(transferFunction)), m_handler(handler), m_logger(std::move(logger)),
      m_postEnd(postEnd)
{
}

void VoTaskTransferFunctionAutomatic::Run(TaskManager::SWorkItemStatus&)
{
    try {
        m_transferFunction->Run();
    } catch (...) {
        if (m_logger)
            m_logger->Error(__FILE__, __LINE__, "VoTaskTransferFunctionAutomatic::Run", L"Exception in '%s::Run'",
                            m_transferFunction->GetName().c_str());
    }
    if (m_postEnd)
        VoMessageDispatcher::PostMessageW(
            BxSmartPointer<const VoMessage>(new VoMessageWorkflowEndOfTF(VoMessageWorkflowEndOfTF::eM_EndOfATF)),
            m_handler);
}
