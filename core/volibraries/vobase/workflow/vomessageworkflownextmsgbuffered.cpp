#include <vobase/workflow/vomessageworkflownextmsgbuffered.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageWorkflowNextMsgBuffered, &VoMessage::RTTI)
