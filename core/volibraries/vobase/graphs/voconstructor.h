// The construction object of an attribute slot: builds a T in a slot's raw
// bytes, either value-initialised or as a copy of a default value.
//
//   VoConstructor<std::int32_t> minusOne(-1);      // every new slot holds -1
//   VoConstructor<BxSmartPointer<IWorkItem>> empty;  // every new slot holds an empty pointer
//   minusOne(slotBytes);
#pragma once

#include <cstddef>
#include <memory>
#include <new>

/// The construction object of an attribute slot: builds a T in a slot's raw bytes, either value-initialised or as
/// a copy of a default value.
template <class T>
class VoConstructor
{
public:
    static constexpr std::size_t Size = sizeof(T);        ///< bytes a slot of this type needs
    static constexpr std::size_t Alignment = alignof(T);  ///< alignment a slot of this type needs

    /// Slots are value-initialised (T()).
    VoConstructor() = default;
    /// Slots start as copies of `value`.
    explicit VoConstructor(const T& value) : m_value(std::make_shared<const T>(value)) {}

    /// Builds a T in `slot`, which has room for it and is suitably aligned.
    void operator()(void* slot) const
    {
        if (m_value)
            ::new (slot) T(*m_value);
        else
            ::new (slot) T();
    }

private:
    std::shared_ptr<const T> m_value;  // the default value, or null for T()
};
