#include <vobase/objects/voclassparameterset.h>
#include <vobase/objects/voparameterset.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <vector>

using Bytes = std::vector<std::uint8_t>;

// Both kinds of set behave alike apart from identifiers and the group map.
template <class Set>
class ParameterSetTest : public ::testing::Test
{
};
using SetTypes = ::testing::Types<VoParameterSet, VoClassParameterSet>;
TYPED_TEST_SUITE(ParameterSetTest, SetTypes);

namespace {

template <class Set>
Bytes write(const Set& set)
{
    BxStreamWriteBinaryBuffer out;
    set.Serialize(out);
    auto* p = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(p, p + out.GetCount());
}

template <class Set>
std::string functionOf(const char* member)
{
    return std::string(std::is_same_v<Set, VoParameterSet> ? "VoParameterSet::" : "VoClassParameterSet::") + member;
}

}  // namespace

TYPED_TEST(ParameterSetTest, LimitsGuardSetParameter)
{
    TypeParam set;
    set.SetConstraint(L"gain", TypeParam::eMinimum, BxVariant(0));
    set.SetConstraint(L"gain", TypeParam::eMaximum, BxVariant(10));
    set.SetParameter(L"gain", BxVariant(10));
    try {
        set.SetParameter(L"gain", BxVariant(11));
        FAIL() << "11 accepted";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), functionOf<TypeParam>("SetParameter"));
        const char* source = std::is_same_v<TypeParam, VoParameterSet> ? "voparameterset" : "voclassparameterset";
        EXPECT_NE(e.GetSourceFile().find(source), std::string::npos) << e.GetSourceFile();
    }
    EXPECT_THROW(set.SetParameter(L"gain", BxVariant(-0.5)), BxException);
    BxVariant out;
    EXPECT_NE(set.GetParameter(L"gain", out), 0);
    EXPECT_TRUE(out == BxVariant(10));

    // Only a maximum: anything not above it; the third kind takes no part.
    set.SetConstraint(L"level", TypeParam::eMaximum, BxVariant(5.0));
    set.SetConstraint(L"level", TypeParam::eThirdKind, BxVariant(0));
    set.SetParameter(L"level", BxVariant(-1000));
    set.SetParameter(L"level", BxVariant(5));
    EXPECT_FALSE(set.IsInLimits(L"level", BxVariant(5.5)));
    EXPECT_TRUE(set.IsInLimits(L"unconstrained", BxVariant(1e9)));
}

TYPED_TEST(ParameterSetTest, ParametersConstraintsAndExtensions)
{
    TypeParam set;
    BxVariant out(7);
    EXPECT_EQ(set.GetParameter(L"missing", out), 0);
    EXPECT_TRUE(out == BxVariant(7));
    EXPECT_EQ(set.GetParameter(L"missing", BxVariant(L"fallback"), out), 0);
    EXPECT_TRUE(out == BxVariant(L"fallback"));
    set.SetParameter(L"name", BxVariant(std::string("x")));
    EXPECT_NE(set.GetParameter(L"name", BxVariant(L"fallback"), out), 0);
    EXPECT_TRUE(out == BxVariant(std::string("x")));
    EXPECT_TRUE(set.HasParameter(L"name"));
    EXPECT_FALSE(set.HasParameter(L"Name"));  // names compare exactly
    EXPECT_TRUE(set.DeleteParameter(L"name"));
    EXPECT_FALSE(set.DeleteParameter(L"name"));

    set.SetConstraint(L"p", TypeParam::eThirdKind, BxVariant(3));
    set.SetConstraint(L"p", TypeParam::eThirdKind, BxVariant(4));
    EXPECT_TRUE(set.GetConstraint(L"p", TypeParam::eThirdKind) == BxVariant(4));
    EXPECT_FALSE(set.HasConstraint(L"p", TypeParam::eMinimum));
    try {
        (void)set.GetConstraint(L"p", TypeParam::eMinimum);
        FAIL() << "missing constraint returned";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), functionOf<TypeParam>("GetConstraint"));
    }
    EXPECT_TRUE(set.DeleteConstraint(L"p", TypeParam::eThirdKind));
    EXPECT_FALSE(set.HasConstraint(L"p", TypeParam::eThirdKind));

    set.SetExtension(L"file", L"*.png");
    EXPECT_TRUE(set.HasExtension(L"file"));
    EXPECT_EQ(set.GetExtension(L"file"), L"*.png");
    EXPECT_EQ(set.GetExtension(L"other"), L"");
}

