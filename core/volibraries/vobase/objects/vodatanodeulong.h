// A data node carrying a BxULong, registered as "VoDataNodeULong".
//
//   BxSmartPointer<VoDataNodeULong> node(new VoDataNodeULong(L"value"));   // with a default BxULong
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxULong, registered as "VoDataNodeULong".
class VOBASE_API VoDataNodeULong : public VoDataNode<BxULong>
{
public:
    /// A node named "__noname" with a default BxULong.
    VoDataNodeULong();
    /// A node with a default BxULong.
    explicit VoDataNodeULong(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeULong".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeULong named "__noname" with a default BxULong.
    static std::unique_ptr<IObject> CreateByFactory();
};
