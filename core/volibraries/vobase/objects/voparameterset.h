// A named collection of variant values with optional limits, text extensions
// and nested groups; algorithms and classes carry their settings in it.
//
//   VoParameterSet set;
//   set.SetConstraint(L"gain", VoParameterSet::eMinimum, BxVariant(0));
//   set.SetConstraint(L"gain", VoParameterSet::eMaximum, BxVariant(10));
//   set.SetParameter(L"gain", BxVariant(10));      // inside the limits
//   set.SetParameter(L"gain", BxVariant(11));      // throws, 10 stays
//   set.AddGroup(L"filter").SetParameter(L"size", BxVariant(3));
//
// Binary form: version 0, then the parameters alone (version 0, u32 count, and
// per entry the wide name and the variant's binary form); extensions,
// constraints and groups are deliberately not part of it.
//
// Value semantics: copies copy every map. Not thread-safe.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>
#include <bxbase/bxvariant.h>

class BxStreamReadBinary;
class BxStreamWriteBinary;

class VOBASE_API VoParameterSet
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
    using GroupMap = BxMapEx<CStringW, VoParameterSet>;

    VoParameterSet();
    VoParameterSet(const VoParameterSet& other);
    VoParameterSet& operator=(const VoParameterSet& other);
    ~VoParameterSet();

    /// Stores the value after checking its limits; a value outside them throws
    /// BxException at "VoParameterSet::SetParameter" and leaves the set unchanged.
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
    /// The constraint; a missing one throws BxException at "VoParameterSet::GetConstraint".
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

    /// The group of that name, created empty when missing (same as GetGroup).
    VoParameterSet& AddGroup(const CStringW& name);
    /// The group of that name, created empty when missing.
    VoParameterSet& GetGroup(const CStringW& name);
    /// The group of that name; a missing one throws BxExceptionContainer at "VoParameterSet::GetGroup".
    const VoParameterSet& GetGroup(const CStringW& name) const;
    const GroupMap& GetGroups() const noexcept { return m_groups; }
    GroupMap& GetGroups() noexcept { return m_groups; }
    /// Empties `names`, appends every group name and sorts them.
    void GetGroupNames(BxArray<CStringW>& names) const;
    bool HasGroups() const noexcept { return !m_groups.empty(); }
    bool IsGroup(const CStringW& name) const;
    /// Removes the group; false when it did not exist.
    bool RemoveGroup(const CStringW& name);
    void RemoveGroups() noexcept { m_groups.clear(); }

    /// Empties every map.
    void ResetAll() noexcept;

    /// Writes the binary form (parameters only).
    void Serialize(BxStreamWriteBinary& stream) const;
    /// Replaces the parameters with those read; constraints, extensions and groups stay.
    void Serialize(BxStreamReadBinary& stream);

private:
    BxMap<CStringW, BxVariant>& constraints(EParameterConstraint kind, const char* function);
    const BxMap<CStringW, BxVariant>& constraints(EParameterConstraint kind, const char* function) const;

    ParameterMap m_parameters;
    BxMap<CStringW, CStringW> m_extensions;
    BxMap<CStringW, BxVariant> m_minimum;
    BxMap<CStringW, BxVariant> m_maximum;
    BxMap<CStringW, BxVariant> m_thirdKind;
    GroupMap m_groups;
};
