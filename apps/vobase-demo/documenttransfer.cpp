#include "documenttransfer.h"

#include <vobase/messaging/vomessagecommand.h>

#include <bxbase/threading/bxthreadapi.h>

CDocumentTransfer::CDocumentTransfer(const VoMessageHandlerBase& manager, CDocument& document, std::uint64_t command,
                                     std::wstring status, bool blocking, const wchar_t* name)
    : VoTransferFunctionAutomatic(manager, BxSmartPointer<const VoMessageWorkflowAction>(new VoMessageCommand(command)),
                                  false, blocking, name),
      m_document(document), m_status(std::move(status))
{
}

void CDocumentTransfer::execute(const VoMessageWorkflowAction&)
{
    m_lastThreadID = GetCurrentThreadId();
    m_document.SetStatus(m_status);
}
