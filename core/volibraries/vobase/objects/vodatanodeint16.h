// A data node carrying a BxInt16, registered as "VoDataNodeInt16".
//
//   BxSmartPointer<VoDataNodeInt16> node(new VoDataNodeInt16(L"value"));   // with a default BxInt16
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxInt16, registered as "VoDataNodeInt16".
class VOBASE_API VoDataNodeInt16 : public VoDataNode<BxInt16>
{
public:
    /// A node named "__noname" with a default BxInt16.
    VoDataNodeInt16();
    /// A node with a default BxInt16.
    explicit VoDataNodeInt16(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeInt16".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeInt16 named "__noname" with a default BxInt16.
    static std::unique_ptr<IObject> CreateByFactory();
};
