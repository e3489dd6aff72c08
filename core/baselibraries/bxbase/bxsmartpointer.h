// Intrusive, thread-safe owning pointer to IReferenceCounted objects.
//
//   BxSmartPointer<CJob> job(new CJob);         // count 1
//   BxSmartPointer<IReferenceCounted> any = job; // count 2
//   BxSmartPointer<const CJob> view = job;       // read-only form
//   auto again = BxSmartPointerCast<CJob>(any);  // checked down-cast, null on mismatch
//
// Because the count lives in the object, a raw pointer to an object that is
// already owned can be wrapped again safely. Comparisons and std::hash use the
// object's address.
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
    using element_type = T;

    BxSmartPointer() noexcept = default;
    BxSmartPointer(std::nullptr_t) noexcept {}

    /// Takes a reference to p (which may be null).
    BxSmartPointer(T* p) noexcept : m_p(p) { addRef(); }

    BxSmartPointer(const BxSmartPointer& other) noexcept : m_p(other.m_p) { addRef(); }
    BxSmartPointer(BxSmartPointer&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}

    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    BxSmartPointer(const BxSmartPointer<U>& other) noexcept : m_p(other.get()) { addRef(); }

    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    BxSmartPointer(BxSmartPointer<U>&& other) noexcept : m_p(other.release()) {}

    ~BxSmartPointer() { releaseRef(); }

    BxSmartPointer& operator=(const BxSmartPointer& other) noexcept
    {
        BxSmartPointer(other).swap(*this);
        return *this;
    }
    BxSmartPointer& operator=(BxSmartPointer&& other) noexcept
    {
        BxSmartPointer(std::move(other)).swap(*this);
        return *this;
    }
    BxSmartPointer& operator=(T* p) noexcept
    {
        BxSmartPointer(p).swap(*this);
        return *this;
    }
    BxSmartPointer& operator=(std::nullptr_t) noexcept
    {
        reset();
        return *this;
    }

    T* get() const noexcept { return m_p; }
    T* operator->() const noexcept { return m_p; }
    T& operator*() const noexcept { return *m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }

    /// Drops the reference; the pointer becomes null.
    void reset() noexcept { BxSmartPointer().swap(*this); }

    /// Gives up the reference without dropping it; the caller now owns it.
    [[nodiscard]] T* release() noexcept { return std::exchange(m_p, nullptr); }

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

template <class T>
struct std::hash<BxSmartPointer<T>>
{
    std::size_t operator()(const BxSmartPointer<T>& p) const noexcept { return std::hash<T*>()(p.get()); }
};