TYPED_TEST(ParameterSetTest, GroupsAndSortedNames)
{
    TypeParam set;
    set.SetParameter(L"b", BxVariant(1));
    set.SetParameter(L"a", BxVariant(2));
    set.SetParameter(L"c", BxVariant(3));
    BxArray<CStringW> keys{L"stale"};
    set.GetParameterKeys(keys);
    EXPECT_EQ(keys, (BxArray<CStringW>{L"a", L"b", L"c"}));

    EXPECT_FALSE(set.HasGroups());
    set.AddGroup(L"z").SetParameter(L"inner", BxVariant(1));
    set.GetGroup(L"m");  // creates the group
    EXPECT_TRUE(set.IsGroup(L"m"));
    EXPECT_TRUE(set.GetGroup(L"z").HasParameter(L"inner"));
    EXPECT_TRUE(set.AddGroup(L"z").HasParameter(L"inner"));  // not replaced
    set.GetGroupNames(keys);
    EXPECT_EQ(keys, (BxArray<CStringW>{L"m", L"z"}));

    const TypeParam& constSet = set;
    EXPECT_TRUE(constSet.GetGroup(L"z").HasParameter(L"inner"));
    EXPECT_THROW((void)constSet.GetGroup(L"none"), BxExceptionContainer);
    EXPECT_FALSE(set.IsGroup(L"none"));

    TypeParam copy(set);
    copy.GetGroup(L"z").SetParameter(L"inner", BxVariant(99));
    BxVariant out;
    set.GetGroup(L"z").GetParameter(L"inner", out);
    EXPECT_TRUE(out == BxVariant(1));  // copies are deep

    EXPECT_TRUE(set.RemoveGroup(L"m"));
    EXPECT_FALSE(set.RemoveGroup(L"m"));
    set.RemoveGroups();
    EXPECT_FALSE(set.HasGroups());
    EXPECT_EQ(copy.GetGroups().size(), 2u);
}

TYPED_TEST(ParameterSetTest, ResetAllEmptiesEverything)
{
    TypeParam set;
    set.SetParameter(L"a", BxVariant(1));
    set.SetExtension(L"a", L"x");
    set.SetConstraint(L"a", TypeParam::eMinimum, BxVariant(0));
    set.SetConstraint(L"a", TypeParam::eMaximum, BxVariant(9));
    set.SetConstraint(L"a", TypeParam::eThirdKind, BxVariant(9));
    set.AddGroup(L"g");
    if constexpr (std::is_same_v<TypeParam, VoClassParameterSet>) {
        set.SetDescriptionID(L"a", 1);
        set.SetResourceID(L"a", 2);
    }
    set.ResetAll();
    EXPECT_TRUE(set.GetParameters().empty());
    EXPECT_FALSE(set.HasExtension(L"a"));
    EXPECT_FALSE(set.HasConstraint(L"a", TypeParam::eMinimum));
    EXPECT_FALSE(set.HasConstraint(L"a", TypeParam::eMaximum));
    EXPECT_FALSE(set.HasConstraint(L"a", TypeParam::eThirdKind));
    EXPECT_FALSE(set.HasGroups());
    if constexpr (std::is_same_v<TypeParam, VoClassParameterSet>) {
        EXPECT_FALSE(set.HasDescriptionID(L"a"));
        EXPECT_FALSE(set.HasResourceID(L"a"));
    }
    set.SetParameter(L"a", BxVariant(100));  // the limits are gone too
}

