// A span of the calling thread, recorded as one complete event when it ends.
//
//   void CWorker::handle(const VoMessage& message)
//   {
//       BxTraceScope span("messaging", "handleMessage");
//       ...
//   }                                  // one 'X' event: begin time and duration
//
// With the recorder off, construction and destruction cost one branch each.
// The name is not copied until the span ends: it must outlive the scope.
#pragma once

#include <bxbase/diagnostics/bxtracerecorder.h>

#include <cstdint>
#include <string_view>

/// A span of the calling thread, recorded as one complete event when it ends.
class BxTraceScope
{
public:
    /// Begins the span `name` of `category` (both must outlive the scope).
    BxTraceScope(const char* category, std::string_view name) noexcept
        : m_category(category), m_name(name), m_start(BxTraceRecorder::IsOn() ? BxTraceRecorder::Now() : 0)
    {
    }
    ~BxTraceScope()
    {
        if (m_start != 0)
            BxTraceRecorder::Complete(m_category, m_name, m_start);
    }
    BxTraceScope(const BxTraceScope&) = delete;
    BxTraceScope& operator=(const BxTraceScope&) = delete;

private:
    const char* m_category;
    std::string_view m_name;
    std::uint64_t m_start; ///< 0 when the recorder was off as the span began
};
