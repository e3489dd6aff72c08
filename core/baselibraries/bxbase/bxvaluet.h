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
    using value_type = T;

    BxValueT() : m_value() {}
    BxValueT(T value) : m_value(std::move(value)) {}
    BxValueT(const BxValueT& other) : IReferenceCounted(), ISerializable(), m_value(other.m_value) {}
    BxValueT& operator=(const BxValueT& other)
    {
        m_value = other.m_value;
        return *this;
    }
    BxValueT& operator=(T value)
    {
        m_value = std::move(value);
        return *this;
    }

    const T& Get() const noexcept { return m_value; }
    void Set(T value) { m_value = std::move(value); }
    operator const T&() const noexcept { return m_value; }

    bool operator==(const BxValueT& other) const { return m_value == other.m_value; }

    void Serialize(BxStreamWriteBinary& stream) const override
    {
        stream.WriteVersion(1);
        stream << m_value;
    }
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
