// A data node carrying a BxFloat64, registered as "VoDataNodeFloat64".
//
//   BxSmartPointer<VoDataNodeFloat64> node(new VoDataNodeFloat64(L"value"));   // with a default BxFloat64
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxFloat64, registered as "VoDataNodeFloat64".
class VOBASE_API VoDataNodeFloat64 : public VoDataNode<BxFloat64>
{
public:
    /// A node named "__noname" with a default BxFloat64.
    VoDataNodeFloat64();
    /// A node with a default BxFloat64.
    explicit VoDataNodeFloat64(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeFloat64".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeFloat64 named "__noname" with a default BxFloat64.
    static std::unique_ptr<IObject> CreateByFactory();
};
