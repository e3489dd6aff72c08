#include <vobase/streams/vostreamreadasciistringt.h>

#include <bxbase/bxexceptionstream.h>

#include <gtest/gtest.h>

#include <climits>
#include <functional>

namespace {

using Reader = VoStreamReadASCIIStringT<std::string>;
using WideReader = VoStreamReadASCIIStringT<std::wstring>;

void expectStreamError(const std::function<void()>& f, const std::string& functionPrefix)
{
    try {
        f();
        ADD_FAILURE() << "nothing thrown";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName().rfind(functionPrefix, 0), 0u) << e.GetFunctionName();
    }
}

}  // namespace

TEST(VoStreamReadASCIIT, WordsEndAtTheFourWhiteSpaceBytesOnly)
{
    Reader in(std::string("  a\tb\r\nc\vd\fe  "));
    std::string w;
    in >> w;
    EXPECT_EQ(w, "a");
    in >> w;
    EXPECT_EQ(w, "b");
    in >> w;
    EXPECT_EQ(w, "c\vd\fe");  // vertical tab and form feed belong to the word
    EXPECT_FALSE(in.IsEndOfStream());
    expectStreamError([&] { in >> w; }, "VoStreamReadASCIIT<TString>::readWord");  // only spaces were left
    EXPECT_TRUE(in.IsEndOfStream());
}

TEST(VoStreamReadASCIIT, WordAtTheEndSetsEndOfStream)
{
    Reader in(std::string("12\r\nabc"));
    int n = 0;
    in >> n;
    EXPECT_EQ(n, 12);
    std::string w;
    in >> w;
    EXPECT_EQ(w, "abc");
    EXPECT_TRUE(in.IsEndOfStream());
    expectStreamError([&] { in >> w; }, "VoStreamReadASCIIT<TString>::readWord");
    expectStreamError([&] { in >> Reader::Line(w); }, "VoStreamReadASCIIT<TString>::operator >>");
}

TEST(VoStreamReadASCIIT, NumbersAreCheckedAgainstTheirTypes)
{
    Reader in(std::string("-128 127 255 -32768 65535 4294967295 -1 12x 128 256 70000"));
    signed char s8;
    unsigned char u8;
    short s16;
    unsigned short u16;
    unsigned int u32;
    int s32;
    in >> s8;
    EXPECT_EQ(s8, -128);
    in >> s8;
    EXPECT_EQ(s8, 127);
    in >> u8;
    EXPECT_EQ(u8, 255);
    in >> s16 >> u16 >> u32;
    EXPECT_EQ(s16, -32768);
    EXPECT_EQ(u16, 65535);
    EXPECT_EQ(u32, 4294967295u);
    in >> u32;  // a negative unsigned wraps as strtoul does
    EXPECT_EQ(u32, 4294967295u);
    expectStreamError([&] { in >> s32; }, "VoStreamReadASCIIT<TString>::readInt");  // "12x"
    expectStreamError([&] { in >> s8; }, "VoStreamReadASCIIT<TString>::operator >>");  // 128
    expectStreamError([&] { in >> u8; }, "VoStreamReadASCIIT<TString>::operator >>");  // 256
    expectStreamError([&] { in >> s16; }, "VoStreamReadASCIIT<TString>::operator >>");  // 70000
}

TEST(VoStreamReadASCIIT, ThirtyTwoBitSignedSaturatesWithoutRangeError)
{
    Reader in(std::string("2147483647 9999999999 -9999999999 99999999999 -5"));
    int v;
    unsigned int u;
    in >> v;
    EXPECT_EQ(v, INT_MAX);
    in >> v;
    EXPECT_EQ(v, INT_MAX);
    in >> v;
    EXPECT_EQ(v, INT_MIN);
    in >> u;
    EXPECT_EQ(u, 0xFFFFFFFFu);
    in >> u;
    EXPECT_EQ(u, 0xFFFFFFFBu);
}

TEST(VoStreamReadASCIIT, SixtyFourBitValuesUseScanfRules)
{
    Reader in(std::string("-9000000000 0x10 017 12abc 18446744073709551615 zz"));
    long long v;
    unsigned long long u;
    in >> v;
    EXPECT_EQ(v, -9000000000LL);
    in >> v;
    EXPECT_EQ(v, 16);
    in >> v;
    EXPECT_EQ(v, 15);
    in >> v;
    EXPECT_EQ(v, 12);  // trailing characters are ignored
    in >> u;
    EXPECT_EQ(u, 18446744073709551615ULL);
    expectStreamError([&] { in >> v; }, "VoStreamReadASCIIT<TString>::operator >>");
}

TEST(VoStreamReadASCIIT, BooleansAndFloatingPoint)
{
    Reader in(std::string("true false True 2.5 -1e-3 1.5f"));
    bool b;
    in >> b;
    EXPECT_TRUE(b);
    in >> b;
    EXPECT_FALSE(b);
    expectStreamError([&] { in >> b; }, "VoStreamReadASCIIT<TString>::operator >>");
    double d;
    float f;
    in >> d >> f;
    EXPECT_EQ(d, 2.5);
    EXPECT_FLOAT_EQ(f, -1e-3f);
    expectStreamError([&] { in >> d; }, "VoStreamReadASCIIT<TString>::operator >>");
}

TEST(VoStreamReadASCIIT, LinesOfAnyLengthWithEitherEnding)
{
    const std::string longLine(1000, 'x');
    Reader in("first\r\n" + longLine + "\n\nlast\r");
    std::string line;
    in >> Reader::Line(line);
    EXPECT_EQ(line, "first");
    in >> Reader::Line(line);
    EXPECT_EQ(line, longLine);
    in >> Reader::Line(line);
    EXPECT_EQ(line, "");
    in >> Reader::Line(line);
    EXPECT_EQ(line, "last");
    EXPECT_TRUE(in.IsEndOfStream());
    expectStreamError([&] { in >> Reader::Line(line); }, "VoStreamReadASCIIT<TString>::operator >>");
}

TEST(VoStreamReadASCIIT, RawCharactersIncludeWhiteSpace)
{
    Reader in(std::string(" a"));
    char c;
    in >> c;
    EXPECT_EQ(c, ' ');
    in >> c;
    EXPECT_EQ(c, 'a');
    EXPECT_FALSE(in.IsEndOfStream());
    expectStreamError([&] { in >> c; }, "VoStreamReadASCIIT<TString>::operator >>");
    EXPECT_TRUE(in.IsEndOfStream());
}

TEST(VoStreamReadASCIIT, WideStringsAreReadAsWindows1252)
{
    WideReader in(L"Gr\u00fc\u00dfe 5\u20ac \u0416");
    std::wstring w;
    in >> w;
    EXPECT_EQ(w, L"Gr\u00fc\u00dfe");
    in >> w;
    EXPECT_EQ(w, L"5\u20ac");
    in >> w;
    EXPECT_EQ(w, L"?");  // not in the code page
}
