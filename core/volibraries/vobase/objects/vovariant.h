// A reference-counted, serializable tagged value: BxVariant with a binary form
// and a place in the type registry.
//
//   BxSmartPointer<VoVariant> value(new VoVariant);
//   *value = 42;                          // tag 2 (int)
//   BxStreamWriteBinaryBuffer out;
//   value->Serialize(out);                // u32 tag 2, then the int: 8 bytes
//   VoVariant back;
//   BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
//   back.Serialize(in);                   // back == 42
//
// Binary form: the tag as u32, then the value written with the stream's
// insertion for the kind's value type (bool, int, long long, unsigned int,
// float, double, char, std::wstring, signed char, unsigned char, short,
// unsigned short, unsigned long long, std::string). Null writes the tag alone.
// The tags 9, 10, 11 and 17 have no binary form and are refused in both
// directions, as are tags of 19 and above when reading.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxreferencecounter.h>
#include <bxbase/bxrtti.h>
#include <bxbase/bxvariant.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/iserializable.h>

#include <memory>

class BxStreamReadBinary;
class BxStreamWriteBinary;

/// A reference-counted, serializable tagged value: BxVariant with a binary form and a place in the type registry.
class VOBASE_API VoVariant : public BxVariant, public IReferenceCounted, public ISerializable
{
public:
    /// A null variant.
    VoVariant() noexcept = default;
    /// Copies the value; the copy has its own (empty) reference count.
    VoVariant(const VoVariant& other) : BxVariant(other), IReferenceCounted(), ISerializable() {}
    /// Takes the value of a plain variant.
    explicit VoVariant(const BxVariant& value) : BxVariant(value) {}

    /// Copies the value (never the reference count).
    VoVariant& operator=(const VoVariant& other)
    {
        BxVariant::operator=(other);
        return *this;
    }
    /// Typed assignment from every kind BxVariant holds.
    using BxVariant::operator=;

    /// Writes the binary form (see the top of this file).
    void Serialize(BxStreamWriteBinary& stream) const override;
    /// Reads the binary form; on failure the value is left unchanged.
    void Serialize(BxStreamReadBinary& stream) override;

    /// Writes any variant in the binary form of VoVariant.
    static void WriteValue(BxStreamWriteBinary& stream, const BxVariant& value);
    /// Reads a variant in the binary form of VoVariant into `value`.
    static void ReadValue(BxStreamReadBinary& stream, BxVariant& value);

    /// The object's reference counter (atomic).
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// The registry record, registered as "VoVariant".
    static const BxRTTI RTTI;
    const BxRTTI& GetRTTI() const override { return RTTI; }
    const wchar_t* GetClassNameW() const override { return RTTI.GetName(); }

private:
    /// The registry's factory: a new null variant.
    static std::unique_ptr<IObject> CreateByFactory();

    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
};
