// Supplies the reference counter of a reference-counted interface, so that a
// class implementing the interface writes only the interface's own members.
//
//   class CSave : public BxReferenceCountedObjectT<ITaskSimple> {
//   public:
//       bool Run() override { save(); return true; }
//   };
//   queue.AddTask(BxSmartPointer<ITaskSimple>(new CSave));
//
// TInterface must derive from IReferenceCounted; its constructors are
// inherited. The counter belongs to the object: a copy starts with no
// references (see BxReferenceCounter). BxReferenceCountedObject is the
// same for classes that implement no other interface.
#pragma once

#include <bxbase/bxreferencecounter.h>
#include <bxbase/ireferencecounted.h>

#include <type_traits>

/// Supplies the reference counter of a reference-counted interface, so that a class implementing the interface
/// writes only the interface's own members.
template <class TInterface>
class BxReferenceCountedObjectT : public TInterface
{
    static_assert(std::is_base_of_v<IReferenceCounted, TInterface>,
                  "BxReferenceCountedObjectT needs an interface derived from IReferenceCounted");

public:
    using TInterface::TInterface;
    BxReferenceCountedObjectT() = default;

    /// The object's own counter, which BxSmartPointer counts on.
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};
