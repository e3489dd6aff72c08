// A data node carrying a BxUInt16, registered as "VoDataNodeUInt16".
//
//   BxSmartPointer<VoDataNodeUInt16> node(new VoDataNodeUInt16(L"value"));   // with a default BxUInt16
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxUInt16, registered as "VoDataNodeUInt16".
class VOBASE_API VoDataNodeUInt16 : public VoDataNode<BxUInt16>
{
public:
    /// A node named "__noname" with a default BxUInt16.
    VoDataNodeUInt16();
    /// A node with a default BxUInt16.
    explicit VoDataNodeUInt16(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeUInt16".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeUInt16 named "__noname" with a default BxUInt16.
    static std::unique_ptr<IObject> CreateByFactory();
};
