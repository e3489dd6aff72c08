// A data node carrying a BxChar, registered as "VoDataNodeChar".
//
//   BxSmartPointer<VoDataNodeChar> node(new VoDataNodeChar(L"value"));   // with a default BxChar
//   node->GetData()->Set(...);
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanode.h>

/// A data node carrying a BxChar, registered as "VoDataNodeChar".
class VOBASE_API VoDataNodeChar : public VoDataNode<BxChar>
{
public:
    /// A node named "__noname" with a default BxChar.
    VoDataNodeChar();
    /// A node with a default BxChar.
    explicit VoDataNodeChar(const CStringW& name, bool serializeLeaves = true, ETrackModificationMode mode = eTMM_Track);

    /// The registry record, registered as "VoDataNodeChar".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeChar named "__noname" with a default BxChar.
    static std::unique_ptr<IObject> CreateByFactory();
};
