// Operator policy of a heap whose elements' keys may change in place: the
// heap records every element's position in the element, so that Update can
// find it again.
//
//   heap.Update(element, 1.0f);   // moves the element to its new place
#pragma once

#include <cstdint>

/// Operator policy of a heap whose elements' keys may change in place: the heap records every element's position
/// in the element, so that Update can find it again.
struct VoHeapPolicyOperatorUpdatable
{
    static constexpr bool IsUpdatable = true;  ///< VoHeap::Update is allowed with this policy

    /// Called by the heap whenever `element` lands at `position` of its array; stores it in `element.position`.
    template <class Element>
    static void SetPosition(Element& element, std::uint32_t position) noexcept
    {
        element.position = position;
    }
};
