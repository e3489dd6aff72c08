// The worker's posted answer to a CMsgRequest: the request's value, the
// result and the thread that computed it.
#pragma once

#include <vobase/messaging/vomessage.h>

#include <cstdint>

class CMsgAnswer : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    CMsgAnswer() = default;
    /// The answer for `value`, computed as `result` on thread `threadID`.
    CMsgAnswer(std::int32_t value, std::int64_t result, std::uint32_t threadID)
        : m_value(value), m_result(result), m_threadID(threadID)
    {
    }

    /// The value of the request.
    std::int32_t GetValue() const noexcept { return m_value; }
    /// The worker's result.
    std::int64_t GetResult() const noexcept { return m_result; }
    /// The kernel id of the worker's thread.
    std::uint32_t GetThreadID() const noexcept { return m_threadID; }

private:
    std::int32_t m_value = 0;
    std::int64_t m_result = 0;
    std::uint32_t m_threadID = 0;
};
