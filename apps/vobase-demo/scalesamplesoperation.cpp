#include "scalesamplesoperation.h"

#include <vobase/objects/vodatanodefloat64.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

CScaleSamplesOperation::CScaleSamplesOperation(VoDataManager& manager, BxSmartPointer<VoNode> samples, double factor)
    : m_samples(std::move(samples)), m_factor(factor)
{
    if (!m_samples || factor == 0)
        BX_THROW(BxExceptionPreconditionViolation, "CScaleSamplesOperation::CScaleSamplesOperation",
                 L"needs a samples node and a factor other than 0");
    SetDataManager(&manager);
    AddNodePointerToLock(m_samples);
}

bool CScaleSamplesOperation::scale(double factor)
{
    for (const BxSmartPointer<VoNode>& node : m_samples->GetChildren()) {
        const BxSmartPointer<VoDataNodeFloat64> sample = BxSmartPointerCast<VoDataNodeFloat64>(node);
        if (!sample)
            return false;
        sample->GetData()->Set(sample->GetData()->Get() * factor);
    }
    return true;
}
