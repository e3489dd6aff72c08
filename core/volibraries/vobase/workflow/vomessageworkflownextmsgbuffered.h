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
    /// Copies nothing (the message has no fields); the copy is a new message with a fresh ID.
    VoMessageWorkflowNextMsgBuffered(const VoMessageWorkflowNextMsgBuffered&) = default;
    /// Moves nothing (the message has no fields); the new message gets a fresh ID.
    VoMessageWorkflowNextMsgBuffered(VoMessageWorkflowNextMsgBuffered&&) noexcept = default;
    /// Copies nothing (the message has no fields); this message takes a fresh ID.
    VoMessageWorkflowNextMsgBuffered& operator=(const VoMessageWorkflowNextMsgBuffered&) = default;
    /// Moves nothing (the message has no fields); this message takes a fresh ID.
    VoMessageWorkflowNextMsgBuffered& operator=(VoMessageWorkflowNextMsgBuffered&&) noexcept = default;
    ~VoMessageWorkflowNextMsgBuffered() override = default;
};
