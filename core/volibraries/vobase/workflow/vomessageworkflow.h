// The control message of a workflow manager: start, stop, sleep, continue,
// break, re-evaluate or dump.
//
//   VoWorkflowManager::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageWorkflow(VoMessageWorkflow::eM_Start)), manager);
//   VoMessageWorkflow(VoMessageWorkflow::eM_Sleep).ToString();   // L"VoMessageWorkflow (eM_Sleep)"
//
// Clonable through the type registry.
#pragma once

#include <vobase/messaging/vomessage.h>

/// The control message of a workflow manager: start, stop, sleep, continue, break, re-evaluate or dump.
class VOBASE_API VoMessageWorkflow : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    /// The action (32-bit, values fixed).
    enum EMessage : std::uint32_t
    {
        eM_Start = 0,
        eM_StartSleeping = 1,
        eM_Stop = 2,
        eM_Continue = 3,
        eM_Sleep = 4,
        eM_Break = 5,
        eM_Reevaluate = 6,
        eM_Dump = 7
    };

    VoMessageWorkflow() : VoMessageWorkflow(eM_Start) {}
    /// A control message asking for `message`.
    explicit VoMessageWorkflow(EMessage message) : m_message(message) {}
    /// Copies the action; the copy is a new message with a fresh ID.
    VoMessageWorkflow(const VoMessageWorkflow&) = default;
    /// Moves the action; the new message gets a fresh ID.
    VoMessageWorkflow(VoMessageWorkflow&&) noexcept = default;
    /// Copies the action; this message takes a fresh ID.
    VoMessageWorkflow& operator=(const VoMessageWorkflow&) = default;
    /// Moves the action; this message takes a fresh ID.
    VoMessageWorkflow& operator=(VoMessageWorkflow&&) noexcept = default;
    ~VoMessageWorkflow() override = default;

    /// The action.
    EMessage GetMessageW() const noexcept { return m_message; }

    /// Appends " (" action name ")", or " (???)" for a value outside the table.
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const override;

    /// The name of `message` ("eM_Start" ...), or "???".
    static const wchar_t* GetName(std::uint32_t message) noexcept;

private:
    EMessage m_message;
};
