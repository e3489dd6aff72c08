// A binary heap over an array of elements, with the precedence and the
// element bookkeeping given by policies. Each array slot holds the element's
// key beside the pointer, so that sifting compares keys in the array itself.
//
//   using Heap = VoHeap<VoHeapElementSimple<VoGraphNode*>, VoHeapPolicyPrecedenceMin, VoHeapPolicyOperatorUpdatable>;
//   std::vector<VoHeapElementSimple<VoGraphNode*>> elements(n);   // owned by the caller
//   Heap heap;
//   heap.Reserve(n);
//   elements[0] = {0, 0.0f, start};
//   heap.Push(elements[0]);
//   heap.Update(elements[4], 1.5f);           // lower a key in place
//   VoHeapElementSimple<VoGraphNode*>* least = heap.Pop();
//
// Index arithmetic: the array starts at 0 but is walked the one-based way.
// The parent of position i is i / 2 and its candidate children are 2i and
// 2i + 1, so the root (0) has the single child 1, and 1 has the children 2
// and 3. Sift-up swaps while the parent is strictly behind the element. Pop
// moves the last element to the root and sifts it down: of 2i and 2i + 1 it
// takes 2i only when 2i + 1 is strictly behind 2i (on a tie 2i + 1), and 2i
// when 2i + 1 is past the end; it swaps while the element is strictly behind
// the chosen child and stops when twice the position reaches the count. Ties
// between equal keys are therefore broken in one fixed way, on which the
// shortest-path algorithm's choice among equal paths rests.
//
// The heap does not own its elements; they must stay put while in the heap.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

/// A binary heap over an array of element pointers, with the precedence and the element bookkeeping given by
/// policies.
template <class TElement, class TPrecedence, class TOperator>
class VoHeap
{
public:
    using element_type = TElement;  ///< the element type; the heap holds pointers to such elements

    /// Makes room for `count` elements.
    void Reserve(std::uint32_t count) { m_array.reserve(count); }
    /// The number of elements in the heap.
    std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(m_array.size()); }
    /// True when the heap holds no element (Top and Pop must not be called then).
    bool IsEmpty() const noexcept { return m_array.empty(); }
    /// The element on top; the heap must not be empty.
    TElement& Top() const noexcept { return *m_array.front().element; }
    /// Forgets every element (the elements themselves are untouched, their positions become stale); keeps the
    /// reserved room.
    void Clear() noexcept { m_array.clear(); }

    /// Inserts `element` with its current key.
    void Push(TElement& element)
    {
        m_array.push_back({element.key, &element});
        siftUp(GetCount() - 1);
    }

    /// Removes and returns the element on top; the heap must not be empty.
    TElement* Pop() noexcept
    {
        TElement* top = m_array.front().element;
        const SSlot last = m_array.back();
        m_array.pop_back();
        if (!m_array.empty()) {
            m_array.front() = last;
            siftDown(0);
        }
        return top;
    }

    /// Gives `element`, which is in the heap, the key `key` and moves it to its place.
    void Update(TElement& element, float key) noexcept
    {
        static_assert(TOperator::IsUpdatable, "the heap's operator policy does not allow updates");
        const bool up = TPrecedence::IsBehind(element.key, key);
        element.key = key;
        m_array[element.position].key = key;
        up ? siftUp(element.position) : siftDown(element.position);
    }

private:
    // Each slot carries a copy of its element's key, so that the sifts
    // compare within the array and visit an element only to record its
    // new position.
    struct SSlot
    {
        float key;
        TElement* element;
    };

    void place(const SSlot& slot, std::uint32_t position) noexcept
    {
        m_array[position] = slot;
        TOperator::SetPosition(*slot.element, position);
    }

    void siftUp(std::uint32_t position) noexcept
    {
        const SSlot moving = m_array[position];
        while (position > 0) {
            const std::uint32_t parent = position / 2;
            if (!TPrecedence::IsBehind(m_array[parent].key, moving.key))
                break;
            place(m_array[parent], position);
            position = parent;
        }
        place(moving, position);
    }

    // The moving slot is written once, at its final place; the slot it
    // leaves holds a stale copy meanwhile. Only at the root can a candidate
    // child be that slot (2 * 0 == 0), and there it still holds the moving
    // element itself.
    void siftDown(std::uint32_t position) noexcept
    {
        const SSlot moving = m_array[position];
        const std::uint32_t count = GetCount();
        while (2 * position < count) {
            const std::uint32_t left = 2 * position;
            const std::uint32_t right = left + 1;
            // 2i only when 2i + 1 lies strictly behind it, else 2i + 1 (ties too).
            std::uint32_t child = left;
            if (right < count && !TPrecedence::IsBehind(m_array[right].key, m_array[left].key))
                child = right;
            if (!TPrecedence::IsBehind(moving.key, m_array[child].key))
                break;
            place(m_array[child], position);
            position = child;
        }
        place(moving, position);
    }

    std::vector<SSlot> m_array;
};
