// Base of every message that may drive a workflow: the workflow manager
// selects a transfer function by the action message it receives.
//
//   class CMsgOpenFile : public VoMessageWorkflowAction { BX_DECLARE_RTTI(); ... };
#pragma once

#include <vobase/messaging/vomessage.h>

/// Base of every message that may drive a workflow: the workflow manager selects a transfer function by the
/// action message it receives.
class VOBASE_API VoMessageWorkflowAction : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    VoMessageWorkflowAction() = default;
    /// Copies nothing (the class has no fields); the copy is a new message with a fresh ID.
    VoMessageWorkflowAction(const VoMessageWorkflowAction&) = default;
    /// Moves nothing (the class has no fields); the new message gets a fresh ID.
    VoMessageWorkflowAction(VoMessageWorkflowAction&&) noexcept = default;
    /// Copies nothing (the class has no fields); this message takes a fresh ID.
    VoMessageWorkflowAction& operator=(const VoMessageWorkflowAction&) = default;
    /// Moves nothing (the class has no fields); this message takes a fresh ID.
    VoMessageWorkflowAction& operator=(VoMessageWorkflowAction&&) noexcept = default;
    ~VoMessageWorkflowAction() override = default;
};
