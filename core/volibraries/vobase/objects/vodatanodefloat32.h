// A data node carrying a BxFloat32, registered as "VoDataNodeFloat32".
//
//   BxSmartPointer<VoDataNodeFloat32> node(new VoDataNodeFloat32(L"value"));   // with a default BxFloat32
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxFloat32, registered as "VoDataNodeFloat32".
class VOBASE_API VoDataNodeFloat32 : public VoDataNode<BxFloat32>
{
public:
    /// A node named "__noname" with a default BxFloat32.
    VoDataNodeFloat32();
    /// A node with a default BxFloat32.
    explicit VoDataNodeFloat32(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeFloat32".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeFloat32 named "__noname" with a default BxFloat32.
    static std::unique_ptr<IObject> CreateByFactory();
};
