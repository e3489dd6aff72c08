// Interface of reference-counted objects that offer extensions by name.
//
//   IExtensionInterface* access = object.GetExtension("IAlgorithmAccess", true);  // throws when unknown
//   IExtensionInterface* other = object.GetExtension("INothing", false);           // null when unknown
//
// The extension belongs to the object and lives as long as it does.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/iextensioninterface.h>
#include <bxbase/ireferencecounted.h>

/// Interface of reference-counted objects that offer extensions by name.
class BXBASE_API IExtendable : public IExtensionInterface, public IReferenceCounted
{
public:
    /// The extension called `name`; for an unknown name null, or
    /// BxExceptionUnknownExtension when `throwIfUnknown` is true.
    virtual IExtensionInterface* GetExtension(const char* name, bool throwIfUnknown) = 0;
    /// Read-only form of GetExtension.
    virtual const IExtensionInterface* GetExtension(const char* name, bool throwIfUnknown) const = 0;
};
