// Disjoint sets over the element numbers 0 .. n-1.
//
//   VoUnionFind sets(10);
//   sets.AddPair(5, 3);
//   sets.AddPair(3, 9);          // {3, 5, 9}, root 3
//   sets.GetRoot(9);             // 3
//   sets.CreateSetNumbers();     // 8 sets
//   sets.GetSetNumber(5);        // the number of {3, 5, 9}
//
// The smallest element of a set is always its root: every entry points at
// an element no greater than itself. A union compresses both paths fully.
// CreateSetNumbers numbers the sets in the order of their smallest element
// and turns the array into set numbers; InitElements must be called again
// before further unions.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>

#include <cstdint>

/// Disjoint sets over the element numbers 0 to n-1, each set rooted at its smallest element.
class VOBASE_API VoUnionFind
{
public:
    /// No elements; call InitElements before use.
    VoUnionFind() = default;
    /// `count` elements, each a set of its own.
    explicit VoUnionFind(std::uint32_t count) { InitElements(count); }
    /// Copies the array (parents, or set numbers after CreateSetNumbers) and the set count.
    VoUnionFind(const VoUnionFind&) = default;
    /// Takes over the array and the set count; the source is left valid but unspecified.
    VoUnionFind(VoUnionFind&&) noexcept = default;
    /// Copies the array and the set count.
    VoUnionFind& operator=(const VoUnionFind&) = default;
    /// Takes over the array and the set count; the source is left valid but unspecified.
    VoUnionFind& operator=(VoUnionFind&&) noexcept = default;

    /// `count` elements, each a set of its own.
    void InitElements(std::uint32_t count);
    /// Every element a set of its own again.
    void InitElements() { InitElements(GetCount()); }

    /// Joins the sets of `a` and `b` under the smaller root. BxExceptionPreconditionViolation when either is not
    /// less than GetCount().
    void AddPair(std::uint32_t a, std::uint32_t b);
    /// The root of `element`'s set (no compression). BxExceptionPreconditionViolation when `element` is not less
    /// than GetCount().
    std::uint32_t GetRoot(std::uint32_t element) const;

    /// Numbers the sets 0, 1, ... in the order of their smallest element and returns their count.
    std::uint32_t CreateSetNumbers();
    /// The set number of `element` (after CreateSetNumbers).
    std::uint32_t GetSetNumber(std::uint32_t element) const;
    /// The set count of the last CreateSetNumbers.
    std::uint32_t GetSetCount() const noexcept { return m_setCount; }
    /// The number of elements, as given to the last InitElements.
    std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(m_parents.size()); }

protected:
    /// Points every element on the path from `element` (its root included) at `root`.
    void collapsePath(std::uint32_t element, std::uint32_t root) noexcept;

private:
    void checkElement(std::uint32_t element, const char* functionName) const;

    BxArray<std::uint32_t> m_parents;
    std::uint32_t m_setCount = 0;
};
