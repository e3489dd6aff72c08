// What a manager that can be intercepted offers: access to its interceptor list.
#pragma once

#include <bxbase/interceptor/idispatcher.h>

#include <memory>

namespace Interceptor {

/// What a manager that can be intercepted offers: access to its interceptor list.
template <class I>
class IFramework
{
public:
    virtual ~IFramework() = default;

    /// The manager's interceptor list; add interceptors to it to hook in.
    virtual std::shared_ptr<IDispatcher<I>> GetDispatcher() const = 0;
};

}  // namespace Interceptor
