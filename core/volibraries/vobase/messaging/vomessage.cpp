#include <vobase/messaging/vomessage.h>

#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstreamwriteasciitrace.h>

#include <atomic>

BX_IMPLEMENT_RTTI(VoMessage)

namespace {
std::atomic<std::uint32_t> g_lastMessageID{0};  // ID of the message made last
}

std::uint32_t VoMessage::nextID() noexcept
{
    return g_lastMessageID.fetch_add(1, std::memory_order_relaxed) + 1;
}

VoMessage::VoMessage() : m_id(nextID()) {}

VoMessage::VoMessage(const VoMessage&) : IReferenceCounted(), IObject(), m_id(nextID()) {}

VoMessage::VoMessage(VoMessage&&) noexcept : IReferenceCounted(), IObject(), m_id(nextID()) {}

VoMessage& VoMessage::operator=(const VoMessage&)
{
    m_id = nextID();
    return *this;
}

VoMessage& VoMessage::operator=(VoMessage&&) noexcept
{
    m_id = nextID();
    return *this;
}

VoMessage::~VoMessage() = default;

void VoMessage::Dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    stream << GetRTTI().GetName();
}

void VoMessage::Dump() const
{
    BxStreamWriteASCIITrace trace;
    Dump(trace);
}

CStringW VoMessage::ToString() const
{
    BxStreamWriteASCIIStringT<CStringW> stream;
    Dump(stream);
    return stream.GetString();
}

bool VoMessage::operator==(const VoMessage& other) const
{
    return this == &other;
}
