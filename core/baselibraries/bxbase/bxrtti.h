// The type registry: one record per registered class, with its wide name, the
// records of its direct bases, a creation factory and an optional clone
// factory. Records register themselves by name when constructed (at static
// initialisation) and leave the registry when destroyed.
//
//   // cfoo.h
//   class CFoo : public IObject {
//       BX_DECLARE_RTTI();
//   };
//   // cfoo.cpp
//   BX_IMPLEMENT_RTTI(CFoo)                       // no registered base
//   BX_IMPLEMENT_RTTI(CBar, &CFoo::RTTI)          // CBar derives from CFoo
//   BX_IMPLEMENT_RTTI_ABSTRACT(CBase)             // no factory
//   BX_IMPLEMENT_RTTI_CLONABLE(CMsg, &CBase::RTTI) // factory and clone factory
//
//   const BxRTTI* rtti = BxRTTI::Find(L"CBar");
//   std::unique_ptr<IObject> bar = rtti->CreateObject();
//
// When two records claim one name, the first keeps it.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/iobject.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

/// The type registry: one record per registered class, with its wide name, the records of its direct bases, a
/// creation factory and an optional clone factory.
class BXBASE_API BxRTTI
{
public:
    /// Creates a new default-constructed object of the class (the class's static CreateByFactory).
    using Factory = std::unique_ptr<IObject> (*)();
    /// Creates a copy of the given object, which is of the class.
    using CloneFactory = std::unique_ptr<IObject> (*)(const IObject&);

    /// Builds the record and registers it under `className` (a name already registered keeps its first record;
    /// this one then is not found by name). `bases` are the records of the direct bases (null entries are
    /// skipped by IsKindOf); a null `factory` marks an abstract class. Meant for static storage, through the
    /// BX_IMPLEMENT_RTTI macros; thread-safe.
    BxRTTI(const wchar_t* className, std::initializer_list<const BxRTTI*> bases, Factory factory = nullptr,
           CloneFactory cloneFactory = nullptr);
    ~BxRTTI();
    BxRTTI(const BxRTTI&) = delete;
    BxRTTI& operator=(const BxRTTI&) = delete;

    /// The registered class name.
    const wchar_t* GetName() const noexcept { return m_name.c_str(); }
    /// The records of the direct bases, in declaration order.
    const std::vector<const BxRTTI*>& GetBases() const noexcept { return m_bases; }

    /// True when this record is rtti or one of its bases, directly or not.
    bool IsKindOf(const BxRTTI& rtti) const noexcept;

    /// True when CreateObject() can make objects (the class is not abstract).
    bool HasFactory() const noexcept { return m_factory != nullptr; }
    /// True when CloneObject() can copy objects.
    bool HasCloneFactory() const noexcept { return m_cloneFactory != nullptr; }

    /// A new default-constructed object of the class; null for abstract classes.
    std::unique_ptr<IObject> CreateObject() const;
    /// A copy of `object` (which must be of this class); null without a clone factory.
    std::unique_ptr<IObject> CloneObject(const IObject& object) const;

    /// The record registered under `className`, or null.
    static const BxRTTI* Find(const std::wstring& className);
    /// Creates an object by class name; null when the name is unknown or abstract.
    static std::unique_ptr<IObject> CreateByName(const std::wstring& className);

private:
    std::wstring m_name;
    std::vector<const BxRTTI*> m_bases;
    Factory m_factory;
    CloneFactory m_cloneFactory;
};

/// Declares the registry members of a class: the static record and the overrides of IObject.
#define BX_DECLARE_RTTI()                                                      \
public:                                                                        \
    static const BxRTTI RTTI;                                                  \
    const BxRTTI& GetRTTI() const override { return RTTI; }                     \
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }    \
    static std::unique_ptr<IObject> CreateByFactory();                         \
                                                                               \
private:

/// Full form: class, registered name, body of CreateByFactory, whether the
/// record gets the factory, clone factory (or nullptr), base records.
#define BX_IMPLEMENT_RTTI_EX(Class, Name, FactoryBody, HasFactory, CloneFactoryFn, ...)       \
    std::unique_ptr<IObject> Class::CreateByFactory() { FactoryBody; }                        \
    const BxRTTI Class::RTTI(Name, {__VA_ARGS__}, (HasFactory) ? &Class::CreateByFactory : nullptr, \
                             CloneFactoryFn);

#define BX_RTTI_CLONE_FN(Class)                                                                 \
    [](const IObject& object) -> std::unique_ptr<IObject> {                                      \
        return std::make_unique<Class>(dynamic_cast<const Class&>(object));                     \
    }

/// A concrete class, created with its default constructor.
#define BX_IMPLEMENT_RTTI(Class, ...) \
    BX_IMPLEMENT_RTTI_EX(Class, L"" #Class, return std::make_unique<Class>(), true, nullptr, __VA_ARGS__)
/// An abstract class (or one that cannot be default-constructed): no factory.
#define BX_IMPLEMENT_RTTI_ABSTRACT(Class, ...) \
    BX_IMPLEMENT_RTTI_EX(Class, L"" #Class, return nullptr, false, nullptr, __VA_ARGS__)
/// A concrete class that can also be cloned through the registry.
#define BX_IMPLEMENT_RTTI_CLONABLE(Class, ...)                                                  \
    BX_IMPLEMENT_RTTI_EX(Class, L"" #Class, return std::make_unique<Class>(), true,             \
                         BX_RTTI_CLONE_FN(Class), __VA_ARGS__)
