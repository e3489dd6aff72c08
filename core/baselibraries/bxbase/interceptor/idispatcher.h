// The list of interceptors of one manager.
//
// I is the manager's interceptor interface, whose hook operations take the
// manager's context objects: `virtual void OnAdd(const CContextWorkItem&)`.
#pragma once

#include <functional>
#include <memory>

namespace Interceptor {

/// The list of interceptors of one manager.
template <class I>
class IDispatcher
{
public:
    virtual ~IDispatcher() = default;

    /// Adds an interceptor; nothing happens when the same object is already there.
    virtual void Add(const std::shared_ptr<I>& interceptor) = 0;
    /// Removes the entry holding the same object; an unknown one is ignored.
    virtual void Remove(const std::shared_ptr<I>& interceptor) = 0;
    /// The number of registered interceptors.
    virtual std::size_t GetCount() const = 0;
    /// Calls `visit` for every registered interceptor.
    virtual void ForEach(const std::function<void(I&)>& visit) const = 0;
};

}  // namespace Interceptor
