// A data node carrying a BxInt8, registered as "VoDataNodeInt8".
//
//   BxSmartPointer<VoDataNodeInt8> node(new VoDataNodeInt8(L"value"));   // with a default BxInt8
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxInt8, registered as "VoDataNodeInt8".
class VOBASE_API VoDataNodeInt8 : public VoDataNode<BxInt8>
{
public:
    /// A node named "__noname" with a default BxInt8.
    VoDataNodeInt8();
    /// A node with a default BxInt8.
    explicit VoDataNodeInt8(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeInt8".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeInt8 named "__noname" with a default BxInt8.
    static std::unique_ptr<IObject> CreateByFactory();
};
