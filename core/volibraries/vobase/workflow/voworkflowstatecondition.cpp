#include <vobase/workflow/voworkflowstatecondition.h>

bool VoWorkflowStateCondition::Evaluate() const
{
    const bool holds = check();
    m_latest.store(holds ? eTS_True : eTS_False, std::memory_order_release);
    return holds;
}

void VoWorkflowStateCondition::dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    stream << L"VoWorkflowStateCondition";
}
