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
    using value_type = std::make_unsigned_t<std::underlying_type_t<E>>;

    constexpr BxFlags() noexcept = default;
    constexpr BxFlags(E flag) noexcept : m_bits(static_cast<value_type>(flag)) {}
    constexpr explicit BxFlags(value_type bits) noexcept : m_bits(bits) {}

    /// True when every bit of `flag` is set.
    constexpr bool IsSet(E flag) const noexcept
    {
        return (m_bits & static_cast<value_type>(flag)) == static_cast<value_type>(flag);
    }
    /// True when any bit of `flag` is set.
    constexpr bool IsAnySet(E flag) const noexcept { return (m_bits & static_cast<value_type>(flag)) != 0; }
    constexpr BxFlags& Set(E flag, bool on = true) noexcept
    {
        on ? m_bits |= static_cast<value_type>(flag) : m_bits &= ~static_cast<value_type>(flag);
        return *this;
    }
    constexpr BxFlags& Clear(E flag) noexcept { return Set(flag, false); }
    constexpr value_type GetValue() const noexcept { return m_bits; }

    constexpr BxFlags& operator|=(BxFlags other) noexcept { m_bits |= other.m_bits; return *this; }
    constexpr BxFlags& operator&=(BxFlags other) noexcept { m_bits &= other.m_bits; return *this; }
    constexpr friend BxFlags operator|(BxFlags a, BxFlags b) noexcept { return BxFlags(value_type(a.m_bits | b.m_bits)); }
    constexpr friend BxFlags operator&(BxFlags a, BxFlags b) noexcept { return BxFlags(value_type(a.m_bits & b.m_bits)); }
    constexpr friend bool operator==(BxFlags a, BxFlags b) noexcept { return a.m_bits == b.m_bits; }

private:
    value_type m_bits = 0;
};
