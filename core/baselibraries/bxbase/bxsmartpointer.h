// Intrusive, thread-safe owning pointer to IReferenceCounted objects.
//
//   BxSmartPointer<CJob> job(new CJob);         // count 1
//   BxSmartPointer<IReferenceCounted> any = job; // count 2
//   BxSmartPointer<const CJob> view = job;       // read-only form
//   auto again = BxSmartPointerCast<CJob>(any);  // checked down-cast, null on mismatch
//
// Because the count lives in the object, a raw pointer to an object that is
// already owned can be wrapped again safely. Comparisons and std::hash use the
// object's address. The count is atomic, so threads may share one object
// through their own pointers; one pointer variable itself is not guarded and
// must not be written by one thread while another reads it.
#pragma once

#include <bxbase/ireferencecounted.h>

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

/// Intrusive, thread-safe owning pointer to IReferenceCounted objects.
template <class T>
class BxSmartPointer
{
public:
    /// The pointed-to type (const T for the read-only form).
    using element_type = T;

    /// A null pointer.
    BxSmartPointer() noexcept = default;
    /// A null pointer, so that `nullptr` converts where a smart pointer is expected.
    BxSmartPointer(std::nullptr_t) noexcept {}

    /// Takes a reference to p (which may be null).
    BxSmartPointer(T* p) noexcept : m_p(p) { addRef(); }

    /// Shares other's object: one more reference.
    BxSmartPointer(const BxSmartPointer& other) noexcept : m_p(other.m_p) { addRef(); }
    /// Takes over other's reference; `other` becomes null and the count does not change.
    BxSmartPointer(BxSmartPointer&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}

    /// Shares the object of a pointer to a derived class (or to T from non-const to const): one more reference.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    BxSmartPointer(const BxSmartPointer<U>& other) noexcept : m_p(other.get()) { addRef(); }

    /// Takes over the reference of a pointer to a derived class; `other` becomes null.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    BxSmartPointer(BxSmartPointer<U>&& other) noexcept : m_p(other.release()) {}

    ~BxSmartPointer() { releaseRef(); }

    /// Shares other's object and drops the reference held before (which may destroy that object); safe for
    /// self-assignment.
    BxSmartPointer& operator=(const BxSmartPointer& other) noexcept
    {
        BxSmartPointer(other).swap(*this);
        return *this;
    }
    /// Takes over other's reference (`other` becomes null) and drops the one held before.
    BxSmartPointer& operator=(BxSmartPointer&& other) noexcept
    {
        BxSmartPointer(std::move(other)).swap(*this);
        return *this;
    }
    /// Takes a reference to `p` (which may be null or already owned elsewhere) and drops the one held before.
    BxSmartPointer& operator=(T* p) noexcept
    {
        BxSmartPointer(p).swap(*this);
        return *this;
    }
    /// Drops the reference; the pointer becomes null (same as reset()).
    BxSmartPointer& operator=(std::nullptr_t) noexcept
    {
        reset();
        return *this;
    }

    /// The raw pointer (may be null), without taking a reference; valid while this pointer keeps the object.
    T* get() const noexcept { return m_p; }
    /// Member access; the pointer must not be null.
    T* operator->() const noexcept { return m_p; }
    /// The object; the pointer must not be null.
    T& operator*() const noexcept { return *m_p; }
    /// True when the pointer is not null.
    explicit operator bool() const noexcept { return m_p != nullptr; }

    /// Drops the reference; the pointer becomes null.
    void reset() noexcept { BxSmartPointer().swap(*this); }

    /// Gives up the reference without dropping it; the caller now owns it.
    [[nodiscard]] T* release() noexcept { return std::exchange(m_p, nullptr); }

    /// Exchanges the objects of the two pointers; no count changes.
    void swap(BxSmartPointer& other) noexcept { std::swap(m_p, other.m_p); }

private:
    void addRef() const noexcept
    {
        if (m_p)
            m_p->getReferenceCounter().Increment();
    }
    void releaseRef() noexcept
    {
        if (m_p && m_p->getReferenceCounter().Decrement() == 0)
            delete static_cast<const IReferenceCounted*>(m_p);
    }

    T* m_p = nullptr;
};

template <class T, class U>
bool operator==(const BxSmartPointer<T>& a, const BxSmartPointer<U>& b) noexcept { return a.get() == b.get(); }
template <class T>
bool operator==(const BxSmartPointer<T>& a, std::nullptr_t) noexcept { return !a; }
template <class T, class U>
bool operator==(const BxSmartPointer<T>& a, const U* b) noexcept { return a.get() == b; }
template <class T, class U>
bool operator<(const BxSmartPointer<T>& a, const BxSmartPointer<U>& b) noexcept
{
    return std::less<const void*>()(a.get(), b.get());
}

/// Creates a T with the given arguments and returns the first reference to it.
template <class T, class... Args>
BxSmartPointer<T> BxMakeSmartPointer(Args&&... args)
{
    return BxSmartPointer<T>(new T(std::forward<Args>(args)...));
}

/// Checked down-cast: the object as a T, or null when it is not one.
template <class T, class U>
BxSmartPointer<T> BxSmartPointerCast(const BxSmartPointer<U>& p) noexcept
{
    return BxSmartPointer<T>(dynamic_cast<T*>(p.get()));
}

/// Unchecked cast for when the type is known; the caller vouches for it.
template <class T, class U>
BxSmartPointer<T> BxStaticPointerCast(const BxSmartPointer<U>& p) noexcept
{
    return BxSmartPointer<T>(static_cast<T*>(p.get()));
}

/// Hashes a smart pointer by the object's address, so that it can key unordered containers.
template <class T>
struct std::hash<BxSmartPointer<T>>
{
    /// The hash of the raw pointer.
    std::size_t operator()(const BxSmartPointer<T>& p) const noexcept { return std::hash<T*>()(p.get()); }
};
