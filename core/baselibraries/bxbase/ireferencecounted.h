// Interface of objects owned through BxSmartPointer.
//
// The object keeps its own counter and hands it out through
// getReferenceCounter(); BxSmartPointer increments it when it takes a
// reference and destroys the object through the virtual destructor when the
// last reference goes. A new object starts with no references.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxreferencecounter.h>

/// Interface of objects owned through BxSmartPointer.
class BXBASE_API IReferenceCounted
{
public:
    virtual ~IReferenceCounted() = default;

    /// The object's counter. Const so that BxSmartPointer<const T> can count.
    virtual BxReferenceCounter<unsigned int>& getReferenceCounter() const = 0;
};

/// Convenience base that supplies the counter for a reference-counted class.
///
///   class CJob : public BxReferenceCountedObject { ... };
///   BxSmartPointer<CJob> job(new CJob);
class BXBASE_API BxReferenceCountedObject : public IReferenceCounted
{
public:
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};
