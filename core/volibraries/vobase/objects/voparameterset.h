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
// The members over parameters, extensions, constraints and groups, the
// EParameterConstraint kinds and the binary form come from VoParameterMapsT
// (see voparametermapst.h); its exceptions read "VoParameterSet::<member>".
// This class adds the groups, kept in an ordered map (BxMapEx) beside the
// shared maps.
//
// Binary form: version 0, then the parameters alone (version 0, u32 count, and
// per entry the wide name and the variant's binary form); extensions,
// constraints and groups are deliberately not part of it.
//
// Value semantics: copies copy every map. Not thread-safe.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/voparametermapst.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>

/// A named collection of variant values with optional limits, text extensions and nested groups; algorithms and
/// classes carry their settings in it.
class VOBASE_API VoParameterSet : public VoParameterMapsT<VoParameterSet, BxMapEx<CStringW, VoParameterSet>>
{
public:
    VoParameterSet();
    /// Copies every map, the groups (and their groups) included.
    VoParameterSet(const VoParameterSet& other);
    /// Replaces every map, the groups (and their groups) included, with copies
    /// of those of `other`.
    VoParameterSet& operator=(const VoParameterSet& other);
    ~VoParameterSet();

private:
    using Maps = VoParameterMapsT<VoParameterSet, GroupMap>;
    friend Maps;

    GroupMap& groupMap() noexcept { return m_groups; }
    const GroupMap& groupMap() const noexcept { return m_groups; }
    static const Origin& origin() noexcept;

    GroupMap m_groups;
};

extern template class VoParameterMapsT<VoParameterSet, BxMapEx<CStringW, VoParameterSet>>;
