// A data node carrying a BxLong, registered as "VoDataNodeLong".
//
//   BxSmartPointer<VoDataNodeLong> node(new VoDataNodeLong(L"value"));   // with a default BxLong
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxLong, registered as "VoDataNodeLong".
class VOBASE_API VoDataNodeLong : public VoDataNode<BxLong>
{
public:
    /// A node named "__noname" with a default BxLong.
    VoDataNodeLong();
    /// A node with a default BxLong.
    explicit VoDataNodeLong(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeLong".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeLong named "__noname" with a default BxLong.
    static std::unique_ptr<IObject> CreateByFactory();
};
