// The counter base of reference-counted interfaces: it counts for the smart
// pointer, passes constructor arguments to the interface, and a copy has
// references of its own.
#include <bxbase/bxreferencecountedobjectt.h>
#include <bxbase/bxsmartpointer.h>

#include <gtest/gtest.h>

namespace {

class IShape : public IReferenceCounted
{
public:
    explicit IShape(int corners = 0) : m_corners(corners) {}
    virtual int Corners() const { return m_corners; }

private:
    int m_corners;
};

class CSquare : public BxReferenceCountedObjectT<IShape>
{
public:
    explicit CSquare(bool* destroyed) : BxReferenceCountedObjectT<IShape>(4), m_destroyed(destroyed) {}
    CSquare(const CSquare&) = default;
    ~CSquare() override { *m_destroyed = true; }

private:
    bool* m_destroyed;
};

}  // namespace

TEST(BxReferenceCountedObjectT, CountsForTheSmartPointerAndCopiesStartUncounted)
{
    bool destroyed = false;
    BxSmartPointer<IShape> shape(new CSquare(&destroyed));
    EXPECT_EQ(shape->Corners(), 4);
    BxSmartPointer<const IShape> view = shape;
    EXPECT_EQ(shape->getReferenceCounter().Get(), 2u);

    {
        BxSmartPointer<CSquare> copy(new CSquare(static_cast<const CSquare&>(*shape)));
        EXPECT_EQ(copy->getReferenceCounter().Get(), 1u);  // its own reference only
        EXPECT_EQ(shape->getReferenceCounter().Get(), 2u);
    }
    EXPECT_TRUE(destroyed);  // the copy shares the flag
    destroyed = false;

    shape = nullptr;
    EXPECT_FALSE(destroyed);
    view = nullptr;
    EXPECT_TRUE(destroyed);

    // Interfaces without arguments take the default constructor.
    BxSmartPointer<IShape> plain(new BxReferenceCountedObjectT<IShape>);
    EXPECT_EQ(plain->Corners(), 0);
}
