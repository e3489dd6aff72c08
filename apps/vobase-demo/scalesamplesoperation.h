// Undoable edit: multiplies every sample of the document by a factor. It is
// relative (it changes the samples as they are), so reverting divides by the
// factor again; with a power of two both directions are exact.
//
//   BxSmartPointer<VoOperation> gain(new CScaleSamplesOperation(manager, document.GetSamplesNode(), 2.0));
//   gain->ApplyWithLocking();           // write-locks the Samples subtree
#pragma once

#include <vobase/history/vooperation.h>
#include <vobase/objects/vonode.h>

class CScaleSamplesOperation : public VoOperation
{
public:
    /// Scales the VoDataNodeFloat64 children of `samples` by `factor` (not 0).
    CScaleSamplesOperation(VoDataManager& manager, BxSmartPointer<VoNode> samples, double factor);

    bool Apply() override { return scale(m_factor); }
    bool Revert() override { return scale(1 / m_factor); }

private:
    /// Multiplies every sample by `factor`; false when a child is no sample.
    bool scale(double factor);

    BxSmartPointer<VoNode> m_samples;
    double m_factor;
};
