#include <vobase/history/vohistoryaction.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

VoHistoryAction::VoHistoryAction(CStringT<wchar_t> description) : m_description(std::move(description)) {}

void VoHistoryAction::AddOperation(VoOperation* operation, const VoHistoryID& id, EActionInputFlag flag)
{
    if (!operation)
        BX_THROW(BxExceptionPreconditionViolation, "VoHistoryAction::AddOperation", "no operation given");
    if (flag != eAIF_Primary && flag != eAIF_Secondary)
        return;
    m_operations[flag].push_back(SHistoryOperation{BxSmartPointer<VoOperation>(operation), id.GetID()});
}

std::size_t VoHistoryAction::GetMemoryUsage() const
{
    std::size_t bytes = sizeof(*this) + m_description.capacity() * sizeof(wchar_t);
    for (const Operations& operations : m_operations)
        for (const SHistoryOperation& record : operations)
            bytes += sizeof(record) + 2 * sizeof(void*) + record.operation->GetMemoryUsage();
    return bytes;
}
