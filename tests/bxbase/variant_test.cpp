#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxvariant.h>

#include <gtest/gtest.h>

#include <cmath>
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

// A decoded variant may carry any floating value: a conversion that a C++ cast
// leaves undefined throws like an out-of-range text does.
TEST(BxVariant, FloatingValuesOutOfAnIntegerRangeThrowLikeText)
{
    const auto expectRefused = [](const BxVariant& v, auto target, const char* what) {
        using T = decltype(target);
        try {
            (void)v.GetAs<T>();
            ADD_FAILURE() << what << " converted";
        } catch (const BxExceptionPreconditionViolation& e) {
            EXPECT_EQ(e.GetFunctionName(), "BxVariant::GetAs") << what;
        }
    };
    const float nanF = std::numeric_limits<float>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    expectRefused(BxVariant(1e30f), int(), "1e30f as int");
    expectRefused(BxVariant(nanF), int(), "NaN as int");
    expectRefused(BxVariant(-inf), (long long)0, "-inf as long long");
    expectRefused(BxVariant(-1.0), 0u, "-1.0 as unsigned");
    expectRefused(BxVariant(256.0f), (unsigned char)0, "256 as unsigned char");
    expectRefused(BxVariant(-129.0), (signed char)0, "-129 as signed char");
    expectRefused(BxVariant(32768.0), short(), "32768 as short");
    expectRefused(BxVariant(18446744073709551616.0), 0ULL, "2^64 as unsigned long long");
    expectRefused(BxVariant(9223372036854775808.0), 0LL, "2^63 as long long");
    expectRefused(BxVariant(1e300), 0.0f, "1e300 as float");
    EXPECT_THROW(static_cast<int>(BxVariant(1e30f)), BxExceptionPreconditionViolation);
    BxVariant v(1e30f);
    EXPECT_THROW(v.ConvertTo(BxVariant::eVT_Int16), BxExceptionPreconditionViolation);
    EXPECT_EQ(v.GetType(), BxVariant::eVT_Float);  // unchanged after the refusal

    // the edges that a cast does define still convert, truncating toward zero
    EXPECT_EQ(BxVariant(-0.99).GetAs<unsigned int>(), 0u);
    EXPECT_EQ(BxVariant(255.9f).GetAs<unsigned char>(), 255);
    EXPECT_EQ(BxVariant(-128.5).GetAs<signed char>(), -128);
    EXPECT_EQ(BxVariant(-9223372036854775808.0).GetAs<long long>(), std::numeric_limits<long long>::min());
    EXPECT_EQ(BxVariant(18446744073709549568.0).GetAs<unsigned long long>(), 18446744073709549568ULL);
    EXPECT_TRUE(BxVariant(nanF).GetAs<bool>());
    EXPECT_TRUE(std::isnan(BxVariant(std::numeric_limits<double>::quiet_NaN()).GetAs<float>()));
    EXPECT_TRUE(std::isinf(BxVariant(inf).GetAs<float>()));
    EXPECT_EQ(BxVariant(3.4e38).GetAs<float>(), 3.4e38f);
    // integer narrowing is defined (modulo 2^n) and stays as it is
    EXPECT_EQ(BxVariant(300).GetAs<unsigned char>(), 44);
}
