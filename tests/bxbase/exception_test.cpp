#include <bxbase/bxcheckreturn.h>
#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/persistence/cexception.h>

#include <gtest/gtest.h>

#include <stdexcept>

TEST(BxException, NamesThePlaceThatThrew)
{
    try {
        BX_THROW(BxExceptionStream, "VoStreamReadBinaryFile::read", "file is truncated");
        FAIL();
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamReadBinaryFile::read");
        EXPECT_EQ(e.GetMessage(), "file is truncated");
        EXPECT_NE(e.GetSourceFile().find("exception_test.cpp"), std::string::npos);
        EXPECT_GT(e.GetLine(), 0);
        EXPECT_NE(std::string(e.what()).find("VoStreamReadBinaryFile::read: file is truncated"), std::string::npos);
    }
    const BxException wide("f.cpp", 3, "F", std::wstring(L"Grüße"));
    EXPECT_EQ(wide.GetMessageW(), L"Grüße");
    EXPECT_STREQ(wide.what(), "F: Grüße (f.cpp:3)");
}

TEST(BxException, ClonesAndRethrowsWithTheDynamicType)
{
    const BxExceptionContainer original("a.cpp", 1, "BxArray::At", "index 5 out of range");
    std::unique_ptr<IException> copy = original.Clone();
    const IException& asInterface = original;
    EXPECT_THROW(copy->Rethrow(), BxExceptionContainer);
    EXPECT_THROW(asInterface.Rethrow(), BxExceptionContainer);
    const Persistence::CException persistence("b.cpp", 2, "Persistence::Read");
    EXPECT_THROW(persistence.Clone()->Rethrow(), Persistence::CException);
    try {
        copy->Rethrow();
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetMessage(), "index 5 out of range");
    }
}

TEST(BxException, StdWrapperKeepsTheOriginalText)
{
    const std::out_of_range inner("vector::at");
    const BxExceptionStd wrapped("c.cpp", 4, "CFoo::Run", inner);
    EXPECT_EQ(wrapped.GetMessage(), "vector::at");
    EXPECT_THROW(wrapped.Clone()->Rethrow(), BxExceptionStd);
}

TEST(BxCheckReturn, ReadingOrIgnoringMarksTheResultChecked)
{
    auto make = [](bool v) { return BxCheckReturn<bool, BxCheckReturnPolicyAssert>(v); };
    EXPECT_TRUE(bool(make(true)));
    EXPECT_FALSE(make(false).Get());
    make(true).Ignore();
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> moved = make(true);
    EXPECT_TRUE(bool(moved));
}

#ifndef NDEBUG
TEST(BxCheckReturnDeathTest, AnUncheckedResultAssertsInDebugBuilds)
{
    using CResult = BxCheckReturn<bool, BxCheckReturnPolicyAssert>;
    EXPECT_DEATH({ CResult unused(true); }, "never looked at");
}
#endif
