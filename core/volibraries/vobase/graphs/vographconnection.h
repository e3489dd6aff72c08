// A directed, weighted connection between two graph nodes, shared by the
// source's outgoing list and the target's incoming list.
//
//   BxSmartPointer<VoGraphConnection> c = a.AddConnection(b, 2.5f);   // a -> b
//   c->GetNode(VoGraphConnection::eNT_Target);   // &b
//   c->SetWeight(1.0f);
//
// The connection remembers its position in both lists, so that a list can
// remove it (or mirror a new weight) without searching. Reference counted: it may outlive the lists
// (and then its node pointers name nodes that may be gone). Not thread-safe:
// the graph's owner guards it.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/ireferencecounted.h>

#include <cstdint>

class VoGraphNode;

/// A directed, weighted connection between two graph nodes, shared by the source's outgoing list and the target's
/// incoming list.
class VOBASE_API VoGraphConnection : public BxReferenceCountedObject
{
public:
    /// The two ends of a connection.
    enum ENodeType : std::uint32_t
    {
        eNT_Source = 0,  ///< the node the connection leaves (it is in that node's outgoing list)
        eNT_Target = 1,  ///< the node the connection leads to (it is in that node's incoming list)
    };

    VoGraphConnection() = default;
    /// A connection from `from` to `to` with weight 0. It is in no list yet: VoGraphNode::AddConnection builds and
    /// enters connections, which is what users normally call.
    VoGraphConnection(VoGraphNode& from, VoGraphNode& to) : m_source(&from), m_target(&to) {}
    /// A connection from `from` to `to` with `weight`, in no list yet (see VoGraphNode::AddConnection).
    VoGraphConnection(VoGraphNode& from, VoGraphNode& to, float weight)
        : m_source(&from), m_target(&to), m_weight(weight)
    {
    }
    /// Copies the ends, the weight and the word; the copy is in no list.
    VoGraphConnection(const VoGraphConnection& other) noexcept
        : BxReferenceCountedObject(other), m_source(other.m_source), m_target(other.m_target),
          m_weight(other.m_weight), m_word(other.m_word)
    {
    }
    /// Same as the copy: `other` keeps its ends and stays in its lists; the new connection is in none.
    VoGraphConnection(VoGraphConnection&& other) noexcept : VoGraphConnection(other) {}
    VoGraphConnection& operator=(const VoGraphConnection&) = delete;

    /// The connection's weight (the cost of following it, for the path algorithms).
    float GetWeight() const noexcept { return m_weight; }
    /// Changes the weight (the lists that hold the connection see it at once).
    void SetWeight(float weight) noexcept;

    /// The source or the target node.
    VoGraphNode* GetNode(ENodeType type) const noexcept { return type == eNT_Source ? m_source : m_target; }

    /// A word for the user of the graph, 0 at creation.
    std::uint32_t GetWord() const noexcept { return m_word; }
    /// Stores `word`; the graph and its algorithms never read it.
    void SetWord(std::uint32_t word) noexcept { m_word = word; }

    /// True when `other`'s weight is greater.
    bool operator<(const BxSmartPointer<VoGraphConnection>& other) const noexcept { return m_weight < other->m_weight; }
    /// True when this weight is greater.
    bool operator>(const BxSmartPointer<VoGraphConnection>& other) const noexcept { return m_weight > other->m_weight; }

private:
    friend class VoGraphConnectionList;
    friend class VoGraph;

    VoGraphNode* m_source = nullptr;
    VoGraphNode* m_target = nullptr;
    float m_weight = 0.0f;
    std::uint32_t m_word = 0;
    // Per end (eNT_Source: the source's outgoing list, eNT_Target: the
    // target's incoming list): whether the connection is in that list, and where.
    std::uint32_t m_positions[2] = {0, 0};
    bool m_listed[2] = {false, false};
};
