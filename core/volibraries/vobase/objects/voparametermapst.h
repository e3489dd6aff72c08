// The maps and members that VoParameterSet and VoClassParameterSet have in
// common: parameters, extensions, the three constraint maps, and the group
// operations over the group map that each class keeps in its own way.
//
//   class VoParameterSet : public VoParameterMapsT<VoParameterSet, BxMapEx<CStringW, VoParameterSet>>
//   {
//       // provides groupMap() (const and non-const) and origin()
//   };
//
// Derived supplies, privately (this class is its friend):
//   GroupMap& groupMap() noexcept;  const GroupMap& groupMap() const noexcept;
//       where the groups live;
//   static const Origin& origin() noexcept;
//       the class name and source position its exceptions carry, so that a
//       failure reads "VoParameterSet::SetParameter" and names voparameterset.cpp.
//
// Fields in order: parameters, extensions, minimum, maximum and third-kind
// constraints; Derived's own fields follow. Binary form: version 0, then the
// parameters alone (version 0, u32 count, and per entry the wide name and the
// variant's binary form).
//
// Instantiated for the two parameter sets only (in voparametermapst.cpp).
// Not thread-safe.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>
#include <bxbase/bxvariant.h>

class BxStreamReadBinary;
class BxStreamWriteBinary;

/// The maps and members that VoParameterSet and VoClassParameterSet have in common: parameters, extensions, the
/// three constraint maps, and the group operations over the group map that each class keeps in its own way.
template <class Derived, class GroupMapT>
class VOBASE_API VoParameterMapsT
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

    /// Parameter name to value.
    using ParameterMap = BxMap<CStringW, BxVariant>;
    /// Name to nested set, owned by Derived.
    using GroupMap = GroupMapT;

    /// Where Derived's exceptions come from: "<className>::<member>" at (sourceFile, line).
    struct Origin
    {
        /// The class named in the function name, for example "VoParameterSet".
        const char* className;
        /// The source file the exceptions name (__FILE__ of Derived's source).
        const char* sourceFile;
        /// The line the exceptions name.
        int line;
    };

    /// Stores the value after checking its limits; a value outside them throws
    /// BxException at "<class>::SetParameter" and leaves the set unchanged.
    void SetParameter(const CStringW& name, const BxVariant& value);
    /// Copies the stored value to `out`; nonzero when the parameter exists.
    int GetParameter(const CStringW& name, BxVariant& out) const;
    /// `out` receives the stored value, or `fallback`; nonzero when the parameter exists.
    int GetParameter(const CStringW& name, const BxVariant& fallback, BxVariant& out) const;
    /// True when a parameter of exactly that name exists.
    bool HasParameter(const CStringW& name) const;
    /// Removes the parameter; false when it did not exist.
    bool DeleteParameter(const CStringW& name);
    /// Empties `keys`, appends every parameter name and sorts them.
    void GetParameterKeys(BxArray<CStringW>& keys) const;
    /// The parameters themselves, for iteration and bulk edits (no limit check).
    const ParameterMap& GetParameters() const noexcept { return m_parameters; }
    /// The same, writable: values stored through it bypass the limit check.
    ParameterMap& GetParameters() noexcept { return m_parameters; }

    /// Inserts or overwrites the constraint of the given kind.
    void SetConstraint(const CStringW& name, EParameterConstraint kind, const BxVariant& value);
    /// The constraint; a missing one throws BxExceptionContainer at "<class>::GetConstraint".
    const BxVariant& GetConstraint(const CStringW& name, EParameterConstraint kind) const;
    /// True when the parameter has a constraint of that kind.
    bool HasConstraint(const CStringW& name, EParameterConstraint kind) const;
    /// Removes the constraint; false when it did not exist.
    bool DeleteConstraint(const CStringW& name, EParameterConstraint kind);
    /// False when value < minimum or value > maximum (BxVariant's comparisons).
    bool IsInLimits(const CStringW& name, const BxVariant& value) const;

    /// Inserts or overwrites the text extension of the parameter (a file pattern, a unit).
    void SetExtension(const CStringW& name, const CStringW& extension);
    /// The extension, or the empty text when there is none.
    CStringW GetExtension(const CStringW& name) const;
    /// True when the parameter has an extension.
    bool HasExtension(const CStringW& name) const;

    /// The group of that name, created empty when missing (same as GetGroup).
    Derived& AddGroup(const CStringW& name);
    /// The group of that name, created empty when missing.
    Derived& GetGroup(const CStringW& name);
    /// The group of that name; a missing one throws BxExceptionContainer at "<class>::GetGroup".
    const Derived& GetGroup(const CStringW& name) const;
    /// The groups themselves.
    const GroupMap& GetGroups() const noexcept;
    /// The groups themselves, writable (groups may be added or removed through it).
    GroupMap& GetGroups() noexcept;
    /// Empties `names`, appends every group name and sorts them.
    void GetGroupNames(BxArray<CStringW>& names) const;
    /// True when there is at least one group.
    bool HasGroups() const noexcept;
    /// True when a group of exactly that name exists.
    bool IsGroup(const CStringW& name) const;
    /// Removes the group; false when it did not exist.
    bool RemoveGroup(const CStringW& name);
    /// Removes every group.
    void RemoveGroups() noexcept;

    /// Empties the parameters, extensions, constraints and groups.
    void ResetAll() noexcept;

    /// Writes the binary form (parameters only).
    void Serialize(BxStreamWriteBinary& stream) const;
    /// Replaces the parameters with those read; everything else stays. On failure
    /// the parameters stay as they were.
    void Serialize(BxStreamReadBinary& stream);

protected:
    // Only as part of Derived, which copies with these.
    VoParameterMapsT();
    /// Copies the parameters, extensions and the three constraint maps (Derived
    /// copies its groups itself).
    VoParameterMapsT(const VoParameterMapsT& other);
    /// Replaces the parameters, extensions and constraint maps with copies of
    /// those of `other`.
    VoParameterMapsT& operator=(const VoParameterMapsT& other);
    ~VoParameterMapsT();

    /// Exchanges the five maps with those of `other` (Derived's copy-and-swap).
    void SwapMaps(VoParameterMapsT& other) noexcept;

private:
    using ConstraintMap = BxMap<CStringW, BxVariant>;

    Derived& derived() noexcept { return static_cast<Derived&>(*this); }
    const Derived& derived() const noexcept { return static_cast<const Derived&>(*this); }

    /// The map of that kind; an unknown kind throws at "<class>::<member>".
    ConstraintMap& constraints(EParameterConstraint kind, const char* member);
    const ConstraintMap& constraints(EParameterConstraint kind, const char* member) const;

    /// Throws Exception at "<class>::<member>" from Derived's origin.
    template <class Exception, class Message>
    [[noreturn]] static void fail(const char* member, const Message& message);

    ParameterMap m_parameters;
    BxMap<CStringW, CStringW> m_extensions;
    ConstraintMap m_minimum;
    ConstraintMap m_maximum;
    ConstraintMap m_thirdKind;
};
