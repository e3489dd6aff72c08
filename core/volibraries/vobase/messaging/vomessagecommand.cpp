#include <vobase/messaging/vomessagecommand.h>

BX_IMPLEMENT_RTTI_CLONABLE(VoMessageCommand, &VoMessageWindows::RTTI)

VoMessageCommand::VoMessageCommand(std::uint64_t commandID) : VoMessageWindows(eCommandMessageID, commandID, 0) {}
