// Reference-counted holder of one value: the base of the framework's value
// classes (BxInt32, BxString, ...), which typed data nodes carry.
//
//   BxSmartPointer<BxInt32> count(new BxInt32(7));
//   count->Set(count->Get() + 1);
//
// Its binary form is a version word (1) followed by the value.
#pragma once

#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamreadbinary.h>
#include <bxbase/bxstreamwritebinary.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/iserializable.h>

#include <utility>

/// Reference-counted holder of one value: the base of the framework's value classes (BxInt32, BxString, ...),
/// which typed data nodes carry.
template <class T>
class BxValueT : public IReferenceCounted, public ISerializable
{
public:
    /// The held value's type.
    using value_type = T;

    /// Holds a value-initialised T (0, false, the empty string).
    BxValueT() : m_value() {}
    /// Holds `value`; implicit, so that a plain value converts where a value object is expected.
    BxValueT(T value) : m_value(std::move(value)) {}
    /// Copies the value only: the copy is a new object with its own reference count, starting at 0.
    BxValueT(const BxValueT& other) : IReferenceCounted(), ISerializable(), m_value(other.m_value) {}
    /// Copies the value only; the reference count stays this object's own.
    BxValueT& operator=(const BxValueT& other)
    {
        m_value = other.m_value;
        return *this;
    }
    /// Replaces the value.
    BxValueT& operator=(T value)
    {
        m_value = std::move(value);
        return *this;
    }

    /// The value. Not guarded: an object shared between threads is guarded by its owner (for example the lock of
    /// the data node that carries it).
    const T& Get() const noexcept { return m_value; }
    /// Replaces the value; not guarded (see Get()).
    void Set(T value) { m_value = std::move(value); }
    /// The value, so that the object reads like a T.
    operator const T&() const noexcept { return m_value; }

    /// True when the two values are equal (T's ==).
    bool operator==(const BxValueT& other) const { return m_value == other.m_value; }

    /// Writes version 1, then the value with the stream's operator for T.
    void Serialize(BxStreamWriteBinary& stream) const override
    {
        stream.WriteVersion(1);
        stream << m_value;
    }
    /// Reads a form of version 1 (a newer one throws BxExceptionWrongFileVersion), then the value.
    void Serialize(BxStreamReadBinary& stream) override
    {
        stream.ReadAndCompareVersion(1);
        stream >> m_value;
    }

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

private:
    T m_value;
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};
