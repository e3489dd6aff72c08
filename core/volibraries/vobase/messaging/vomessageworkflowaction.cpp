#include <vobase/messaging/vomessageworkflowaction.h>

BX_IMPLEMENT_RTTI(VoMessageWorkflowAction, &VoMessage::RTTI)
