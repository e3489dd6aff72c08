// The parameter set that describes a class's parameters: a VoParameterSet's
// maps plus description and resource identifiers (numbers that point into the
// application's string resources), with its groups in a separately owned map.
//
//   VoClassParameterSet params;
//   params.SetParameter(L"radius", BxVariant(2.0));
//   params.SetDescriptionID(L"radius", 4711);
//   params.SetResourceID(L"radius", 12);
//   params.AddGroup(L"advanced").SetParameter(L"iterations", BxVariant(100));
//
// The members over parameters, extensions, constraints and groups, the
// EParameterConstraint kinds and the binary form come from VoParameterMapsT
// (see voparametermapst.h), as for VoParameterSet; its exceptions read
// "VoClassParameterSet::<member>".
//
// Binary form: as VoParameterSet's, the parameters alone.
//
// Value semantics: copies copy every map, the groups included. Not thread-safe.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/voparametermapst.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>

#include <cstdint>
#include <memory>

/// The parameter set that describes a class's parameters: a VoParameterSet's maps plus description and resource
/// identifiers (numbers that point into the application's string resources), with its groups in a separately
/// owned map.
class VOBASE_API VoClassParameterSet
    : public VoParameterMapsT<VoClassParameterSet, BxMap<CStringW, VoClassParameterSet>>
{
public:
    VoClassParameterSet();
    /// Copies every map, the identifiers and the groups (into a map of its own).
    VoClassParameterSet(const VoClassParameterSet& other);
    /// Copies as the copy constructor does; on failure this set stays as it was.
    VoClassParameterSet& operator=(const VoClassParameterSet& other);
    ~VoClassParameterSet();

    /// Inserts or overwrites the description identifier of the parameter.
    void SetDescriptionID(const CStringW& name, std::uint32_t id);
    /// The description identifier, or 0 when there is none.
    std::uint32_t GetDescriptionID(const CStringW& name) const;
    /// True when the parameter has a description identifier.
    bool HasDescriptionID(const CStringW& name) const;
    /// Inserts or overwrites the resource identifier of the parameter.
    void SetResourceID(const CStringW& name, std::uint32_t id);
    /// The resource identifier, or 0 when there is none.
    std::uint32_t GetResourceID(const CStringW& name) const;
    /// True when the parameter has a resource identifier.
    bool HasResourceID(const CStringW& name) const;

    /// Empties every map, the identifiers and the groups included.
    void ResetAll() noexcept;

private:
    using Maps = VoParameterMapsT<VoClassParameterSet, GroupMap>;
    friend Maps;

    GroupMap& groupMap() noexcept { return *m_groups; }
    const GroupMap& groupMap() const noexcept { return *m_groups; }
    static const Origin& origin() noexcept;

    BxMap<CStringW, std::uint32_t> m_descriptionIDs;
    BxMap<CStringW, std::uint32_t> m_resourceIDs;
    /// Never null.
    std::unique_ptr<GroupMap> m_groups;
};

extern template class VoParameterMapsT<VoClassParameterSet, BxMap<CStringW, VoClassParameterSet>>;
