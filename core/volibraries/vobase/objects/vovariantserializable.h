// A tagged value with a persistence form (the JSON side of the framework).
//
//   VoVariantSerializable value;
//   value = 2.5;
//   Persistence::CJsonDataWriter writer;
//   value.WriteTo(writer);        // {"UInt32VariantType":6,"Value":2.5}
//
//   Persistence::CJsonDataReader reader(writer.ToString());
//   VoVariantSerializable back;
//   back.ReadFrom(reader);        // back == 2.5, tag 6
//
// Two entries: "UInt32VariantType" (the tag, u32) and "Value" (written with the
// writer's operation for the kind's value type; absent for null). The tags 9,
// 10, 11, 17 and 19 and above have no persistence form.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxvariant.h>
#include <bxbase/persistence/iserializable.h>

#include <string>

/// A tagged value with a persistence form (the JSON side of the framework).
class VOBASE_API VoVariantSerializable : public BxVariant, public Persistence::ISerializable
{
public:
    /// A null variant.
    VoVariantSerializable() noexcept = default;
    /// The same tag and value (string kinds copy their string).
    VoVariantSerializable(const VoVariantSerializable&) = default;
    /// Takes the value of a plain variant.
    explicit VoVariantSerializable(const BxVariant& value) : BxVariant(value) {}

    /// Takes the tag and value of `other` (string kinds copy their string).
    VoVariantSerializable& operator=(const VoVariantSerializable&) = default;
    /// Typed assignment from every kind BxVariant holds.
    using BxVariant::operator=;

    /// "BxVariant".
    std::string GetTypeName() const override { return "BxVariant"; }
    /// Reads the two entries; on failure throws Persistence::CException at
    /// "VoVariantSerializable::ReadFrom" and leaves the value unchanged.
    void ReadFrom(const Persistence::IDataReader& reader) override;
    /// Writes the two entries; an unsupported tag throws Persistence::CException
    /// at "VoVariantSerializable::WriteTo".
    void WriteTo(Persistence::IDataWriter& writer) const override;
};
