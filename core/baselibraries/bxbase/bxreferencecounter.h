// Atomic reference counter embedded in reference-counted objects.
//
//   class CFoo : public IReferenceCounted {
//     BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }
//     mutable BxReferenceCounter<unsigned int> m_counter;
//   };
//
// Taking a reference is a relaxed atomic increment; dropping one is an
// acquire-release decrement, so the thread that drops the last reference sees
// every write made by the other owners before it destroys the object.
#pragma once

#include <atomic>

/// Atomic reference counter embedded in reference-counted objects.
template <class T>
class BxReferenceCounter
{
public:
    BxReferenceCounter() noexcept = default;
    /// Starts at `initial` references (the default constructor starts at 0).
    explicit BxReferenceCounter(T initial) noexcept : m_count(initial) {}

    // A counter belongs to one object: copying an object never copies its count.
    /// Starts a copied object at 0 references: the copy is a new object that nobody holds yet.
    BxReferenceCounter(const BxReferenceCounter&) noexcept : m_count(0) {}
    /// Keeps this object's own count: assigning one object's contents to another does not change who holds it.
    BxReferenceCounter& operator=(const BxReferenceCounter&) noexcept { return *this; }

    /// Adds one reference and returns the new count.
    T Increment() noexcept { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }

    /// Drops one reference and returns the new count (0: the last one is gone).
    T Decrement() noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    /// The current count; only a hint while other threads hold references.
    T Get() const noexcept { return m_count.load(std::memory_order_relaxed); }

private:
    std::atomic<T> m_count{0};
};
