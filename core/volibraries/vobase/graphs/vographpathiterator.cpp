#include <vobase/graphs/vographnode.h>
#include <vobase/graphs/vographpathiterator.h>

VoGraphPathIterator::VoGraphPathIterator(VoGraphNode& start, VoGraphNode& end, EDirection direction)
    : m_direction(direction), m_start(&start), m_end(&end)
{
    Restart();
}

void VoGraphPathIterator::Restart() noexcept
{
    m_current = m_direction == eD_Forward ? m_start : m_end;
}

VoGraphNode* VoGraphPathIterator::getNext()
{
    VoGraphNode* node = m_current;
    if (node)
        m_current = m_direction == eD_Forward ? node->GetNextNodeOnPath() : node->GetPreviousNodeOnPath();
    return node;
}
