#include "msgprogress.h"

BX_IMPLEMENT_RTTI(CMsgProgress, &VoMessage::RTTI)
