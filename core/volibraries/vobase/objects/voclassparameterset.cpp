#include <vobase/objects/voclassparameterset.h>
#include <vobase/objects/voparametermaps.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstringconvert.h>

#include <utility>

VoClassParameterSet::VoClassParameterSet() : m_groups(std::make_unique<GroupMap>()) {}

VoClassParameterSet::VoClassParameterSet(const VoClassParameterSet& other)
    : m_parameters(other.m_parameters),
      m_extensions(other.m_extensions),
      m_minimum(other.m_minimum),
      m_maximum(other.m_maximum),
      m_thirdKind(other.m_thirdKind),
      m_descriptionIDs(other.m_descriptionIDs),
      m_resourceIDs(other.m_resourceIDs),
      m_groups(std::make_unique<GroupMap>(*other.m_groups))
{
}

VoClassParameterSet& VoClassParameterSet::operator=(const VoClassParameterSet& other)
{
    if (this != &other) {
        VoClassParameterSet copy(other);
        m_parameters.swap(copy.m_parameters);
        m_extensions.swap(copy.m_extensions);
        m_minimum.swap(copy.m_minimum);
        m_maximum.swap(copy.m_maximum);
        m_thirdKind.swap(copy.m_thirdKind);
        m_descriptionIDs.swap(copy.m_descriptionIDs);
        m_resourceIDs.swap(copy.m_resourceIDs);
        m_groups.swap(copy.m_groups);
    }
    return *this;
}

VoClassParameterSet::~VoClassParameterSet() = default;

void VoClassParameterSet::SetParameter(const CStringW& name, const BxVariant& value)
{
    if (!IsInLimits(name, value))
        BX_THROW(BxExceptionPreconditionViolation, "VoClassParameterSet::SetParameter",
                 L"value of parameter \"" + name + L"\" is outside its limits");
    m_parameters.erase(name);
    m_parameters.emplace(name, value);
}

int VoClassParameterSet::GetParameter(const CStringW& name, BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, out);
}

int VoClassParameterSet::GetParameter(const CStringW& name, const BxVariant& fallback, BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, fallback, out);
}

bool VoClassParameterSet::HasParameter(const CStringW& name) const { return m_parameters.contains(name); }
bool VoClassParameterSet::DeleteParameter(const CStringW& name) { return m_parameters.erase(name) != 0; }

void VoClassParameterSet::GetParameterKeys(BxArray<CStringW>& keys) const
{
    VoParameterMaps::SortedKeys(m_parameters, keys);
}

BxMap<CStringW, BxVariant>& VoClassParameterSet::constraints(EParameterConstraint kind, const char* function)
{
    return const_cast<BxMap<CStringW, BxVariant>&>(std::as_const(*this).constraints(kind, function));
}

const BxMap<CStringW, BxVariant>& VoClassParameterSet::constraints(EParameterConstraint kind, const char* function) const
{
    switch (kind) {
    case eMinimum: return m_minimum;
    case eMaximum: return m_maximum;
    case eThirdKind: return m_thirdKind;
    }
    BX_THROW(BxExceptionPreconditionViolation, function, "unknown constraint kind " + std::to_string(kind));
}

void VoClassParameterSet::SetConstraint(const CStringW& name, EParameterConstraint kind, const BxVariant& value)
{
    constraints(kind, "VoClassParameterSet::SetConstraint")[name] = value;
}

const BxVariant& VoClassParameterSet::GetConstraint(const CStringW& name, EParameterConstraint kind) const
{
    const auto& map = constraints(kind, "VoClassParameterSet::GetConstraint");
    const auto found = map.find(name);
    if (found == map.end())
        BX_THROW(BxExceptionContainer, "VoClassParameterSet::GetConstraint",
                 L"parameter \"" + name + L"\" has no constraint of kind " + std::to_wstring(kind));
    return found->second;
}

bool VoClassParameterSet::HasConstraint(const CStringW& name, EParameterConstraint kind) const
{
    return constraints(kind, "VoClassParameterSet::HasConstraint").contains(name);
}

bool VoClassParameterSet::DeleteConstraint(const CStringW& name, EParameterConstraint kind)
{
    return constraints(kind, "VoClassParameterSet::DeleteConstraint").erase(name) != 0;
}

bool VoClassParameterSet::IsInLimits(const CStringW& name, const BxVariant& value) const
{
    return VoParameterMaps::IsInLimits(m_minimum, m_maximum, name, value);
}

void VoClassParameterSet::SetExtension(const CStringW& name, const CStringW& extension) { m_extensions[name] = extension; }

CStringW VoClassParameterSet::GetExtension(const CStringW& name) const
{
    const auto found = m_extensions.find(name);
    return found == m_extensions.end() ? CStringW() : found->second;
}

bool VoClassParameterSet::HasExtension(const CStringW& name) const { return m_extensions.contains(name); }

VoClassParameterSet& VoClassParameterSet::AddGroup(const CStringW& name) { return (*m_groups)[name]; }
VoClassParameterSet& VoClassParameterSet::GetGroup(const CStringW& name) { return (*m_groups)[name]; }

const VoClassParameterSet& VoClassParameterSet::GetGroup(const CStringW& name) const
{
    const auto found = m_groups->find(name);
    if (found == m_groups->end())
        BX_THROW(BxExceptionContainer, "VoClassParameterSet::GetGroup", L"no group \"" + name + L"\"");
    return found->second;
}

void VoClassParameterSet::GetGroupNames(BxArray<CStringW>& names) const
{
    VoParameterMaps::SortedKeys(*m_groups, names);
}

bool VoClassParameterSet::HasGroups() const noexcept { return !m_groups->empty(); }
bool VoClassParameterSet::IsGroup(const CStringW& name) const { return m_groups->contains(name); }
bool VoClassParameterSet::RemoveGroup(const CStringW& name) { return m_groups->erase(name) != 0; }
void VoClassParameterSet::RemoveGroups() noexcept { m_groups->clear(); }

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
    m_parameters.clear();
    m_extensions.clear();
    m_minimum.clear();
    m_maximum.clear();
    m_thirdKind.clear();
    m_descriptionIDs.clear();
    m_resourceIDs.clear();
    m_groups->clear();
}

void VoClassParameterSet::Serialize(BxStreamWriteBinary& stream) const { VoParameterMaps::Write(stream, m_parameters); }
void VoClassParameterSet::Serialize(BxStreamReadBinary& stream) { VoParameterMaps::Read(stream, m_parameters); }
