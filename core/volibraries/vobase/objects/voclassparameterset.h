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
// Binary form: as VoParameterSet's, the parameters alone.
//
// Value semantics: copies copy every map, the groups included. Not thread-safe.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>
#include <bxbase/bxvariant.h>

#include <cstdint>
#include <memory>

class BxStreamReadBinary;
class BxStreamWriteBinary;

class VOBASE_API VoClassParameterSet
{
public:
    /// Kinds of constraint; kind k lives in the (k + 1)-th constraint map.
    enum EParameterConstraint
    {
        eMinimum = 0,
        eMaximum = 1,
        /// Stored, queried and deleted like the others; not used by the limit check.
        eThirdKind = 2
    };

    using ParameterMap = BxMap<CStringW, BxVariant>;
    using GroupMap = BxMap<CStringW, VoClassParameterSet>;

    VoClassParameterSet();
    VoClassParameterSet(const VoClassParameterSet& other);
    VoClassParameterSet& operator=(const VoClassParameterSet& other);
    ~VoClassParameterSet();

    /// Stores the value after checking its limits; a value outside them throws
    /// BxException at "VoClassParameterSet::SetParameter" and leaves the set unchanged.
    void SetParameter(const CStringW& name, const BxVariant& value);
    /// Copies the stored value to `out`; nonzero when the parameter exists.
    int GetParameter(const CStringW& name, BxVariant& out) const;
    /// `out` receives the stored value, or `fallback`; nonzero when the parameter exists.
    int GetParameter(const CStringW& name, const BxVariant& fallback, BxVariant& out) const;
    bool HasParameter(const CStringW& name) const;
    /// Removes the parameter; false when it did not exist.
    bool DeleteParameter(const CStringW& name);
    /// Empties `keys`, appends every parameter name and sorts them.
    void GetParameterKeys(BxArray<CStringW>& keys) const;
    const ParameterMap& GetParameters() const noexcept { return m_parameters; }
    ParameterMap& GetParameters() noexcept { return m_parameters; }

    /// Inserts or overwrites the constraint of the given kind.
    void SetConstraint(const CStringW& name, EParameterConstraint kind, const BxVariant& value);
    /// The constraint; a missing one throws BxException at "VoClassParameterSet::GetConstraint".
    const BxVariant& GetConstraint(const CStringW& name, EParameterConstraint kind) const;
    bool HasConstraint(const CStringW& name, EParameterConstraint kind) const;
    /// Removes the constraint; false when it did not exist.
    bool DeleteConstraint(const CStringW& name, EParameterConstraint kind);
    /// False when value < minimum or value > maximum (BxVariant's comparisons).
    bool IsInLimits(const CStringW& name, const BxVariant& value) const;

    void SetExtension(const CStringW& name, const CStringW& extension);
    /// The extension, or the empty text when there is none.
    CStringW GetExtension(const CStringW& name) const;
    bool HasExtension(const CStringW& name) const;

    void SetDescriptionID(const CStringW& name, std::uint32_t id);
    /// The description identifier, or 0 when there is none.
    std::uint32_t GetDescriptionID(const CStringW& name) const;
    bool HasDescriptionID(const CStringW& name) const;
    void SetResourceID(const CStringW& name, std::uint32_t id);
    /// The resource identifier, or 0 when there is none.
    std::uint32_t GetResourceID(const CStringW& name) const;
    bool HasResourceID(const CStringW& name) const;

    /// The group of that name, created empty when missing (same as GetGroup).
    VoClassParameterSet& AddGroup(const CStringW& name);
    /// The group of that name, created empty when missing.
    VoClassParameterSet& GetGroup(const CStringW& name);
    /// The group of that name; a missing one throws BxExceptionContainer at "VoClassParameterSet::GetGroup".
    const VoClassParameterSet& GetGroup(const CStringW& name) const;
    const GroupMap& GetGroups() const noexcept { return *m_groups; }
    GroupMap& GetGroups() noexcept { return *m_groups; }
    /// Empties `names`, appends every group name and sorts them.
    void GetGroupNames(BxArray<CStringW>& names) const;
    bool HasGroups() const noexcept;
    bool IsGroup(const CStringW& name) const;
    /// Removes the group; false when it did not exist.
    bool RemoveGroup(const CStringW& name);
    void RemoveGroups() noexcept;

    /// Empties every map, the identifiers and the groups included.
    void ResetAll() noexcept;

    /// Writes the binary form (parameters only).
    void Serialize(BxStreamWriteBinary& stream) const;
    /// Replaces the parameters with those read; everything else stays.
    void Serialize(BxStreamReadBinary& stream);

private:
    BxMap<CStringW, BxVariant>& constraints(EParameterConstraint kind, const char* function);
    const BxMap<CStringW, BxVariant>& constraints(EParameterConstraint kind, const char* function) const;

    ParameterMap m_parameters;
    BxMap<CStringW, CStringW> m_extensions;
    BxMap<CStringW, BxVariant> m_minimum;
    BxMap<CStringW, BxVariant> m_maximum;
    BxMap<CStringW, BxVariant> m_thirdKind;
    BxMap<CStringW, std::uint32_t> m_descriptionIDs;
    BxMap<CStringW, std::uint32_t> m_resourceIDs;
    /// Never null.
    std::unique_ptr<GroupMap> m_groups;
};
