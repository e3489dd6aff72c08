// The work item that runs the exit of an interactive transfer function and
// reports it to the workflow manager with a VoMessageWorkflowEndOfTF
// (eM_EndOfITFExit) posted through the dispatcher.
//
//   BxSmartPointer<IWorkItem> item(new VoTaskEndOfTransferFunctionInteractive(tf, manager, logger));
//   item->Run(status);   // "Calling 'Edit::onExit'", onExit, then the end message
//
// A manager that runs the exit on its own thread (blocking exit) continues
// at once and builds the item with postEnd = false.
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/workflow/votransferfunctioninteractive.h>

#include <bxbase/logging/ilogger.h>

/// The work item that runs the exit of an interactive transfer function and reports it to the workflow manager
/// with a VoMessageWorkflowEndOfTF (eM_EndOfITFExit) posted through the dispatcher.
class VOBASE_API VoTaskEndOfTransferFunctionInteractive : public IWorkItem
{
public:
    /// `logger` may be null (nothing is logged).
    VoTaskEndOfTransferFunctionInteractive(BxSmartPointer<VoTransferFunctionInteractive> transferFunction,
                                           const VoMessageHandlerBase& handler,
                                           BxSmartPointer<Logging::ILogger> logger, bool postEnd = true);

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }
    void Prepare(VoGraphNode&) override {}
    bool IsReady() const override { return true; }
    /// Logs "Calling '%s::onExit'" and calls onExit ("Exception in
    /// '%s::onExit'" when it throws), then posts the end message.
    void Run(TaskManager::SWorkItemStatus& status) override;

    /// The interactive transfer function whose onExit the item runs (shared with the manager).
    const BxSmartPointer<VoTransferFunctionInteractive>& GetTransferFunction() const noexcept { return m_transferFunction; }
    /// The handler (the workflow manager) to which the end message is posted.
    const VoMessageHandlerBase& GetHandler() const noexcept { return m_handler; }

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    BxSmartPointer<VoTransferFunctionInteractive> m_transferFunction;
    const VoMessageHandlerBase& m_handler;
    BxSmartPointer<Logging::ILogger> m_logger;
    bool m_postEnd;
};
