// The base of the nodes that carry one value object (VoDataNode<T> and the
// typed nodes VoDataNodeInt32, VoDataNodeString, ...).
//
//   BxSmartPointer<VoNode> node = ...;
//   if (auto data = BxSmartPointerCast<VoDataNodeBase>(node))
//       handle(data->GetDataTypeInfo());
//
// Registered as "VoDataNodeBase". A VoDataNodeBase itself carries no data.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vonode.h>

/// The base of the nodes that carry one value object (VoDataNode<T> and the typed nodes VoDataNodeInt32,
/// VoDataNodeString, ...).
class VOBASE_API VoDataNodeBase : public VoNode
{
public:
    /// A node named "__noname" that serializes its leaves and tracks modifications.
    VoDataNodeBase();
    /// A node named `name` that serializes its leaves and tracks modifications.
    explicit VoDataNodeBase(const wchar_t* name);
    /// A node named `name` that tracks modifications.
    VoDataNodeBase(const wchar_t* name, bool serializeLeaves);
    /// A node named `name`; the arguments as for VoNode.
    VoDataNodeBase(const wchar_t* name, bool serializeLeaves, ETrackModificationMode mode);

    /// The registry record, registered as "VoDataNodeBase".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }
    /// The registry's factory: a new VoDataNodeBase named "__noname", without data.
    static std::unique_ptr<IObject> CreateByFactory();

protected:
    /// The node's data as a read-only reference-counted object; null here.
    virtual BxSmartPointer<const IReferenceCounted> getData() const { return nullptr; }
};
