#include <vobase/messaging/vomessagetrace.h>

#include <vobase/messaging/vomessage.h>
#include <vobase/messaging/vopostnotification.h>
#include <vobase/messaging/vosendnotification.h>

#include <bxbase/bxstringconvert.h>
#include <bxbase/diagnostics/bxtracebuffer.h>
#include <bxbase/diagnostics/bxtracerecorder.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

/// "<prefix><class name>" as UTF-8; class names are ASCII as a rule and then need no allocation.
class CLabel
{
public:
    CLabel(const char* prefix, const VoMessage& message) noexcept
    {
        const std::size_t prefixSize = std::strlen(prefix);
        std::memcpy(m_buffer, prefix, prefixSize);
        std::size_t size = prefixSize;
        const wchar_t* name = message.GetClassNameW();
        for (; *name != L'\0' && size < BxTraceEvent::kNameCapacity; ++name, ++size)
        {
            if (static_cast<std::uint32_t>(*name) >= 0x80)
            {
                wide(prefix, message);
                return;
            }
            m_buffer[size] = static_cast<char>(*name);
        }
        m_view = std::string_view(m_buffer, size);
    }
    std::string_view Get() const noexcept { return m_view; }

private:
    void wide(const char* prefix, const VoMessage& message) noexcept
    {
        try
        {
            m_text = prefix + BxStringConvert::WideToUtf8Lossy(message.GetClassNameW());
            m_view = m_text;
        }
        catch (...)
        {
            m_view = prefix;
        }
    }

    char m_buffer[BxTraceEvent::kNameCapacity];
    std::string m_text;
    std::string_view m_view;
};

std::wstring_view className(const VoMessage& message) noexcept { return message.GetClassNameW(); }

/// A new arrow leaving the span that began at `spanStart`.
std::uint64_t startFlow(const VoMessage& message, std::uint64_t spanStart) noexcept
{
    const std::uint64_t id = BxTraceRecorder::NewId();
    BxTraceRecorder::FlowStart(VoMessageTrace::kCategory, className(message), id, spanStart);
    return id;
}

} // namespace

std::uint64_t VoMessageTrace::BeginSend(VoSendNotification& notification) noexcept
{
    const std::uint64_t start = BxTraceRecorder::Now();
    notification.flowId = startFlow(*notification.message, start);
    return start;
}

void VoMessageTrace::EndSend(const VoMessage& message, std::uint64_t start) noexcept
{
    BxTraceRecorder::Complete(kCategory, CLabel("send ", message).Get(), start);
}

std::uint64_t VoMessageTrace::Post(const VoMessage& message) noexcept
{
    const std::uint64_t start = BxTraceRecorder::Now();
    const std::uint64_t id = startFlow(message, start);
    BxTraceRecorder::Complete(kCategory, CLabel("post ", message).Get(), start);
    return id;
}

void VoMessageTrace::Hop(VoSendNotification& notification, std::uint64_t spanStart) noexcept
{
    notification.flowId = startFlow(*notification.message, spanStart);
}

void VoMessageTrace::Hop(VoPostNotification& notification, std::uint64_t spanStart) noexcept
{
    notification.flowId = startFlow(*notification.message, spanStart);
}

namespace {

void drop(const VoMessage& message, std::uint64_t flowId) noexcept
{
    if (flowId == 0)
        return;
    BxTraceRecorder::Instant(VoMessageTrace::kCategory, CLabel("dropped ", message).Get());
    BxTraceRecorder::FlowEnd(VoMessageTrace::kCategory, className(message), flowId);
}

} // namespace

void VoMessageTrace::Drop(const VoSendNotification& notification) noexcept
{
    if (notification.message != nullptr)
        drop(*notification.message, notification.flowId);
}

void VoMessageTrace::Drop(const VoPostNotification& notification) noexcept
{
    if (notification.message)
        drop(*notification.message, notification.flowId);
}

std::uint64_t VoMessageTrace::BeginHandling(const VoMessage& message, std::uint64_t flowId) noexcept
{
    const std::uint64_t start = BxTraceRecorder::Now();
    if (flowId != 0)
        BxTraceRecorder::FlowEnd(kCategory, className(message), flowId, start);
    return start;
}

void VoMessageTrace::EndHandling(const VoMessage& message, std::uint64_t start) noexcept
{
    BxTraceRecorder::Complete(kCategory, className(message), start);
}
