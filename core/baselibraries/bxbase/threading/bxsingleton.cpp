#include <bxbase/threading/bxsingleton.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace
{
struct SEntry
{
    std::string typeName;
    void* instance;
    BxSingletonRegistry::Destroy destroy;
};

// Made on first use; its destructor runs at exit and destroys the instances,
// newest first. The lock is recursive so that a constructor may use other singletons.
class CRegistry
{
public:
    ~CRegistry()
    {
        std::unique_lock lock(m_lock);
        m_closed = true;
        while (!m_entries.empty())
        {
            SEntry entry = std::move(m_entries.back());
            m_entries.pop_back();
            lock.unlock(); // the destructor may itself use singletons still alive
            entry.destroy(entry.instance);
            lock.lock();
        }
    }

    void* getOrCreate(const std::type_info& type, BxSingletonRegistry::Create create, BxSingletonRegistry::Destroy destroy)
    {
        std::lock_guard lock(m_lock);
        for (const SEntry& entry : m_entries)
            if (entry.typeName == type.name())
                return entry.instance;
        if (m_closed)
            BX_THROW(BxExceptionPreconditionViolation, "BxSingleton::GetInstance", "a new singleton after exit began");
        void* instance = create();
        m_entries.push_back(SEntry{type.name(), instance, destroy});
        return instance;
    }

private:
    std::recursive_mutex m_lock;   ///< the singleton lock; guards m_entries and m_closed
    std::vector<SEntry> m_entries; ///< in order of creation
    bool m_closed = false;
};

CRegistry& registry()
{
    static CRegistry s_registry;
    return s_registry;
}
} // namespace

void* BxSingletonRegistry::GetOrCreate(const std::type_info& type, Create create, Destroy destroy)
{
    return registry().getOrCreate(type, create, destroy);
}
