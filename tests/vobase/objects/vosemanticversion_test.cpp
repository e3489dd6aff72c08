#include <vobase/objects/vosemanticversion.h>

#include <bxbase/bxexception.h>
#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/cjsondatareader.h>
#include <bxbase/persistence/cjsondatawriter.h>

#include <gtest/gtest.h>

namespace {

void expectVersion(const VoSemanticVersion& v, std::uint32_t major, std::uint32_t minor, std::uint32_t patch,
                   const std::string& label = "")
{
    EXPECT_EQ(v.GetVersionMajor(), major);
    EXPECT_EQ(v.GetVersionMinor(), minor);
    EXPECT_EQ(v.GetVersionPatch(), patch);
    EXPECT_EQ(v.GetLabel(), label);
}

}  // namespace

TEST(VoSemanticVersion, ParsesAndFormats)
{
    const VoSemanticVersion beta("1.2.3-beta.1");
    expectVersion(beta, 1, 2, 3, "beta.1");
    EXPECT_EQ(beta.ToString(), "1.2.3-beta.1");
    expectVersion(VoSemanticVersion("1.2"), 1, 2, 0);
    expectVersion(VoSemanticVersion(L"4.5.6.7"), 4, 5, 6);
    expectVersion(VoSemanticVersion(""), 0, 0, 0);
    expectVersion(VoSemanticVersion(static_cast<const char*>(nullptr)), 0, 0, 0);
    expectVersion(VoSemanticVersion("7"), 7, 0, 0);
    expectVersion(VoSemanticVersion("-rc"), 0, 0, 0, "rc");
    expectVersion(VoSemanticVersion("3x.4y"), 3, 4, 0);  // text after a number is not checked
    expectVersion(VoSemanticVersion(std::wstring(L"2.0.1-\u00E9")), 2, 0, 1, "\xC3\xA9");
    EXPECT_EQ(VoSemanticVersion(10, 0, 4).ToString(), "10.0.4");
    EXPECT_EQ(VoSemanticVersion(1, 2, 3, L"x").ToString(), "1.2.3-x");
}

TEST(VoSemanticVersion, FailedAssignmentKeepsWhatWasParsed)
{
    VoSemanticVersion v(9, 9, 9, "old");
    try {
        v = "x.1";
        FAIL() << "x.1 accepted";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoSemanticVersion::operator =");
    }
    expectVersion(v, 0, 1, 0);  // reset, then minor read before major failed

    v = std::string("5.6.7");
    EXPECT_THROW(v = L"1.y.3", BxException);
    expectVersion(v, 0, 0, 3);
    EXPECT_THROW(VoSemanticVersion("1..2"), BxException);
    EXPECT_THROW(VoSemanticVersion(std::string(".1")), BxException);
}

TEST(VoSemanticVersion, IsValidOverloads)
{
    EXPECT_TRUE(VoSemanticVersion::IsValid("1.2.3"));
    EXPECT_TRUE(VoSemanticVersion::IsValid(""));
    EXPECT_TRUE(VoSemanticVersion::IsValid(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(VoSemanticVersion::IsValid("x.1"));
    EXPECT_FALSE(VoSemanticVersion::IsValid(std::string("a")));
    EXPECT_FALSE(VoSemanticVersion::IsValid(std::wstring(L"1.b")));
    // The wide pointer overload does not parse: any text is valid.
    EXPECT_TRUE(VoSemanticVersion::IsValid(L"x.1"));
    EXPECT_TRUE(VoSemanticVersion::IsValid(L""));
}

TEST(VoSemanticVersion, ComparisonQuirks)
{
    const VoSemanticVersion v200(2, 0, 0), v299(2, 9, 9), v190(1, 9, 0), v120(1, 2, 0);
    EXPECT_TRUE(v200 >= v299);  // major only
    EXPECT_FALSE(v200 > v299);
    EXPECT_TRUE(v190 <= v120);  // major only
    EXPECT_FALSE(v190 < v120);
    EXPECT_TRUE(v120 < v190);
    EXPECT_TRUE(VoSemanticVersion(1, 2, 3, "a") == VoSemanticVersion(1, 2, 3, "b"));
    EXPECT_TRUE(VoSemanticVersion(1, 2, 3) != VoSemanticVersion(1, 2, 4));
    EXPECT_TRUE(VoSemanticVersion(1, 2, 3) < VoSemanticVersion(1, 3, 0));
}

TEST(VoSemanticVersion, PersistenceRoundTrip)
{
    const VoSemanticVersion v(3, 14, 15, "pi");
    Persistence::CJsonDataWriter writer;
    v.WriteTo(writer);
    EXPECT_EQ(writer.ToString(), R"({"Label":"pi","Major":3,"Minor":14,"Patch":15})");
    Persistence::CJsonDataReader reader(writer.ToString());
    VoSemanticVersion back;
    back.ReadFrom(reader);
    expectVersion(back, 3, 14, 15, "pi");
    EXPECT_EQ(back.GetTypeName(), "VoSemanticVersion");

    Persistence::CJsonDataReader missing(R"({"Major":1,"Minor":2,"Label":""})");
    EXPECT_THROW(back.ReadFrom(missing), Persistence::CException);
    expectVersion(back, 3, 14, 15, "pi");
}
