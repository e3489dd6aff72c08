#include <vobase/objects/voclassparameterset.h>

VoClassParameterSet::VoClassParameterSet() : m_groups(std::make_unique<GroupMap>()) {}

VoClassParameterSet::VoClassParameterSet(const VoClassParameterSet& other)
    : Maps(other),
      m_descriptionIDs(other.m_descriptionIDs),
      m_resourceIDs(other.m_resourceIDs),
      m_groups(std::make_unique<GroupMap>(*other.m_groups))
{
}

VoClassParameterSet& VoClassParameterSet::operator=(const VoClassParameterSet& other)
{
    if (this != &other) {
        VoClassParameterSet copy(other);
        SwapMaps(copy);
        m_descriptionIDs.swap(copy.m_descriptionIDs);
        m_resourceIDs.swap(copy.m_resourceIDs);
        m_groups.swap(copy.m_groups);
    }
    return *this;
}

VoClassParameterSet::~VoClassParameterSet() = default;

const VoClassParameterSet::Origin& VoClassParameterSet::origin() noexcept
{
    // Exceptions of the shared members name this class and this place.
    static constexpr Origin origin{"VoClassParameterSet", __FILE__, __LINE__};
    return origin;
}

void VoClassParameterSet::SetDescriptionID(const CStringW& name, std::uint32_t id) { m_descriptionIDs[name] = id; }

std::uint32_t VoClassParameterSet::GetDescriptionID(const CStringW& name) const
{
    const auto found = m_descriptionIDs.find(name);
    return found == m_descriptionIDs.end() ? 0 : found->second;
}

bool VoClassParameterSet::HasDescriptionID(const CStringW& name) const { return m_descriptionIDs.contains(name); }

void VoClassParameterSet::SetResourceID(const CStringW& name, std::uint32_t id) { m_resourceIDs[name] = id; }

std::uint32_t VoClassParameterSet::GetResourceID(const CStringW& name) const
{
    const auto found = m_resourceIDs.find(name);
    return found == m_resourceIDs.end() ? 0 : found->second;
}

bool VoClassParameterSet::HasResourceID(const CStringW& name) const { return m_resourceIDs.contains(name); }

void VoClassParameterSet::ResetAll() noexcept
{
    Maps::ResetAll();
    m_descriptionIDs.clear();
    m_resourceIDs.clear();
}
