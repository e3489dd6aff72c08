// The work item that runs an automatic transfer function and reports its
// end to the workflow manager with a VoMessageWorkflowEndOfTF (eM_EndOfATF)
// posted through the dispatcher.
//
//   BxSmartPointer<IWorkItem> item(new VoTaskTransferFunctionAutomatic(tf, manager, logger));
//   TaskManager::SWorkItemStatus status;
//   item->Run(status);            // Run() of tf, then the end message to `manager`
//
// A workflow manager that runs the item on its own thread (a blocking
// transfer function) ends the transfer function itself and builds the item
// with postEnd = false, so that no second end arrives later.
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/workflow/votransferfunctionautomatic.h>

#include <bxbase/logging/ilogger.h>

/// The work item that runs an automatic transfer function and reports its end to the workflow manager with a
/// VoMessageWorkflowEndOfTF (eM_EndOfATF) posted through the dispatcher.
class VOBASE_API VoTaskTransferFunctionAutomatic : public IWorkItem
{
public:
    /// `logger` may be null (nothing is logged).
    VoTaskTransferFunctionAutomatic(BxSmartPointer<VoTransferFunctionAutomatic> transferFunction,
                                    const VoMessageHandlerBase& handler, BxSmartPointer<Logging::ILogger> logger,
                                    bool postEnd = true);

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    /// Runs the transfer function ("Exception in '%s::Run'" should anything
    /// escape), then posts the end message.
    void Run(TaskManager::SWorkItemStatus& status) override;

    /// The automatic transfer function the item runs (shared with the manager).
    const BxSmartPointer<VoTransferFunctionAutomatic>& GetTransferFunction() const noexcept { return m_transferFunction; }
    /// The handler (the workflow manager) to which the end message is posted.
    const VoMessageHandlerBase& GetHandler() const noexcept { return m_handler; }

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    BxSmartPointer<VoTransferFunctionAutomatic> m_transferFunction;
    const VoMessageHandlerBase& m_handler;
    BxSmartPointer<Logging::ILogger> m_logger;
    bool m_postEnd;
};
