#include <bxbase/bxrtti.h>
#include <bxbase/bxvalue.h>

#include <gtest/gtest.h>

namespace {

class CShape : public IObject
{
    BX_DECLARE_RTTI()
};
class CCircle : public CShape
{
public:
    double radius = 1.0;
    BX_DECLARE_RTTI()
};
class CUnit : public CCircle
{
    BX_DECLARE_RTTI()
};

}  // namespace

BX_IMPLEMENT_RTTI_ABSTRACT(CShape)
BX_IMPLEMENT_RTTI_CLONABLE(CCircle, &CShape::RTTI)
BX_IMPLEMENT_RTTI(CUnit, &CCircle::RTTI)

TEST(BxRTTI, FindsRecordsAndCreatesObjectsByName)
{
    ASSERT_EQ(BxRTTI::Find(L"CCircle"), &CCircle::RTTI);
    EXPECT_EQ(BxRTTI::Find(L"CNoSuchClass"), nullptr);
    auto unit = BxRTTI::CreateByName(L"CUnit");
    ASSERT_TRUE(unit);
    EXPECT_STREQ(unit->GetClassNameW(), L"CUnit");
    EXPECT_EQ(BxRTTI::CreateByName(L"CShape"), nullptr);  // abstract
    EXPECT_FALSE(CShape::RTTI.HasFactory());
}

TEST(BxRTTI, IsIsExactAndIsKindOfWalksTheBases)
{
    const CUnit unit;
    EXPECT_TRUE(unit.Is(CUnit::RTTI));
    EXPECT_FALSE(unit.Is(CCircle::RTTI));
    EXPECT_TRUE(unit.IsKindOf(CCircle::RTTI));
    EXPECT_TRUE(unit.IsKindOf(CShape::RTTI));
    EXPECT_FALSE(CShape::RTTI.IsKindOf(CUnit::RTTI));
    EXPECT_FALSE(unit.IsKindOf(BxInt32::RTTI));
}

TEST(BxRTTI, CloneFactoryCopiesTheObject)
{
    CCircle circle;
    circle.radius = 2.5;
    auto copy = CCircle::RTTI.CloneObject(circle);
    ASSERT_TRUE(copy);
    EXPECT_EQ(dynamic_cast<CCircle&>(*copy).radius, 2.5);
    EXPECT_EQ(CUnit::RTTI.CloneObject(CUnit()), nullptr);
}

TEST(BxRTTI, TheFirstRecordKeepsAName)
{
    const BxRTTI duplicate(L"CCircle", {});
    EXPECT_EQ(BxRTTI::Find(L"CCircle"), &CCircle::RTTI);
    {
        const BxRTTI temporary(L"CTemporary", {&CShape::RTTI});
        EXPECT_EQ(BxRTTI::Find(L"CTemporary"), &temporary);
    }
    EXPECT_EQ(BxRTTI::Find(L"CTemporary"), nullptr);
}

TEST(BxValue, ValueClassesAreRegisteredClonableAndSerializable)
{
    for (const wchar_t* name : {L"BxBool", L"BxChar", L"BxFloat32", L"BxFloat64", L"BxInt8", L"BxInt16",
                                L"BxInt32", L"BxInt64", L"BxUInt8", L"BxUInt16", L"BxUInt32", L"BxUInt64",
                                L"BxLong", L"BxULong", L"BxString"}) {
        auto object = BxRTTI::CreateByName(name);
        ASSERT_TRUE(object) << name;
        EXPECT_STREQ(object->GetClassNameW(), name);
        EXPECT_TRUE(dynamic_cast<ISerializable*>(object.get()));
        EXPECT_TRUE(dynamic_cast<IReferenceCounted*>(object.get()));
    }
    static_assert(sizeof(BxLong::value_type) == 4 && sizeof(BxULong::value_type) == 4);
    BxString text(L"name");
    auto copy = BxString::RTTI.CloneObject(text);
    EXPECT_EQ(dynamic_cast<BxString&>(*copy).Get(), L"name");
}
