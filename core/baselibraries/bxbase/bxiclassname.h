// Mixin that gives an object a name of string type TString.
//
//   class CNode : public BxIClassName<0, CStringW> { ... };
//   node.GetName();
//
// Id tells several name mixins of one class apart. The name is set by the
// deriving class, which decides who may rename the object and under which lock.
#pragma once

#include <utility>

/// Mixin that gives an object a name of string type TString.
template <int Id, class TString>
class BxIClassName
{
public:
    BxIClassName() = default;
    /// Starts with the given name.
    explicit BxIClassName(TString name) : m_name(std::move(name)) {}

    /// The object's name (empty until set). The reference stays valid until the name changes; a caller on another
    /// thread than the renaming one needs the deriving class's lock.
    const TString& GetName() const noexcept { return m_name; }

protected:
    ~BxIClassName() = default;
    /// Renames the object; the deriving class calls it under whatever lock guards the name.
    void setName(const TString& name) { m_name = name; }

    /// The name; guarded by the deriving class's lock, if it renames the object while others read it.
    TString m_name;
};
