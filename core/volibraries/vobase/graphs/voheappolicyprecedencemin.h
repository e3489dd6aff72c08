// Precedence policy of a min-heap: the least key is on top.
//
//   VoHeap<VoHeapElementSimple<int>, VoHeapPolicyPrecedenceMin, VoHeapPolicyOperatorUpdatable> heap;
#pragma once

/// Precedence policy of a min-heap: the least key is on top.
struct VoHeapPolicyPrecedenceMin
{
    /// True when key `a` must sit strictly below key `b` in the heap.
    static constexpr bool IsBehind(float a, float b) noexcept { return a > b; }
};
