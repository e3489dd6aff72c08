// A data node carrying a BxString, registered as "VoDataNodeString".
//
//   BxSmartPointer<VoDataNodeString> node(new VoDataNodeString(L"value"));   // with a default BxString
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxString, registered as "VoDataNodeString".
class VOBASE_API VoDataNodeString : public VoDataNode<BxString>
{
public:
    /// A node named "__noname" with a default BxString.
    VoDataNodeString();
    /// A node with a default BxString.
    explicit VoDataNodeString(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeString".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeString named "__noname" with a default BxString.
    static std::unique_ptr<IObject> CreateByFactory();
};
