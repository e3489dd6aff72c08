// A data node carrying a BxInt32, registered as "VoDataNodeInt32".
//
//   BxSmartPointer<VoDataNodeInt32> node(new VoDataNodeInt32(L"value"));   // with a default BxInt32
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxInt32, registered as "VoDataNodeInt32".
class VOBASE_API VoDataNodeInt32 : public VoDataNode<BxInt32>
{
public:
    /// A node named "__noname" with a default BxInt32.
    VoDataNodeInt32();
    /// A node with a default BxInt32.
    explicit VoDataNodeInt32(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeInt32".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeInt32 named "__noname" with a default BxInt32.
    static std::unique_ptr<IObject> CreateByFactory();
};
