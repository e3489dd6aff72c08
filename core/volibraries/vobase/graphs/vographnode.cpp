#include <vobase/graphs/vographnode.h>

#include <bxbase/bxexceptioncontainer.h>

VoGraphNode::~VoGraphNode()
{
    m_outgoing.RemoveAllConnections();
    for (const BxSmartPointer<VoGraphConnection>& c : m_incoming)
        c->GetNode(VoGraphConnection::eNT_Source)->m_outgoing.RemoveConnection(c);
    // No path may lead to a node that is gone.
    SetNextNodeOnPath(nullptr);
    SetPreviousNodeOnPath(nullptr);
}

BxSmartPointer<VoGraphConnection> VoGraphNode::AddConnection(VoGraphNode& target, float weight)
{
    BxSmartPointer<VoGraphConnection> connection(new VoGraphConnection(*this, target, weight));
    m_outgoing.AddConnection(connection);
    target.m_incoming.AddConnection(connection);
    return connection;
}

bool VoGraphNode::RemoveConnection(VoGraphNode& target)
{
    for (const BxSmartPointer<VoGraphConnection>& c : m_outgoing) {
        if (c->GetNode(VoGraphConnection::eNT_Target) == &target) {
            const BxSmartPointer<VoGraphConnection> keep = c;
            target.m_incoming.RemoveConnection(keep);
            m_outgoing.RemoveConnection(keep);
            return true;
        }
    }
    return false;
}

void VoGraphNode::RemoveAllConnections()
{
    m_outgoing.RemoveAllConnections();
    m_incoming.RemoveAllConnections();
}

void VoGraphNode::SetNextNodeOnPath(VoGraphNode* next) noexcept
{
    if (m_nextOnPath)
        m_nextOnPath->m_previousOnPath = nullptr;
    m_nextOnPath = next;
    if (!next)
        return;
    if (next->m_previousOnPath) {
        next->m_previousOnPath->m_nextOnPath = nullptr;
        next->m_previousOnPath = nullptr;
    }
    next->m_previousOnPath = this;
}

void VoGraphNode::SetPreviousNodeOnPath(VoGraphNode* previous) noexcept
{
    if (m_previousOnPath)
        m_previousOnPath->m_nextOnPath = nullptr;
    m_previousOnPath = previous;
    if (!previous)
        return;
    if (previous->m_nextOnPath)
        previous->SetNextNodeOnPath(nullptr);
    previous->m_nextOnPath = this;
}
