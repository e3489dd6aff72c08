#include <vobase/messaging/vomessageshutdown.h>

BX_IMPLEMENT_RTTI(VoMessageShutDown, &VoMessage::RTTI)
