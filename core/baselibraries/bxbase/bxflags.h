// A set of flags of the enumeration E, whose enumerators are bit values.
//
//   enum EOption { eO_Fast = 1, eO_Safe = 2 };
//   BxFlags<EOption> options(eO_Fast);
//   options |= eO_Safe;
//   if (options.IsSet(eO_Safe)) { ... }
#pragma once

#include <type_traits>

/// A set of flags of the enumeration E, whose enumerators are bit values.
template <class E>
class BxFlags
{
public:
    /// The unsigned integer that holds the bits (the unsigned form of E's underlying type).
    using value_type = std::make_unsigned_t<std::underlying_type_t<E>>;

    /// No flag set.
    constexpr BxFlags() noexcept = default;
    /// Exactly the bits of `flag`; implicit, so that an enumerator can be passed where a set is expected.
    constexpr BxFlags(E flag) noexcept : m_bits(static_cast<value_type>(flag)) {}
    /// The raw bit pattern `bits`, for example one read back from GetValue() or from a file.
    constexpr explicit BxFlags(value_type bits) noexcept : m_bits(bits) {}

    /// True when every bit of `flag` is set.
    constexpr bool IsSet(E flag) const noexcept
    {
        return (m_bits & static_cast<value_type>(flag)) == static_cast<value_type>(flag);
    }
    /// True when any bit of `flag` is set.
    constexpr bool IsAnySet(E flag) const noexcept { return (m_bits & static_cast<value_type>(flag)) != 0; }
    /// Sets the bits of `flag` (or clears them when `on` is false); returns *this for chaining.
    constexpr BxFlags& Set(E flag, bool on = true) noexcept
    {
        on ? m_bits |= static_cast<value_type>(flag) : m_bits &= ~static_cast<value_type>(flag);
        return *this;
    }
    /// Clears the bits of `flag`; returns *this for chaining.
    constexpr BxFlags& Clear(E flag) noexcept { return Set(flag, false); }
    /// The raw bit pattern, for storing or passing to code that takes plain integers.
    constexpr value_type GetValue() const noexcept { return m_bits; }

    /// Adds every flag of `other` (union).
    constexpr BxFlags& operator|=(BxFlags other) noexcept { m_bits |= other.m_bits; return *this; }
    /// Keeps only the flags that are also in `other` (intersection).
    constexpr BxFlags& operator&=(BxFlags other) noexcept { m_bits &= other.m_bits; return *this; }
    constexpr friend BxFlags operator|(BxFlags a, BxFlags b) noexcept { return BxFlags(value_type(a.m_bits | b.m_bits)); }
    constexpr friend BxFlags operator&(BxFlags a, BxFlags b) noexcept { return BxFlags(value_type(a.m_bits & b.m_bits)); }
    constexpr friend bool operator==(BxFlags a, BxFlags b) noexcept { return a.m_bits == b.m_bits; }

private:
    value_type m_bits = 0;
};
