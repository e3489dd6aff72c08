#include <bxbase/bxexceptionpreconditionviolation.h>
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

TEST(PersistenceJson, NullTextIsRefusedAndWritesNothing)
{
    Persistence::CJsonDataWriter writer;
    EXPECT_THROW(writer.Write("narrow", static_cast<const char*>(nullptr)), BxExceptionPreconditionViolation);
    EXPECT_THROW(writer.Write("wide", static_cast<const wchar_t*>(nullptr)), BxExceptionPreconditionViolation);
    writer.Write("text", "kept");
    Persistence::CJsonDataReader reader(writer.ToString());
    std::string text, absent;
    EXPECT_TRUE(reader.Read("text", text));
    EXPECT_EQ(text, "kept");
    EXPECT_FALSE(reader.Read("narrow", absent));
}

TEST(PersistenceJson, MalformedDocumentsAreRejected)
{
    for (const char* bad : {"", "{", "[1,2]", "{\"a\":}", "{\"a\":\"\xFF\"}", "42", "{\"a\":1}}"})
        EXPECT_THROW(Persistence::CJsonDataReader reader(bad), Persistence::CException) << bad;
    std::string deep(100000, '[');
    EXPECT_THROW(Persistence::CJsonDataReader reader(deep), Persistence::CException);
}

namespace {

// An object that reads its nested "Inner" entry as another of its kind, as
// far down as the document goes, and counts the levels it reached.
struct SNested : Persistence::ISerializable
{
    int levels = 0;
    std::string GetTypeName() const override { return "SNested"; }
    void WriteTo(Persistence::IDataWriter&) const override {}
    void ReadFrom(const Persistence::IDataReader& r) override
    {
        SNested inner;
        if (r.ReadObject("Inner", inner))
            levels = inner.levels + 1;
        else
            levels = 1;
    }
};

// {"Inner":{"Inner":...{}...}} with `depth` objects in all.
std::string nestedObjects(std::size_t depth)
{
    std::string json;
    for (std::size_t i = 1; i < depth; ++i)
        json += "{\"Inner\":";
    json += "{}";
    json.append(depth - 1, '}');
    return json;
}

}  // namespace

TEST(PersistenceJson, NestingIsLimitedWhileParsing)
{
    const unsigned int limit = Persistence::CJsonDataReader::c_DefaultMaxDepth;
    EXPECT_EQ(limit, 256u);
    {
        Persistence::CJsonDataReader reader(nestedObjects(limit));
        EXPECT_EQ(reader.GetMaxDepth(), limit);
        SNested root;
        root.ReadFrom(reader);  // 256 nested reads through views of the one document
        EXPECT_EQ(root.levels, int(limit));
    }
    try {
        Persistence::CJsonDataReader reader(nestedObjects(limit + 1));
        ADD_FAILURE() << "one level beyond the limit was read";
    } catch (const Persistence::CException& e) {
        EXPECT_EQ(e.GetFunctionName(), "Persistence::CJsonDataReader::CJsonDataReader");
        EXPECT_NE(std::string(e.what()).find("256"), std::string::npos) << e.what();
    }
    // arrays count as levels too, wherever they sit
    std::string arrays = "{\"a\":" + std::string(limit - 1, '[') + std::string(limit - 1, ']') + "}";
    EXPECT_NO_THROW(Persistence::CJsonDataReader reader(arrays));
    arrays = "{\"a\":" + std::string(limit, '[') + std::string(limit, ']') + "}";
    EXPECT_THROW(Persistence::CJsonDataReader reader(arrays), Persistence::CException);

    // the limit is the reader's own
    EXPECT_THROW(Persistence::CJsonDataReader reader(nestedObjects(3), 2), Persistence::CException);
    Persistence::CJsonDataReader shallow(nestedObjects(2), 2);
    EXPECT_EQ(shallow.GetMaxDepth(), 2u);
    Persistence::CJsonDataReader deeper(nestedObjects(1000), 1000);
    SNested root;
    root.ReadFrom(deeper);
    EXPECT_EQ(root.levels, 1000);
}

// Once a fault: a document some thousands of levels deep parsed, and the
// nested read then overflowed the stack copying the subtree.
TEST(PersistenceJson, AHundredThousandLevelsAreRefusedNotCopied)
{
    const std::string deep = nestedObjects(100000);
    EXPECT_THROW(
        {
            Persistence::CJsonDataReader reader(deep);
            SNested root;
            root.ReadFrom(reader);
        },
        Persistence::CException);
}

TEST(PersistenceJson, FloatEntriesBeyondFloatRangeThrow)
{
    Persistence::CJsonDataReader reader(R"({"big":1e300,"max":3.4e38})");
    float f = 0;
    EXPECT_THROW(reader.Read("big", f), Persistence::CException);
    EXPECT_TRUE(reader.Read("max", f));
    EXPECT_EQ(f, 3.4e38f);
    double d = 0;
    EXPECT_TRUE(reader.Read("big", d));
    EXPECT_EQ(d, 1e300);
}
