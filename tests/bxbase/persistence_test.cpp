#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/cjsondatareader.h>
#include <bxbase/persistence/cjsondatawriter.h>
#include <bxbase/persistence/iserializable.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct SPoint : Persistence::ISerializable
{
    int x = 0;
    std::wstring label;
    std::string GetTypeName() const override { return "SPoint"; }
    void WriteTo(Persistence::IDataWriter& w) const override
    {
        w.Write("X", x);
        w.Write("Label", label);
    }
    void ReadFrom(const Persistence::IDataReader& r) override
    {
        r.ReadRequired("X", x);
        r.ReadRequired("Label", label);
    }
};

}  // namespace

TEST(PersistenceJson, RoundTripsEveryEntryType)
{
    Persistence::CJsonDataWriter writer;
    writer.Write("b", true);
    writer.Write("c", 'A');
    writer.Write("i8", static_cast<signed char>(-5));
    writer.Write("u8", static_cast<unsigned char>(250));
    writer.Write("i16", static_cast<short>(-300));
    writer.Write("u16", static_cast<unsigned short>(60000));
    writer.Write("i32", -70000);
    writer.Write("u32", 4000000000u);
    writer.Write("i64", std::numeric_limits<long long>::min());
    writer.Write("u64", std::numeric_limits<unsigned long long>::max());
    writer.Write("f", 0.1f);
    writer.Write("d", 1e300);
    writer.Write("s", "narrow");
    writer.Write("w", L"Grüße \U0001F600");
    SPoint point;
    point.x = 3;
    point.label = L"p";
    writer.WriteObject("point", point);

    Persistence::CJsonDataReader reader(writer.ToString());
    bool b = false; char c = 0; signed char i8 = 0; unsigned char u8 = 0; short i16 = 0; unsigned short u16 = 0;
    int i32 = 0; unsigned u32 = 0; long long i64 = 0; unsigned long long u64 = 0; float f = 0; double d = 0;
    std::string s; std::wstring w; SPoint back;
    EXPECT_TRUE(reader.Read("b", b) && reader.Read("c", c) && reader.Read("i8", i8) && reader.Read("u8", u8) &&
                reader.Read("i16", i16) && reader.Read("u16", u16) && reader.Read("i32", i32) &&
                reader.Read("u32", u32) && reader.Read("i64", i64) && reader.Read("u64", u64) &&
                reader.Read("f", f) && reader.Read("d", d) && reader.Read("s", s) && reader.Read("w", w) &&
                reader.ReadObject("point", back));
    EXPECT_TRUE(b);
    EXPECT_EQ(c, 'A');
    EXPECT_EQ(i8, -5);
    EXPECT_EQ(u8, 250);
    EXPECT_EQ(i16, -300);
    EXPECT_EQ(u16, 60000);
    EXPECT_EQ(i32, -70000);
    EXPECT_EQ(u32, 4000000000u);
    EXPECT_EQ(i64, std::numeric_limits<long long>::min());
    EXPECT_EQ(u64, std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(f, 0.1f);
    EXPECT_EQ(d, 1e300);
    EXPECT_EQ(s, "narrow");
    EXPECT_EQ(w, L"Grüße \U0001F600");
    EXPECT_EQ(back.x, 3);
    EXPECT_EQ(back.label, L"p");
}

TEST(PersistenceJson, MissingEntriesReadFalseAndBadOnesThrow)
{
    Persistence::CJsonDataReader reader(R"({"big":300,"neg":-1,"text":"x","flag":1,"nan":null})");
    int missing = 7;
    EXPECT_FALSE(reader.Read("absent", missing));
    EXPECT_EQ(missing, 7);
    EXPECT_THROW(reader.ReadRequired("absent", missing), Persistence::CException);
    unsigned char small;
    EXPECT_THROW(reader.Read("big", small), Persistence::CException);
    unsigned int positive;
    EXPECT_THROW(reader.Read("neg", positive), Persistence::CException);
    int number;
    EXPECT_THROW(reader.Read("text", number), Persistence::CException);
    bool flag;
    EXPECT_THROW(reader.Read("flag", flag), Persistence::CException);
    double nan = 0;
    EXPECT_TRUE(reader.Read("nan", nan));
    EXPECT_TRUE(std::isnan(nan));
    SPoint point;
    EXPECT_THROW(reader.ReadObject("text", point), Persistence::CException);
}

TEST(PersistenceJson, MalformedDocumentsAreRejected)
{
    for (const char* bad : {"", "{", "[1,2]", "{\"a\":}", "{\"a\":\"\xFF\"}", "42", "{\"a\":1}}"})
        EXPECT_THROW(Persistence::CJsonDataReader reader(bad), Persistence::CException) << bad;
    std::string deep(100000, '[');
    EXPECT_THROW(Persistence::CJsonDataReader reader(deep), Persistence::CException);
}
