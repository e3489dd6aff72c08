// A transfer function of the document's workflow: triggered by a command
// message, it writes a new status into the document (under a write lock).
// A blocking one runs on the workflow manager's thread; the others run on
// the shared thread pool and report their end to the manager by message.
//
//   BxSmartPointer<VoTransferFunctionAutomatic> process(
//       new CDocumentTransfer(manager, document, ID_PROCESS, L"processing", false, L"Process"));
//   manager.RegisterTransferFunction(idle, processing, process);
#pragma once

#include "document.h"

#include <vobase/workflow/votransferfunctionautomatic.h>

#include <atomic>
#include <cstdint>
#include <string>

class CDocumentTransfer : public VoTransferFunctionAutomatic
{
public:
    /// Triggered by VoMessageCommand(`command`); sets the status to `status`.
    CDocumentTransfer(const VoMessageHandlerBase& manager, CDocument& document, std::uint64_t command,
                      std::wstring status, bool blocking, const wchar_t* name);

    /// The kernel id of the thread of the latest run (0 before the first).
    std::uint32_t GetLastThreadID() const noexcept { return m_lastThreadID.load(); }

protected:
    /// Writes the status.
    void execute(const VoMessageWorkflowAction& message) override;

private:
    CDocument& m_document;
    std::wstring m_status;
    std::atomic<std::uint32_t> m_lastThreadID{0};
};
