// One process-wide instance of T, made on the first GetInstance call under
// the singleton lock and destroyed at process exit (in the reverse order of
// creation).
//
//   class VoMessageDispatcher { friend class BxSingleton<VoMessageDispatcher>; VoMessageDispatcher(); ... };
//   VoMessageDispatcher& d = BxSingleton<VoMessageDispatcher>::GetInstance();
//
// The instance is kept in a registry inside the bxbase library, keyed by the
// type's name, so that every shared library and the program see the same
// object even though templates are instantiated in each of them. T's
// constructor may itself use other singletons (the lock is recursive).
// While the instances are destroyed at exit, those not yet destroyed can still
// be reached; making a new one then throws BxExceptionPreconditionViolation.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <atomic>
#include <typeinfo>

/// The registry behind BxSingleton<T>; not used directly.
class BXBASE_API BxSingletonRegistry
{
public:
    /// Makes the instance (new T) and returns it untyped.
    using Create = void* (*)();
    /// Destroys an instance made by the matching Create (at process exit).
    using Destroy = void (*)(void*);

    /// The instance registered for type, made with create (under the singleton lock) when missing.
    static void* GetOrCreate(const std::type_info& type, Create create, Destroy destroy);
};

/// One process-wide instance of T, made on the first GetInstance call under the singleton lock and destroyed at
/// process exit (in the reverse order of creation).
template <class T>
class BxSingleton
{
public:
    /// The instance, made on first use.
    static T& GetInstance()
    {
        T* instance = s_instance.load(std::memory_order_acquire);
        if (instance == nullptr)
        {
            instance = static_cast<T*>(BxSingletonRegistry::GetOrCreate(typeid(T), &create, &destroy));
            s_instance.store(instance, std::memory_order_release);
        }
        return *instance;
    }

private:
    static void* create() { return new T(); }
    static void destroy(void* p)
    {
        s_instance.store(nullptr, std::memory_order_release);
        delete static_cast<T*>(p);
    }

    static inline std::atomic<T*> s_instance{nullptr}; ///< this module's cache of the registry entry
};
