#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>

#include <gtest/gtest.h>

TEST(BxStringConvert, Utf8RoundTripCoversEveryEncodedLength)
{
    const std::wstring text = L"A\u00e9\u20ac\U0001F600";  // 1, 2, 3 and 4 bytes
    const std::string utf8 = BxStringConvert::WideToUtf8(text);
    EXPECT_EQ(utf8, "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(BxStringConvert::Utf8ToWide(utf8), text);
}

TEST(BxStringConvert, MalformedUtf8IsRejectedOrReplaced)
{
    for (const std::string bad : {std::string("\x80"), std::string("\xC3"), std::string("\xE2\x82"),
                                  std::string("\xC0\xAF"),          // overlong '/'
                                  std::string("\xED\xA0\x80"),      // encoded surrogate
                                  std::string("\xF4\x90\x80\x80"),  // above U+10FFFF
                                  std::string("\xFF")}) {
        EXPECT_THROW(BxStringConvert::Utf8ToWide(bad), BxExceptionStream) << bad.size();
        EXPECT_NE(BxStringConvert::Utf8ToWideLossy("x" + bad).find(L'\uFFFD'), std::wstring::npos);
    }
    EXPECT_EQ(BxStringConvert::Utf8ToWideLossy("a\xFF" "b"), L"a\uFFFD" L"b");
}

TEST(BxStringConvert, Utf16UsesSurrogatePairsAndRejectsUnpairedOnes)
{
    const std::u16string units = BxStringConvert::WideToUtf16(L"x\U0001F600");
    ASSERT_EQ(units.size(), 3u);
    EXPECT_EQ(units[1], 0xD83D);
    EXPECT_EQ(units[2], 0xDE00);
    EXPECT_EQ(BxStringConvert::Utf16ToWide(units), L"x\U0001F600");
    EXPECT_THROW(BxStringConvert::Utf16ToWide(std::u16string(1, char16_t(0xD83D))), BxExceptionStream);
    EXPECT_THROW(BxStringConvert::Utf16ToWide(std::u16string(1, char16_t(0xDE00))), BxExceptionStream);
    EXPECT_THROW(BxStringConvert::WideToUtf16(std::wstring(1, wchar_t(0x110000))), BxExceptionStream);
}

// The direct UTF-8/UTF-16 conversions name themselves, not the wide step inside.
TEST(BxStringConvert, DirectUtf8Utf16ConversionsNameThemselvesWhenTheyThrow)
{
    const auto functionOf = [](const auto& convert) {
        try {
            convert();
        } catch (const BxExceptionStream& e) {
            return e.GetFunctionName();
        }
        return std::string("no exception");
    };
    EXPECT_EQ(functionOf([] { BxStringConvert::Utf16ToUtf8(std::u16string(1, char16_t(0xD83D))); }),
              "BxStringConvert::Utf16ToUtf8");
    EXPECT_EQ(functionOf([] { BxStringConvert::Utf8ToUtf16("\xC3"); }), "BxStringConvert::Utf8ToUtf16");
    EXPECT_EQ(BxStringConvert::Utf16ToUtf8(BxStringConvert::Utf8ToUtf16("x\xF0\x9F\x98\x80")), "x\xF0\x9F\x98\x80");
}

TEST(BxStringConvert, Windows1252MapsTheHighRangeAndReplacesTheRest)
{
    EXPECT_EQ(BxStringConvert::WideToAnsi(L"5 \u20ac, \u00e9, \u0178, \u20bd"), "5 \x80, \xE9, \x9F, ?");
    EXPECT_EQ(BxStringConvert::WideToAnsi(L"\U0001F600"), "?");  // one byte per character
    EXPECT_EQ(BxStringConvert::AnsiToWide("\x80\x81\x9F\xFF"), L"\u20ac\u0081\u0178\u00ff");
    std::string all;
    for (int b = 0; b < 256; ++b)
        all += static_cast<char>(b);
    EXPECT_EQ(BxStringConvert::WideToAnsi(BxStringConvert::AnsiToWide(all)), all);
}
