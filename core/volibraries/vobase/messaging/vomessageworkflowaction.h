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
    VoMessageWorkflowAction(const VoMessageWorkflowAction&) = default;
    VoMessageWorkflowAction(VoMessageWorkflowAction&&) noexcept = default;
    VoMessageWorkflowAction& operator=(const VoMessageWorkflowAction&) = default;
    VoMessageWorkflowAction& operator=(VoMessageWorkflowAction&&) noexcept = default;
    ~VoMessageWorkflowAction() override = default;
};
