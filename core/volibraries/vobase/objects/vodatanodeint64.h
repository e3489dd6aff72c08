// A data node carrying a BxInt64, registered as "VoDataNodeInt64".
//
//   BxSmartPointer<VoDataNodeInt64> node(new VoDataNodeInt64(L"value"));   // with a default BxInt64
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxInt64, registered as "VoDataNodeInt64".
class VOBASE_API VoDataNodeInt64 : public VoDataNode<BxInt64>
{
public:
    /// A node named "__noname" with a default BxInt64.
    VoDataNodeInt64();
    /// A node with a default BxInt64.
    explicit VoDataNodeInt64(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeInt64".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeInt64 named "__noname" with a default BxInt64.
    static std::unique_ptr<IObject> CreateByFactory();
};
