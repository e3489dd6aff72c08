// A data node carrying a BxBool, registered as "VoDataNodeBool".
//
//   BxSmartPointer<VoDataNodeBool> node(new VoDataNodeBool(L"value"));   // with a default BxBool
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxBool, registered as "VoDataNodeBool".
class VOBASE_API VoDataNodeBool : public VoDataNode<BxBool>
{
public:
    /// A node named "__noname" with a default BxBool.
    VoDataNodeBool();
    /// A node with a default BxBool.
    explicit VoDataNodeBool(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeBool".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeBool named "__noname" with a default BxBool.
    static std::unique_ptr<IObject> CreateByFactory();
};
