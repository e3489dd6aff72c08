#include <vobase/objects/voparametermapst.h>
#include <vobase/objects/voclassparameterset.h>
#include <vobase/objects/voparametermaps.h>
#include <vobase/objects/voparameterset.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <string>
#include <utility>

template <class Derived, class GroupMapT>
VoParameterMapsT<Derived, GroupMapT>::VoParameterMapsT() = default;

template <class Derived, class GroupMapT>
VoParameterMapsT<Derived, GroupMapT>::VoParameterMapsT(const VoParameterMapsT& other) = default;

template <class Derived, class GroupMapT>
VoParameterMapsT<Derived, GroupMapT>& VoParameterMapsT<Derived, GroupMapT>::operator=(const VoParameterMapsT& other) =
    default;

template <class Derived, class GroupMapT>
VoParameterMapsT<Derived, GroupMapT>::~VoParameterMapsT() = default;

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::SwapMaps(VoParameterMapsT& other) noexcept
{
    m_parameters.swap(other.m_parameters);
    m_extensions.swap(other.m_extensions);
    m_minimum.swap(other.m_minimum);
    m_maximum.swap(other.m_maximum);
    m_thirdKind.swap(other.m_thirdKind);
}

template <class Derived, class GroupMapT>
template <class Exception, class Message>
void VoParameterMapsT<Derived, GroupMapT>::fail(const char* member, const Message& message)
{
    const auto& origin = Derived::origin();
    const std::string function = std::string(origin.className) + "::" + member;
    throw Exception(origin.sourceFile, origin.line, function.c_str(), message);
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::SetParameter(const CStringW& name, const BxVariant& value)
{
    if (!IsInLimits(name, value))
        fail<BxExceptionPreconditionViolation>("SetParameter",
                                               L"value of parameter \"" + name + L"\" is outside its limits");
    m_parameters.erase(name);
    m_parameters.emplace(name, value);
}

template <class Derived, class GroupMapT>
int VoParameterMapsT<Derived, GroupMapT>::GetParameter(const CStringW& name, BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, out);
}

template <class Derived, class GroupMapT>
int VoParameterMapsT<Derived, GroupMapT>::GetParameter(const CStringW& name, const BxVariant& fallback,
                                                       BxVariant& out) const
{
    return VoParameterMaps::GetParameter(m_parameters, name, fallback, out);
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::HasParameter(const CStringW& name) const
{
    return m_parameters.contains(name);
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::DeleteParameter(const CStringW& name)
{
    return m_parameters.erase(name) != 0;
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::GetParameterKeys(BxArray<CStringW>& keys) const
{
    VoParameterMaps::SortedKeys(m_parameters, keys);
}

template <class Derived, class GroupMapT>
auto VoParameterMapsT<Derived, GroupMapT>::constraints(EParameterConstraint kind, const char* member)
    -> ConstraintMap&
{
    return const_cast<ConstraintMap&>(std::as_const(*this).constraints(kind, member));
}

template <class Derived, class GroupMapT>
auto VoParameterMapsT<Derived, GroupMapT>::constraints(EParameterConstraint kind, const char* member) const
    -> const ConstraintMap&
{
    switch (kind) {
    case eMinimum: return m_minimum;
    case eMaximum: return m_maximum;
    case eThirdKind: return m_thirdKind;
    }
    fail<BxExceptionPreconditionViolation>(member, "unknown constraint kind " + std::to_string(kind));
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::SetConstraint(const CStringW& name, EParameterConstraint kind,
                                                         const BxVariant& value)
{
    constraints(kind, "SetConstraint")[name] = value;
}

template <class Derived, class GroupMapT>
const BxVariant& VoParameterMapsT<Derived, GroupMapT>::GetConstraint(const CStringW& name,
                                                                     EParameterConstraint kind) const
{
    const auto& map = constraints(kind, "GetConstraint");
    const auto found = map.find(name);
    if (found == map.end())
        fail<BxExceptionContainer>("GetConstraint",
                                   L"parameter \"" + name + L"\" has no constraint of kind " + std::to_wstring(kind));
    return found->second;
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::HasConstraint(const CStringW& name, EParameterConstraint kind) const
{
    return constraints(kind, "HasConstraint").contains(name);
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::DeleteConstraint(const CStringW& name, EParameterConstraint kind)
{
    return constraints(kind, "DeleteConstraint").erase(name) != 0;
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::IsInLimits(const CStringW& name, const BxVariant& value) const
{
    return VoParameterMaps::IsInLimits(m_minimum, m_maximum, name, value);
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::SetExtension(const CStringW& name, const CStringW& extension)
{
    m_extensions[name] = extension;
}

template <class Derived, class GroupMapT>
CStringW VoParameterMapsT<Derived, GroupMapT>::GetExtension(const CStringW& name) const
{
    const auto found = m_extensions.find(name);
    return found == m_extensions.end() ? CStringW() : found->second;
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::HasExtension(const CStringW& name) const
{
    return m_extensions.contains(name);
}

template <class Derived, class GroupMapT>
Derived& VoParameterMapsT<Derived, GroupMapT>::AddGroup(const CStringW& name)
{
    return GetGroup(name);
}

template <class Derived, class GroupMapT>
Derived& VoParameterMapsT<Derived, GroupMapT>::GetGroup(const CStringW& name)
{
    return GetGroups()[name];
}

template <class Derived, class GroupMapT>
const Derived& VoParameterMapsT<Derived, GroupMapT>::GetGroup(const CStringW& name) const
{
    const GroupMap& groups = GetGroups();
    const auto found = groups.find(name);
    if (found == groups.end())
        fail<BxExceptionContainer>("GetGroup", L"no group \"" + name + L"\"");
    return found->second;
}

template <class Derived, class GroupMapT>
auto VoParameterMapsT<Derived, GroupMapT>::GetGroups() const noexcept -> const GroupMap&
{
    return derived().groupMap();
}

template <class Derived, class GroupMapT>
auto VoParameterMapsT<Derived, GroupMapT>::GetGroups() noexcept -> GroupMap&
{
    return derived().groupMap();
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::GetGroupNames(BxArray<CStringW>& names) const
{
    VoParameterMaps::SortedKeys(GetGroups(), names);
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::HasGroups() const noexcept
{
    return !GetGroups().empty();
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::IsGroup(const CStringW& name) const
{
    return GetGroups().contains(name);
}

template <class Derived, class GroupMapT>
bool VoParameterMapsT<Derived, GroupMapT>::RemoveGroup(const CStringW& name)
{
    return GetGroups().erase(name) != 0;
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::RemoveGroups() noexcept
{
    GetGroups().clear();
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::ResetAll() noexcept
{
    m_parameters.clear();
    m_extensions.clear();
    m_minimum.clear();
    m_maximum.clear();
    m_thirdKind.clear();
    RemoveGroups();
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::Serialize(BxStreamWriteBinary& stream) const
{
    VoParameterMaps::Write(stream, m_parameters);
}

template <class Derived, class GroupMapT>
void VoParameterMapsT<Derived, GroupMapT>::Serialize(BxStreamReadBinary& stream)
{
    VoParameterMaps::Read(stream, m_parameters);
}

template class VoParameterMapsT<VoParameterSet, BxMapEx<CStringW, VoParameterSet>>;
template class VoParameterMapsT<VoClassParameterSet, BxMap<CStringW, VoClassParameterSet>>;
