#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxvariant.h>

#include <gtest/gtest.h>

#include <limits>

TEST(BxVariant, EveryKindGetsItsTag)
{
    EXPECT_EQ(BxVariant().GetType(), BxVariant::eVT_Null);
    EXPECT_EQ(BxVariant(true).GetType(), 1u);
    EXPECT_EQ(BxVariant(1).GetType(), 2u);
    EXPECT_EQ(BxVariant(1LL).GetType(), 3u);
    EXPECT_EQ(BxVariant(1u).GetType(), 4u);
    EXPECT_EQ(BxVariant(1.0f).GetType(), 5u);
    EXPECT_EQ(BxVariant(1.0).GetType(), 6u);
    EXPECT_EQ(BxVariant('c').GetType(), 7u);
    EXPECT_EQ(BxVariant(L"w").GetType(), 8u);
    EXPECT_EQ(BxVariant(static_cast<signed char>(1)).GetType(), 12u);
    EXPECT_EQ(BxVariant(static_cast<unsigned char>(1)).GetType(), 13u);
    EXPECT_EQ(BxVariant(static_cast<short>(1)).GetType(), 14u);
    EXPECT_EQ(BxVariant(static_cast<unsigned short>(1)).GetType(), 15u);
    EXPECT_EQ(BxVariant(1ULL).GetType(), 16u);
    EXPECT_EQ(BxVariant("n").GetType(), 18u);
    BxVariant v = 5;
    v = std::string("text");
    EXPECT_EQ(v.GetType(), BxVariant::eVT_String);
    v.SetNull();
    EXPECT_TRUE(v.IsNull());
}

TEST(BxVariant, ConvertsBetweenNumbersAndText)
{
    EXPECT_EQ(BxVariant(3.75).GetAs<int>(), 3);
    EXPECT_EQ(BxVariant(L"-12").GetAs<int>(), -12);
    EXPECT_EQ(BxVariant("+7").GetAs<unsigned short>(), 7);
    EXPECT_DOUBLE_EQ(BxVariant("2.5").GetAs<double>(), 2.5);
    EXPECT_EQ(BxVariant(0.1).GetAs<std::string>(), "0.1");
    EXPECT_EQ(BxVariant(true).GetAs<std::wstring>(), L"true");
    EXPECT_TRUE(BxVariant("true").GetAs<bool>());
    EXPECT_EQ(BxVariant().GetAs<int>(), 0);
    EXPECT_EQ(BxVariant().GetAs<std::wstring>(), L"");
    EXPECT_EQ(static_cast<long long>(BxVariant(L"9000000000")), 9000000000LL);

    BxVariant v = L"42";
    v.ConvertTo(BxVariant::eVT_UInt64);
    EXPECT_EQ(v.GetType(), BxVariant::eVT_UInt64);
    EXPECT_EQ(v.GetAs<unsigned long long>(), 42u);
    v.ConvertTo(BxVariant::eVT_WString);
    EXPECT_EQ(v.GetAs<std::wstring>(), L"42");
}

TEST(BxVariant, RejectsTextThatIsNotANumberOfTheKind)
{
    for (const char* bad : {"", "abc", "12x", "1.5", "300", "-1"})
        EXPECT_THROW(BxVariant(bad).GetAs<unsigned char>(), BxExceptionPreconditionViolation) << bad;
    EXPECT_THROW(BxVariant(L"maybe").GetAs<bool>(), BxExceptionPreconditionViolation);
    EXPECT_THROW(BxVariant(1).ConvertTo(BxVariant::eVT_Reserved10), BxExceptionPreconditionViolation);
    EXPECT_THROW(BxVariant(1).GetAs<void*>(), BxExceptionPreconditionViolation);
}

TEST(BxVariant, NumbersCompareByValueAcrossKinds)
{
    EXPECT_EQ(BxVariant(1), BxVariant(1.0));
    EXPECT_EQ(BxVariant(true), BxVariant(1ULL));
    EXPECT_LT(BxVariant(-1), BxVariant(0u));                              // no unsigned wrap-around
    EXPECT_LT(BxVariant(-1LL), BxVariant(std::numeric_limits<unsigned long long>::max()));
    EXPECT_NE(BxVariant(9007199254740993LL), BxVariant(9007199254740992.0));  // exact beyond 2^53
    EXPECT_GT(BxVariant(2.5f), BxVariant(static_cast<short>(2)));
    const BxVariant nan(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(nan == nan);
    EXPECT_FALSE(nan < BxVariant(1));
}

TEST(BxVariant, StringsCompareWithinTheirKindOtherwiseByTag)
{
    EXPECT_LT(BxVariant(L"apple"), BxVariant(L"banana"));
    EXPECT_EQ(BxVariant("same"), BxVariant("same"));
    EXPECT_NE(BxVariant("same"), BxVariant(L"same"));
    EXPECT_LT(BxVariant(L"zzz"), BxVariant("aaa"));  // tag 8 before tag 18
    EXPECT_LT(BxVariant(), BxVariant(0));            // null first
    EXPECT_EQ(BxVariant(), BxVariant());
    EXPECT_LT(BxVariant(1000000), BxVariant(L"0"));  // numbers before wide text by tag
}
