#include <bxbase/bxrtti.h>

#include <mutex>
#include <unordered_map>

namespace {

struct Registry
{
    std::mutex mutex;
    std::unordered_map<std::wstring, const BxRTTI*> byName;
};

// Function-local so that records of any translation unit may register during
// static initialisation; never destroyed, so records may leave it at exit.
Registry& registry()
{
    static Registry* instance = new Registry;
    return *instance;
}

}  // namespace

BxRTTI::BxRTTI(const wchar_t* className, std::initializer_list<const BxRTTI*> bases, Factory factory,
               CloneFactory cloneFactory)
    : m_name(className), m_bases(bases), m_factory(factory), m_cloneFactory(cloneFactory)
{
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    r.byName.emplace(m_name, this);
}

BxRTTI::~BxRTTI()
{
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    auto it = r.byName.find(m_name);
    if (it != r.byName.end() && it->second == this)
        r.byName.erase(it);
}

bool BxRTTI::IsKindOf(const BxRTTI& rtti) const noexcept
{
    if (this == &rtti)
        return true;
    for (const BxRTTI* base : m_bases)
        if (base && base->IsKindOf(rtti))
            return true;
    return false;
}

std::unique_ptr<IObject> BxRTTI::CreateObject() const
{
    return m_factory ? m_factory() : nullptr;
}

std::unique_ptr<IObject> BxRTTI::CloneObject(const IObject& object) const
{
    return m_cloneFactory ? m_cloneFactory(object) : nullptr;
}

const BxRTTI* BxRTTI::Find(const std::wstring& className)
{
    auto& r = registry();
    std::lock_guard lock(r.mutex);
    auto it = r.byName.find(className);
    return it == r.byName.end() ? nullptr : it->second;
}

std::unique_ptr<IObject> BxRTTI::CreateByName(const std::wstring& className)
{
    const BxRTTI* rtti = Find(className);
    return rtti ? rtti->CreateObject() : nullptr;
}
