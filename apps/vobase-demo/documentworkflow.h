// The document's workflow: idle -> processing -> done.
//
//   idle --[command Process: pooled transfer, status "processing"]--> processing
//   processing --[command Finish: blocking transfer, status "done"]--> done
//
// The manager lives on the thread that calls Open (the demo's main thread,
// which pumps its messages); the commands reach it through the dispatcher.
// Action messages that arrive while a transfer function runs are buffered
// and replayed in order, so both commands may be posted at once.
//
//   CDocumentWorkflow workflow(document);
//   workflow.Open();                                                       // started in "idle"
//   CMessenger::Post(BxSmartPointer<const VoMessage>(new VoMessageCommand(CDocumentWorkflow::c_CommandProcess)));
//   CMessenger::Post(BxSmartPointer<const VoMessage>(new VoMessageCommand(CDocumentWorkflow::c_CommandFinish)));
//   ui.PumpUntil([&] { return workflow.GetCurrentStateName() == L"done"; }, 3000ms);
//   workflow.Close();
#pragma once

#include "document.h"
#include "documenttransfer.h"

#include <vobase/workflow/voworkflowmanager.h>

#include <cstdint>
#include <string>
#include <vector>

class CDocumentWorkflow : public VoWorkflowManager
{
public:
    /// Command ids of the two action messages.
    static constexpr std::uint64_t c_CommandProcess = 0x8101;
    static constexpr std::uint64_t c_CommandFinish = 0x8102;

    /// The workflow of `document` (which must outlive it), registered but not started.
    explicit CDocumentWorkflow(CDocument& document);
    /// Stops the workflow and unsubscribes.
    ~CDocumentWorkflow() override;

    /// Creates the manager's window on the calling thread and starts the
    /// workflow; throws BxException when either fails.
    void Open();
    /// Stops the workflow, unsubscribes and destroys the window; nothing when not open.
    void Close();

    /// The current state's name; empty while a transfer function runs.
    std::wstring GetCurrentStateName() const;
    /// The states entered so far, in order (manager's thread only).
    const std::vector<std::wstring>& GetJournal() const noexcept { return m_journal; }
    /// The pooled transfer function (for the thread it ran on).
    const CDocumentTransfer& GetProcessTransfer() const noexcept { return *m_process; }

private:
    std::vector<std::wstring> m_journal;
    BxSmartPointer<CDocumentTransfer> m_process;
    BxSmartPointer<CDocumentTransfer> m_finish;
};
