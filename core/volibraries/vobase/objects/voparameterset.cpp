#include <vobase/objects/voparameterset.h>
#include <vobase/objects/voparametermaps.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstringconvert.h>

#include <utility>

VoParameterSet::VoParameterSet() = default;
VoParameterSet::VoParameterSet(const VoParameterSet& other) = default;
VoParameterSet& VoParameterSet::operator=(const VoParameterSet& other) = default;
VoParameterSet::~VoParameterSet() = default;

void VoParameterSet::SetParameter(const CStringW& name, const BxVariant& value)
{
    if (!IsInLimits(name, value))
        BX_THROW(BxExceptionPreconditionViolation, "VoParameterSet::SetParameter",
                 L"value of parameter \"" + name + L"\" is outside its limits");
    m_parameters.erase(name);
    m_parameters.emplace(name, value);
}

int VoParameterSet::GetParameter(const CStringW& name, BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, out);
}

int VoParameterSet::GetParameter(const CStringW& name, const BxVariant& fallback, BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, fallback, out);
}

bool VoParameterSet::HasParameter(const CStringW& name) const { return m_parameters.contains(name); }
bool VoParameterSet::DeleteParameter(const CStringW& name) { return m_parameters.erase(name) != 0; }

void VoParameterSet::GetParameterKeys(BxArray<CStringW>& keys) const
{
    VoParameterMaps::SortedKeys(m_parameters, keys);
}

BxMap<CStringW, BxVariant>& VoParameterSet::constraints(EParameterConstraint kind, const char* function)
{
    return const_cast<BxMap<CStringW, BxVariant>&>(std::as_const(*this).constraints(kind, function));
}

const BxMap<CStringW, BxVariant>& VoParameterSet::constraints(EParameterConstraint kind, const char* function) const
{
    switch (kind) {
    case eMinimum: return m_minimum;
    case eMaximum: return m_maximum;
    case eThirdKind: return m_thirdKind;
    }
    BX_THROW(BxExceptionPreconditionViolation, function, "unknown constraint kind " + std::to_string(kind));
}

void VoParameterSet::SetConstraint(const CStringW& name, EParameterConstraint kind, const BxVariant& value)
{
    constraints(kind, "VoParameterSet::SetConstraint")[name] = value;
}

const BxVariant& VoParameterSet::GetConstraint(const CStringW& name, EParameterConstraint kind) const
{
    const auto& map = constraints(kind, "VoParameterSet::GetConstraint");
    const auto found = map.find(name);
    if (found == map.end())
        BX_THROW(BxExceptionContainer, "VoParameterSet::GetConstraint",
                 L"parameter \"" + name + L"\" has no constraint of kind " + std::to_wstring(kind));
    return found->second;
}

bool VoParameterSet::HasConstraint(const CStringW& name, EParameterConstraint kind) const
{
    return constraints(kind, "VoParameterSet::HasConstraint").contains(name);
}

bool VoParameterSet::DeleteConstraint(const CStringW& name, EParameterConstraint kind)
{
    return constraints(kind, "VoParameterSet::DeleteConstraint").erase(name) != 0;
}

bool VoParameterSet::IsInLimits(const CStringW& name, const BxVariant& value) const
{
    return VoParameterMaps::IsInLimits(m_minimum, m_maximum, name, value);
}

void VoParameterSet::SetExtension(const CStringW& name, const CStringW& extension) { m_extensions[name] = extension; }

CStringW VoParameterSet::GetExtension(const CStringW& name) const
{
    const auto found = m_extensions.find(name);
    return found == m_extensions.end() ? CStringW() : found->second;
}

bool VoParameterSet::HasExtension(const CStringW& name) const { return m_extensions.contains(name); }

VoParameterSet& VoParameterSet::AddGroup(const CStringW& name) { return m_groups[name]; }
VoParameterSet& VoParameterSet::GetGroup(const CStringW& name) { return m_groups[name]; }

const VoParameterSet& VoParameterSet::GetGroup(const CStringW& name) const
{
    const auto found = m_groups.find(name);
    if (found == m_groups.end())
        BX_THROW(BxExceptionContainer, "VoParameterSet::GetGroup", L"no group \"" + name + L"\"");
    return found->second;
}

void VoParameterSet::GetGroupNames(BxArray<CStringW>& names) const { VoParameterMaps::SortedKeys(m_groups, names); }
bool VoParameterSet::IsGroup(const CStringW& name) const { return m_groups.contains(name); }
bool VoParameterSet::RemoveGroup(const CStringW& name) { return m_groups.erase(name) != 0; }

void VoParameterSet::ResetAll() noexcept
{
    m_parameters.clear();
    m_extensions.clear();
    m_minimum.clear();
    m_maximum.clear();
    m_thirdKind.clear();
    m_groups.clear();
}

void VoParameterSet::Serialize(BxStreamWriteBinary& stream) const { VoParameterMaps::Write(stream, m_parameters); }
void VoParameterSet::Serialize(BxStreamReadBinary& stream) { VoParameterMaps::Read(stream, m_parameters); }
