// Tells a workflow manager to take the next message from its buffer. The
// manager posts it to itself, so that each buffered action message is
// handled as a message of its own.
//
//   VoWorkflowManager::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageWorkflowNextMsgBuffered), manager);
#pragma once

#include <vobase/messaging/vomessage.h>

/// Tells a workflow manager to take the next message from its buffer.
class VOBASE_API VoMessageWorkflowNextMsgBuffered : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    VoMessageWorkflowNextMsgBuffered() = default;
    VoMessageWorkflowNextMsgBuffered(const VoMessageWorkflowNextMsgBuffered&) = default;
    VoMessageWorkflowNextMsgBuffered(VoMessageWorkflowNextMsgBuffered&&) noexcept = default;
    VoMessageWorkflowNextMsgBuffered& operator=(const VoMessageWorkflowNextMsgBuffered&) = default;
    VoMessageWorkflowNextMsgBuffered& operator=(VoMessageWorkflowNextMsgBuffered&&) noexcept = default;
    ~VoMessageWorkflowNextMsgBuffered() override = default;
};
