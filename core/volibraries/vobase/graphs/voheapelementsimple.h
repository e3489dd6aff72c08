// An element of a VoHeap: its position in the heap's array, its key and a value.
//
//   VoHeapElementSimple<VoGraphNode*> element;
//   element.key = 2.5f;
//   element.value = &node;
//   heap.Push(element);        // element.position now tells where it sits
#pragma once

#include <cstdint>

/// An element of a VoHeap: its position in the heap's array, its key and a value.
template <class T>
struct VoHeapElementSimple
{
    using value_type = T;  ///< the type of the value the element carries

    std::uint32_t position = 0;  ///< the element's index in the heap's array, kept by the heap
    float key = 0.0f;            ///< the priority
    T value{};                   ///< what the element stands for
};
