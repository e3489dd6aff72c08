// The result of an operation that may fail without an error (locking, tree
// edits): the value plus a mark whether the caller looked at it.
//
//   BxCheckReturn<bool, BxCheckReturnPolicyAssert> TryLock();
//   if (!manager.TryLock(handle)) { ... }      // reading it marks it checked
//   manager.TryLock(handle).Ignore();          // explicitly not interested
//
// A result that nobody looked at is reported by the policy when it is
// destroyed; BxCheckReturnPolicyAssert asserts in debug builds and does
// nothing in release builds.
#pragma once

#include <cassert>
#include <utility>

/// Default policy: a result that nobody looked at is a programming error; asserts in debug builds, does nothing in
/// release builds.
struct BxCheckReturnPolicyAssert
{
    /// Called by the destructor of an unchecked BxCheckReturn; asserts (debug builds only).
    static void OnUnchecked() noexcept
    {
        assert(!"BxCheckReturn: a result that may signal failure was never looked at");
    }
};

/// Policy for results whose check is optional.
struct BxCheckReturnPolicyIgnore
{
    /// Called by the destructor of an unchecked BxCheckReturn; does nothing.
    static void OnUnchecked() noexcept {}
};

/// The result of an operation that may fail without an error (locking, tree edits): the value plus a mark whether
/// the caller looked at it.
template <class T, class Policy = BxCheckReturnPolicyAssert>
class [[nodiscard]] BxCheckReturn
{
public:
    /// Wraps the result of an operation; it starts unchecked. Implicit, so that a function can simply return its
    /// value.
    BxCheckReturn(T value) : m_value(std::move(value)) {}

    /// Takes over the value and its checked mark; `other` counts as checked afterwards, so only the new object
    /// reports an unchecked result.
    BxCheckReturn(BxCheckReturn&& other) noexcept : m_value(std::move(other.m_value)), m_checked(other.m_checked)
    {
        other.m_checked = true;
    }
    BxCheckReturn(const BxCheckReturn&) = delete;
    BxCheckReturn& operator=(const BxCheckReturn&) = delete;

    ~BxCheckReturn()
    {
        if (!m_checked)
            Policy::OnUnchecked();
    }

    /// Reads the value and marks it checked.
    operator T() const
    {
        m_checked = true;
        return m_value;
    }
    /// Reads the value and marks it checked.
    T Get() const
    {
        m_checked = true;
        return m_value;
    }
    /// Marks the value checked without reading it.
    void Ignore() const noexcept { m_checked = true; }

private:
    T m_value;
    mutable bool m_checked = false;
};
