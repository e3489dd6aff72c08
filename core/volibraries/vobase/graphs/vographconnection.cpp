#include <vobase/graphs/vographconnection.h>
#include <vobase/graphs/vographnode.h>

void VoGraphConnection::SetWeight(float weight) noexcept
{
    m_weight = weight;
    if (m_listed[eNT_Source])
        m_source->GetOutgoingConnections().mirrorWeight(m_positions[eNT_Source], weight);
    if (m_listed[eNT_Target])
        m_target->GetIncomingConnections().mirrorWeight(m_positions[eNT_Target], weight);
}
