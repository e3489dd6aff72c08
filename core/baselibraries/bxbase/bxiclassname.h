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
    explicit BxIClassName(TString name) : m_name(std::move(name)) {}

    const TString& GetName() const noexcept { return m_name; }

protected:
    ~BxIClassName() = default;
    void setName(const TString& name) { m_name = name; }

    TString m_name;
};
