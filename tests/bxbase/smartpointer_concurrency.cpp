#include <bxbase/bxsmartpointer.h>

#include <gtest/gtest.h>

#include <thread>
#include <unordered_set>
#include <vector>

namespace {

struct CCounted : BxReferenceCountedObject
{
    explicit CCounted(int* destroyed) : destroyed(destroyed) {}
    ~CCounted() override { ++*destroyed; }
    int* destroyed;
};

struct CDerived : CCounted
{
    using CCounted::CCounted;
    int value = 7;
};

}  // namespace

TEST(BxSmartPointer, OwnsThroughTheObjectsOwnCounter)
{
    int destroyed = 0;
    {
        BxSmartPointer<CCounted> a(new CCounted(&destroyed));
        EXPECT_EQ(a->getReferenceCounter().Get(), 1u);
        {
            BxSmartPointer<CCounted> b = a;
            BxSmartPointer<CCounted> c(a.get());  // wrapping an owned object again is safe
            EXPECT_EQ(a->getReferenceCounter().Get(), 3u);
            EXPECT_TRUE(b == a);
        }
        EXPECT_EQ(a->getReferenceCounter().Get(), 1u);
        a = a;  // self-assignment keeps the object
        EXPECT_EQ(destroyed, 0);
        BxSmartPointer<CCounted> moved = std::move(a);
        EXPECT_FALSE(a);
        EXPECT_EQ(moved->getReferenceCounter().Get(), 1u);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(BxSmartPointer, ConvertsToBasesConstAndChecksDownCasts)
{
    int destroyed = 0;
    BxSmartPointer<CDerived> derived(new CDerived(&destroyed));
    BxSmartPointer<CCounted> base = derived;
    BxSmartPointer<const CCounted> view = base;
    BxSmartPointer<IReferenceCounted> any = base;
    EXPECT_EQ(derived->getReferenceCounter().Get(), 4u);
    EXPECT_EQ(BxSmartPointerCast<CDerived>(any)->value, 7);
    int other = 0;
    BxSmartPointer<CCounted> plain(new CCounted(&other));
    EXPECT_FALSE(BxSmartPointerCast<CDerived>(plain));
    EXPECT_EQ(plain->getReferenceCounter().Get(), 1u);  // a failed cast leaves no reference behind
    base.reset();
    view = nullptr;
    any = nullptr;
    derived = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(BxSmartPointer, HashAndOrderFollowTheAddress)
{
    int destroyed = 0;
    BxSmartPointer<CCounted> a(new CCounted(&destroyed));
    BxSmartPointer<CCounted> b(new CCounted(&destroyed));
    std::unordered_set<BxSmartPointer<CCounted>> set{a, b, a};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_NE(a < b, b < a);
    EXPECT_TRUE(BxSmartPointer<CCounted>() == nullptr);
}

TEST(BxSmartPointer, CopiesOnManyThreadsDestroyExactlyOnce)
{
    int destroyed = 0;
    {
        BxSmartPointer<CCounted> shared(new CCounted(&destroyed));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([shared] {
                for (int k = 0; k < 20000; ++k) {
                    BxSmartPointer<CCounted> copy = shared;
                    BxSmartPointer<const CCounted> view = copy;
                }
            });
        for (auto& thread : threads)
            thread.join();
        EXPECT_EQ(shared->getReferenceCounter().Get(), 1u);
    }
    EXPECT_EQ(destroyed, 1);
}
