#include "msgrequest.h"

BX_IMPLEMENT_RTTI(CMsgRequest, &VoMessage::RTTI)
