// A data node carrying a BxUInt8, registered as "VoDataNodeUInt8".
//
//   BxSmartPointer<VoDataNodeUInt8> node(new VoDataNodeUInt8(L"value"));   // with a default BxUInt8
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxUInt8, registered as "VoDataNodeUInt8".
class VOBASE_API VoDataNodeUInt8 : public VoDataNode<BxUInt8>
{
public:
    /// A node named "__noname" with a default BxUInt8.
    VoDataNodeUInt8();
    /// A node with a default BxUInt8.
    explicit VoDataNodeUInt8(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeUInt8".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeUInt8 named "__noname" with a default BxUInt8.
    static std::unique_ptr<IObject> CreateByFactory();
};
