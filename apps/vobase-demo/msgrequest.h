// A request for the worker handler: square `value`. With `answerByPost` the
// worker also posts the result back as a CMsgAnswer (the way a worker reports
// to a user-interface thread that must not block); a synchronous send gets
// the result as the send's answer.
#pragma once

#include <vobase/messaging/vomessage.h>

#include <cstdint>

class CMsgRequest : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    /// A request for `value`; `answerByPost` asks for a posted CMsgAnswer too.
    explicit CMsgRequest(std::int32_t value = 0, bool answerByPost = false)
        : m_value(value), m_answerByPost(answerByPost)
    {
    }

    /// The number to square.
    std::int32_t GetValue() const noexcept { return m_value; }
    /// Whether the worker posts the result back.
    bool IsAnswerByPost() const noexcept { return m_answerByPost; }

private:
    std::int32_t m_value;
    bool m_answerByPost;
};
