// A data node carrying a BxUInt64, registered as "VoDataNodeUInt64".
//
//   BxSmartPointer<VoDataNodeUInt64> node(new VoDataNodeUInt64(L"value"));   // with a default BxUInt64
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxUInt64, registered as "VoDataNodeUInt64".
class VOBASE_API VoDataNodeUInt64 : public VoDataNode<BxUInt64>
{
public:
    /// A node named "__noname" with a default BxUInt64.
    VoDataNodeUInt64();
    /// A node with a default BxUInt64.
    explicit VoDataNodeUInt64(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeUInt64".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeUInt64 named "__noname" with a default BxUInt64.
    static std::unique_ptr<IObject> CreateByFactory();
};
