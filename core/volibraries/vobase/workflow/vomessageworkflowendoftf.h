// The end of a transfer function, reported to its workflow manager by the
// work items that run transfer functions off the manager's thread.
//
//   // only the workflow side makes them:
//   VoWorkflowManager::PostEndOfInteractiveTransferFunction(manager);
//   message.ToString();          // L"VoMessageWorkflowEndOfTF (eM_EndOfATF)"
//
// The constructor from a value is private: VoWorkflowManager and the two
// work items (VoTaskTransferFunctionAutomatic,
// VoTaskEndOfTransferFunctionInteractive) create these messages.
#pragma once

#include <vobase/messaging/vomessage.h>

class VoWorkflowManager;
class VoTaskTransferFunctionAutomatic;
class VoTaskEndOfTransferFunctionInteractive;

/// The end of a transfer function, reported to its workflow manager by the work items that run transfer functions
/// off the manager's thread.
class VOBASE_API VoMessageWorkflowEndOfTF : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    /// What ended (32-bit, values fixed).
    enum EMessage : std::uint32_t
    {
        eM_EndOfATF = 0,     ///< an automatic transfer function has finished running
        eM_EndOfITF = 1,     ///< an interactive transfer function ends
        eM_EndOfITFExit = 2  ///< the exit of an interactive transfer function has finished
    };

    /// eM_EndOfATF (the type registry's factory needs a default constructor).
    VoMessageWorkflowEndOfTF() : VoMessageWorkflowEndOfTF(eM_EndOfATF) {}
    /// Copies what ended; the copy is a new message with a fresh ID.
    VoMessageWorkflowEndOfTF(const VoMessageWorkflowEndOfTF&) = default;
    /// Moves what ended; the new message gets a fresh ID.
    VoMessageWorkflowEndOfTF(VoMessageWorkflowEndOfTF&&) noexcept = default;
    /// Copies what ended; this message takes a fresh ID.
    VoMessageWorkflowEndOfTF& operator=(const VoMessageWorkflowEndOfTF&) = default;
    /// Moves what ended; this message takes a fresh ID.
    VoMessageWorkflowEndOfTF& operator=(VoMessageWorkflowEndOfTF&&) noexcept = default;
    ~VoMessageWorkflowEndOfTF() override = default;

    /// What ended.
    EMessage GetMessageW() const noexcept { return m_message; }

    /// Appends " (" name ")", or " (???)" for a value outside the table.
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

    /// The name of `message` ("eM_EndOfATF" ...), or "???".
    static const wchar_t* GetName(std::uint32_t message) noexcept;

private:
    friend class VoWorkflowManager;
    friend class VoTaskTransferFunctionAutomatic;
    friend class VoTaskEndOfTransferFunctionInteractive;

    explicit VoMessageWorkflowEndOfTF(EMessage message) : m_message(message) {}

    EMessage m_message;
};
