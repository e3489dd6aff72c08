// Names the object that an operation changes, so that undo and redo can treat
// each object's operations together. Each new identifier takes the next value
// of a class-wide generator; a copy names the same object.
//
//   class CLayer {
//       VoHistoryID m_historyId;         // one per edited object
//   };
//   history.AddOperation(op, &layer.m_historyId, VoHistoryAction::eAIF_Primary);
//
// Identifiers may be made on any thread.
#pragma once

#include <vobase/vobaseapi.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

/// Names the object that an operation changes, so that undo and redo can treat each object's operations together.
class VOBASE_API VoHistoryID
{
public:
    /// A new identifier (never 0).
    VoHistoryID() noexcept;
    VoHistoryID(const VoHistoryID&) = default;
    VoHistoryID& operator=(const VoHistoryID&) = default;

    std::uint32_t GetID() const noexcept { return m_id; }
    std::size_t GetMemoryUsage() const noexcept { return sizeof(*this); }

private:
    static std::atomic<std::uint32_t> sm_uiIDGenerator; ///< the last value handed out

    std::uint32_t m_id;
};
