// Progress of the analysis task graph: one work item has finished (or
// failed) on a pool thread. Work items post it to the user-interface handler.
#pragma once

#include <vobase/messaging/vomessage.h>

#include <cstdint>
#include <string>

class CMsgProgress : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    CMsgProgress() = default;
    /// Work item `item` ended on thread `threadID`; `succeeded` is false when it threw.
    CMsgProgress(std::string item, std::uint32_t threadID, bool succeeded)
        : m_item(std::move(item)), m_threadID(threadID), m_succeeded(succeeded)
    {
    }

    /// The work item's name in the task graph.
    const std::string& GetItem() const noexcept { return m_item; }
    /// The kernel id of the pool thread that ran it.
    std::uint32_t GetThreadID() const noexcept { return m_threadID; }
    /// False when the item's work threw.
    bool IsSucceeded() const noexcept { return m_succeeded; }

private:
    std::string m_item;
    std::uint32_t m_threadID = 0;
    bool m_succeeded = false;
};
