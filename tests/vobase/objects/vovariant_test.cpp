#include <vobase/objects/vovariant.h>
#include <vobase/objects/vovariantserializable.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/cjsondatareader.h>
#include <bxbase/persistence/cjsondatawriter.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes write(const BxVariant& value)
{
    BxStreamWriteBinaryBuffer out;
    VoVariant::WriteValue(out, value);
    auto* p = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(p, p + out.GetCount());
}

VoVariant read(const Bytes& bytes)
{
    BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
    VoVariant value;
    value.Serialize(in);
    EXPECT_EQ(in.GetRemaining(), 0u);
    return value;
}

void expectFunction(const BxException& e, const char* function) { EXPECT_EQ(e.GetFunctionName(), function); }

}  // namespace

TEST(VoVariantBinary, EncodesEveryKindByteByByte)
{
    struct Case
    {
        BxVariant value;
        Bytes bytes;
    };
    const std::vector<Case> cases = {
        {BxVariant(), {0, 0, 0, 0}},
        {BxVariant(true), {1, 0, 0, 0, 1}},
        {BxVariant(-2), {2, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}},
        {BxVariant(0x0102030405060708LL), {3, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1}},
        {BxVariant(0xA0B0C0D0u), {4, 0, 0, 0, 0xD0, 0xC0, 0xB0, 0xA0}},
        {BxVariant(1.0f), {5, 0, 0, 0, 0x00, 0x00, 0x80, 0x3F}},
        {BxVariant(-2.0), {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xC0}},
        {BxVariant('z'), {7, 0, 0, 0, 'z'}},
        {BxVariant(L"h\u20AC"), {8, 0, 0, 0, 2, 0, 0, 0, 'h', 0, 0xAC, 0x20}},
        {BxVariant(static_cast<signed char>(-1)), {12, 0, 0, 0, 0xFF}},
        {BxVariant(static_cast<unsigned char>(200)), {13, 0, 0, 0, 200}},
        {BxVariant(static_cast<short>(-2)), {14, 0, 0, 0, 0xFE, 0xFF}},
        {BxVariant(static_cast<unsigned short>(0x1234)), {15, 0, 0, 0, 0x34, 0x12}},
        {BxVariant(0x8000000000000001ULL), {16, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0x80}},
        {BxVariant(std::string("ab")), {18, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value.GetType());
        EXPECT_EQ(write(c.value), c.bytes);
        const VoVariant back = read(c.bytes);
        EXPECT_EQ(back.GetType(), c.value.GetType());
        EXPECT_TRUE(back == c.value);
    }
}

TEST(VoVariantBinary, NullIsTheTagAloneAndReadsBackNull)
{
    VoVariant value;
    value = 17;
    value = read({0, 0, 0, 0});
    EXPECT_TRUE(value.IsNull());
}

TEST(VoVariantBinary, RefusesTagsWithoutBinaryForm)
{
    int dummy = 0;
    try {
        write(BxVariant(static_cast<void*>(&dummy)));
        FAIL() << "a pointer was written";
    } catch (const BxException& e) {
        expectFunction(e, "VoVariant::Serialize");
    }
    for (std::uint8_t tag : {9, 10, 11, 17, 19, 200}) {
        SCOPED_TRACE(int(tag));
        const Bytes bytes = {tag, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
        BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
        VoVariant value;
        value = 5;
        try {
            value.Serialize(in);
            FAIL() << "tag accepted";
        } catch (const BxException& e) {
            expectFunction(e, "VoVariant::Serialize");
        }
        EXPECT_TRUE(value == BxVariant(5));
    }
}

TEST(VoVariantBinary, TruncatedInputThrowsAndKeepsTheValue)
{
    const std::vector<Bytes> truncated = {
        {}, {2, 0}, {2, 0, 0, 0, 1, 2}, {8, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 'a', 0}, {18, 0, 0, 0, 3, 0, 0, 0, 'a'},
    };
    for (const Bytes& bytes : truncated) {
        BxStreamReadBinaryBuffer in(bytes.data(), bytes.size());
        VoVariant value;
        value = std::string("kept");
        EXPECT_THROW(value.Serialize(in), BxExceptionStream);
        EXPECT_TRUE(value == BxVariant(std::string("kept")));
    }
}

TEST(VoVariant, IsReferenceCountedAndRegistered)
{
    BxSmartPointer<VoVariant> shared(new VoVariant);
    *shared = 2.5;
    {
        BxSmartPointer<VoVariant> second = shared;
        EXPECT_EQ(shared->getReferenceCounter().Get(), 2u);
    }
    EXPECT_EQ(shared->getReferenceCounter().Get(), 1u);
    VoVariant copy(*shared);
    EXPECT_EQ(copy.getReferenceCounter().Get(), 0u);
    EXPECT_TRUE(copy == BxVariant(2.5));

    const BxRTTI* rtti = BxRTTI::Find(L"VoVariant");
    ASSERT_EQ(rtti, &VoVariant::RTTI);
    std::unique_ptr<IObject> made = rtti->CreateObject();
    auto* variant = dynamic_cast<VoVariant*>(made.get());
    ASSERT_NE(variant, nullptr);
    EXPECT_TRUE(variant->IsNull());
    EXPECT_TRUE(variant->Is(VoVariant::RTTI));
    EXPECT_STREQ(variant->GetClassNameW(), L"VoVariant");
}

namespace {

VoVariantSerializable roundTrip(const VoVariantSerializable& value, std::string* json = nullptr)
{
    Persistence::CJsonDataWriter writer;
    value.WriteTo(writer);
    if (json)
        *json = writer.ToString();
    Persistence::CJsonDataReader reader(writer.ToString());
    VoVariantSerializable back;
    back.ReadFrom(reader);
    return back;
}

}  // namespace

TEST(VoVariantSerializable, RoundTripsEveryKindThroughJson)
{
    const std::vector<BxVariant> values = {
        BxVariant(), BxVariant(false), BxVariant(std::numeric_limits<int>::min()),
        BxVariant(std::numeric_limits<long long>::max()), BxVariant(4000000000u), BxVariant(0.25f),
        BxVariant(1e300), BxVariant('#'), BxVariant(L"Gr\u00FC\u00DFe"), BxVariant(static_cast<signed char>(-128)),
        BxVariant(static_cast<unsigned char>(255)), BxVariant(static_cast<short>(-30000)),
        BxVariant(static_cast<unsigned short>(65535)), BxVariant(std::numeric_limits<unsigned long long>::max()),
        BxVariant(std::string("narrow")),
    };
    for (const BxVariant& value : values) {
        SCOPED_TRACE(value.GetType());
        const VoVariantSerializable back = roundTrip(VoVariantSerializable(value));
        EXPECT_EQ(back.GetType(), value.GetType());
        EXPECT_TRUE(back == value);
    }
    EXPECT_EQ(VoVariantSerializable().GetTypeName(), "BxVariant");
}

TEST(VoVariantSerializable, WritesTheTwoEntries)
{
    std::string json;
    VoVariantSerializable value;
    value = 7;
    roundTrip(value, &json);
    EXPECT_EQ(json, R"({"UInt32VariantType":2,"Value":7})");
    roundTrip(VoVariantSerializable(), &json);
    EXPECT_EQ(json, R"({"UInt32VariantType":0})");
}

TEST(VoVariantSerializable, RefusesIncompleteOrUnsupportedInput)
{
    const char* bad[] = {
        R"({"Value":3})",                               // no tag
        R"({"UInt32VariantType":2})",                   // no value
        R"({"UInt32VariantType":2,"Value":"three"})",   // unreadable value
        R"({"UInt32VariantType":13,"Value":300})",      // out of range
        R"({"UInt32VariantType":9,"Value":0})",         // no persistence form
        R"({"UInt32VariantType":19,"Value":0})",
        R"({"UInt32VariantType":-1})",
    };
    for (const char* json : bad) {
        SCOPED_TRACE(json);
        Persistence::CJsonDataReader reader(json);
        VoVariantSerializable value;
        value = 1.5;
        try {
            value.ReadFrom(reader);
            FAIL() << "accepted";
        } catch (const Persistence::CException& e) {
            expectFunction(e, "VoVariantSerializable::ReadFrom");
        }
        EXPECT_TRUE(value == BxVariant(1.5));
    }
    int dummy = 0;
    VoVariantSerializable pointer{BxVariant(static_cast<void*>(&dummy))};
    Persistence::CJsonDataWriter writer;
    try {
        pointer.WriteTo(writer);
        FAIL() << "a pointer was written";
    } catch (const Persistence::CException& e) {
        expectFunction(e, "VoVariantSerializable::WriteTo");
    }
}