TYPED_TEST(ParameterSetTest, BinaryFormHoldsOnlyTheParameters)
{
    TypeParam set;
    set.SetParameter(L"k", BxVariant(static_cast<short>(-2)));
    set.SetConstraint(L"k", TypeParam::eMaximum, BxVariant(5));
    set.SetExtension(L"k", L"ext");
    set.AddGroup(L"g").SetParameter(L"inner", BxVariant(1));
    const Bytes bytes = write(set);
    const Bytes expected = {0, 0, 0, 0,  0, 0, 0, 0,  1, 0, 0, 0,     // versions, count
                            1, 0, 0, 0, 'k', 0,                       // name
                            14, 0, 0, 0, 0xFE, 0xFF};                 // variant
    EXPECT_EQ(bytes, expected);

    TypeParam many;
    for (int i = 0; i < 50; ++i)
        many.SetParameter(L"p" + std::to_wstring(i), BxVariant(i * 1.5));
    many.SetParameter(L"text", BxVariant(L"w\u00E4rt"));
    const Bytes manyBytes = write(many);
    TypeParam back;
    back.SetConstraint(L"p1", TypeParam::eMinimum, BxVariant(0));
    BxStreamReadBinaryBuffer in(manyBytes.data(), manyBytes.size());
    back.Serialize(in);
    EXPECT_EQ(in.GetRemaining(), 0u);
    EXPECT_EQ(back.GetParameters(), many.GetParameters());
    EXPECT_TRUE(back.HasConstraint(L"p1", TypeParam::eMinimum));

    TypeParam fromSet;
    BxStreamReadBinaryBuffer in2(bytes.data(), bytes.size());
    fromSet.Serialize(in2);
    EXPECT_TRUE(fromSet.HasParameter(L"k"));
    EXPECT_FALSE(fromSet.HasConstraint(L"k", TypeParam::eMaximum));
    EXPECT_FALSE(fromSet.HasExtension(L"k"));
    EXPECT_FALSE(fromSet.HasGroups());
}

TYPED_TEST(ParameterSetTest, BadBinaryInputThrowsAndKeepsTheParameters)
{
    TypeParam set;
    set.SetParameter(L"a", BxVariant(1));
    set.SetParameter(L"b", BxVariant(L"two"));
    const Bytes good = write(set);
    for (std::size_t size = 0; size < good.size(); ++size) {
        TypeParam target;
        target.SetParameter(L"kept", BxVariant(1));
        BxStreamReadBinaryBuffer in(good.data(), size);
        EXPECT_THROW(target.Serialize(in), BxException) << size;
        EXPECT_TRUE(target.HasParameter(L"kept"));
        EXPECT_EQ(target.GetParameters().size(), 1u);
    }
    const Bytes newer = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const Bytes hugeCount = {0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0, 'a', 0, 0, 0, 0, 0};
    const Bytes badTag = {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 'a', 0, 9, 0, 0, 0};
    TypeParam target;
    BxStreamReadBinaryBuffer in1(newer.data(), newer.size());
    EXPECT_THROW(target.Serialize(in1), BxExceptionWrongFileVersion);
    BxStreamReadBinaryBuffer in2(hugeCount.data(), hugeCount.size());
    EXPECT_THROW(target.Serialize(in2), BxExceptionStream);
    BxStreamReadBinaryBuffer in3(badTag.data(), badTag.size());
    EXPECT_THROW(target.Serialize(in3), BxException);
    EXPECT_TRUE(target.GetParameters().empty());
}

TEST(VoClassParameterSet, DescriptionAndResourceIdentifiers)
{
    VoClassParameterSet set;
    EXPECT_FALSE(set.HasDescriptionID(L"r"));
    EXPECT_EQ(set.GetDescriptionID(L"r"), 0u);
    set.SetDescriptionID(L"r", 4711);
    set.SetResourceID(L"r", 12);
    EXPECT_EQ(set.GetDescriptionID(L"r"), 4711u);
    EXPECT_EQ(set.GetResourceID(L"r"), 12u);
    EXPECT_FALSE(set.HasResourceID(L"other"));

    VoClassParameterSet assigned;
    assigned.AddGroup(L"old");
    assigned = set;
    EXPECT_EQ(assigned.GetResourceID(L"r"), 12u);
    EXPECT_FALSE(assigned.IsGroup(L"old"));
}
