// Root of the interfaces an object can offer as extensions.
//
// An extendable object (IExtendable) hands out its extensions by name; each
// extension derives from this interface so that one call can return any of
// them:
//
//   IExtensionInterface* extension = algorithm.GetExtension("IAlgorithmAccess", false);
//   if (auto* access = dynamic_cast<IAlgorithmAccess*>(extension)) { ... }
#pragma once

#include <bxbase/bxbaseapi.h>

/// Root of the interfaces an object can offer as extensions.
class BXBASE_API IExtensionInterface
{
public:
    virtual ~IExtensionInterface() = default;
};
