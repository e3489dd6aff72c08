// Base of the context objects that a manager hands to its interceptors at a
// hook point (for example TaskManager::CContextWorkItem).
#pragma once

#include <bxbase/bxbaseapi.h>

namespace Interceptor {

/// Base of the context objects that a manager hands to its interceptors at a hook point (for example
/// TaskManager::CContextWorkItem).
class BXBASE_API IContext
{
public:
    virtual ~IContext() = default;
};

}  // namespace Interceptor
