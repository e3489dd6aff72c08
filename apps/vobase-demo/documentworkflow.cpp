#include "documentworkflow.h"

#include "documenthassamples.h"
#include "documentstate.h"

#include <vobase/workflow/vomessageworkflow.h>

#include <bxbase/bxexception.h>

CDocumentWorkflow::CDocumentWorkflow(CDocument& document)
    : VoWorkflowManager(L"DocumentWorkflow", eWMF_BufferMessages),
      m_process(new CDocumentTransfer(*this, document, c_CommandProcess, L"processing", false, L"Process")),
      m_finish(new CDocumentTransfer(*this, document, c_CommandFinish, L"done", true, L"Finish"))
{
    BxSmartPointer<VoWorkflowState> idle(new CDocumentState(L"idle", m_journal));
    BxSmartPointer<VoWorkflowState> processing(new CDocumentState(L"processing", m_journal));
    BxSmartPointer<VoWorkflowState> done(new CDocumentState(L"done", m_journal));
    RegisterWorkflowState(idle);
    RegisterWorkflowState(processing);
    RegisterWorkflowState(done);
    RegisterWorkflowStateCondition(idle, BxSmartPointer<const VoWorkflowStateCondition>(new CDocumentHasSamples(document)),
                                   true);
    RegisterTransferFunction(idle, processing, BxSmartPointer<VoTransferFunctionAutomatic>(m_process.get()));
    RegisterTransferFunction(processing, done, BxSmartPointer<VoTransferFunctionAutomatic>(m_finish.get()));
}

CDocumentWorkflow::~CDocumentWorkflow()
{
    Close();
}

void CDocumentWorkflow::Open()
{
    if (!initMessageHandler())
        BX_THROW(BxException, "CDocumentWorkflow::Open", L"the manager's window could not be created");
    if (HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Get() != 1)
        BX_THROW(BxException, "CDocumentWorkflow::Open", L"the workflow did not start");
}

void CDocumentWorkflow::Close()
{
    if (GetHWND() == nullptr)
        return;
    if (IsStarted())
        HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Ignore();
    UnsubscribeAll();
    destroyMessageHandler().Ignore();
}

std::wstring CDocumentWorkflow::GetCurrentStateName() const
{
    const BxSmartPointer<VoWorkflowState> state = GetCurrentState();
    const auto* named = dynamic_cast<const CDocumentState*>(state.get());
    return named ? named->GetName() : std::wstring();
}
