// A data node carrying a BxUInt32, registered as "VoDataNodeUInt32".
//
//   BxSmartPointer<VoDataNodeUInt32> node(new VoDataNodeUInt32(L"value"));   // with a default BxUInt32
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxUInt32, registered as "VoDataNodeUInt32".
class VOBASE_API VoDataNodeUInt32 : public VoDataNode<BxUInt32>
{
public:
    /// A node named "__noname" with a default BxUInt32.
    VoDataNodeUInt32();
    /// A node with a default BxUInt32.
    explicit VoDataNodeUInt32(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeUInt32".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeUInt32 named "__noname" with a default BxUInt32.
    static std::unique_ptr<IObject> CreateByFactory();
};
