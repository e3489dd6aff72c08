// Walks a path that an algorithm left in a graph's path links, forward from
// the start along the next-on-path links, or backward from the end along the
// previous-on-path links, until the links run out.
//
//   VoGraphPathIterator path = shortestPath.GetOutput();
//   while (path.HasMoreElements())
//       visit(*path.GetNext());           // start, ..., end
//
// A default-constructed iterator is empty and yields nothing.
#pragma once

#include <vobase/vobaseapi.h>

#include <cstdint>

class VoGraphNode;

/// Walks a path that an algorithm left in a graph's path links, forward from the start along the next-on-path
/// links, or backward from the end along the previous-on-path links, until the links run out.
class VOBASE_API VoGraphPathIterator
{
public:
    /// Which way the iterator walks the path.
    enum EDirection : std::uint32_t
    {
        eD_Forward = 0,   ///< from the start along the next-on-path links
        eD_Backward = 1,  ///< from the end along the previous-on-path links (any value but 0)
    };

    VoGraphPathIterator() = default;
    /// An iterator over the path from `start` to `end`, standing on `start` (forward) or `end` (backward). The
    /// nodes are not owned and must outlive the iterator; the walk follows the links, not `end`, to stop.
    VoGraphPathIterator(VoGraphNode& start, VoGraphNode& end, EDirection direction);
    virtual ~VoGraphPathIterator() = default;

    /// Changes the direction; takes effect at the next Restart.
    void SetDirection(EDirection direction) noexcept { m_direction = direction; }
    /// The direction of the walk.
    EDirection GetDirection() const noexcept { return m_direction; }
    /// Starts again at the start (forward) or the end (backward).
    void Restart() noexcept;

    /// True while there is a node to return.
    bool HasMoreElements() const { return hasMoreElements(); }
    /// The current node; the iterator moves on to its neighbour on the path.
    VoGraphNode* GetNext() { return getNext(); }

    /// The path's first node, or null for an empty iterator.
    VoGraphNode* GetStart() const noexcept { return m_start; }
    /// The path's last node, or null for an empty iterator.
    VoGraphNode* GetEnd() const noexcept { return m_end; }

protected:
    /// True while the current node is not null; behind HasMoreElements, for iterators that filter the path.
    virtual bool hasMoreElements() const { return m_current != nullptr; }
    /// Returns the current node (null when none is left) and moves to its next-on-path (forward) or
    /// previous-on-path (backward) neighbour; behind GetNext.
    virtual VoGraphNode* getNext();

private:
    EDirection m_direction = eD_Forward;
    VoGraphNode* m_start = nullptr;
    VoGraphNode* m_end = nullptr;
    VoGraphNode* m_current = nullptr;
};
