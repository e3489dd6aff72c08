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
    /// A second identifier for the same object (same value; the generator is
    /// not advanced).
    VoHistoryID(const VoHistoryID&) = default;
    /// Takes over the value of `other`: both then name the same object.
    VoHistoryID& operator=(const VoHistoryID&) = default;

    /// The value that names the object; the history treats identifiers with
    /// equal values as one object.
    std::uint32_t GetID() const noexcept { return m_id; }
    /// Bytes held by the identifier (its own size; it owns nothing else).
    std::size_t GetMemoryUsage() const noexcept { return sizeof(*this); }

private:
    static std::atomic<std::uint32_t> sm_uiIDGenerator; ///< the last value handed out

    std::uint32_t m_id;
};
