#include <bxbase/threading/bxnohelpscope.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/threading/bxworkqueue.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{
class CNumberedTask : public BxTask
{
public:
    explicit CNumberedTask(int number) : number(number) {}
    const int number;

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override { return true; }
};

BxSmartPointer<BxTask> numbered(int number)
{
    return BxSmartPointer<BxTask>(new CNumberedTask(number));
}

int numberOf(const BxSmartPointer<BxTask>& task)
{
    return task ? static_cast<const CNumberedTask&>(*task).number : -1;
}
} // namespace

TEST(BxWorkQueue, OwnerTakesNewestThievesTakeOldestAcrossGrowth)
{
    BxWorkQueue queue;
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.PopBack(), nullptr);
    EXPECT_EQ(queue.PopFront(), nullptr);

    // Wrap the ring first, then grow it past its first capacity.
    for (int i = 0; i < 40; ++i)
        queue.PushBack(numbered(i));
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(numberOf(queue.PopFront()), i);
    for (int i = 0; i < 300; ++i)
        queue.PushBack(numbered(i));
    EXPECT_EQ(queue.GetCount(), 300u);
    EXPECT_EQ(numberOf(queue.PopFront()), 0);
    EXPECT_EQ(numberOf(queue.PopBack()), 299);
    EXPECT_EQ(numberOf(queue.PopFront()), 1);
    EXPECT_EQ(numberOf(queue.PopBack()), 298);

    std::vector<BxSmartPointer<BxTask>> rest = queue.TakeAll();
    ASSERT_EQ(rest.size(), 296u);
    EXPECT_EQ(numberOf(rest.front()), 2);
    EXPECT_EQ(numberOf(rest.back()), 297);
    EXPECT_TRUE(queue.IsEmpty());
}

TEST(BxWorkQueue, PopBackIfRemovesOnlyTheNewestMatchingEntry)
{
    BxWorkQueue queue;
    BxSmartPointer<BxTask> first = numbered(1);
    BxSmartPointer<BxTask> second = numbered(2);
    queue.PushBack(first);
    queue.PushBack(second);
    EXPECT_FALSE(queue.PopBackIf(*first)); // not the newest
    EXPECT_EQ(queue.GetCount(), 2u);
    EXPECT_TRUE(queue.PopBackIf(*second));
    EXPECT_TRUE(queue.PopBackIf(*first));
    EXPECT_FALSE(queue.PopBackIf(*first));
    EXPECT_TRUE(queue.IsEmpty());
}

TEST(BxWorkQueue, OwnerAndThievesTogetherTakeEveryEntryOnce)
{
    constexpr int kCount = 20000;
    BxWorkQueue queue;
    std::vector<int> taken(kCount, 0); // each slot written by the one thread that took the entry
    std::atomic<int> total{0};
    std::atomic<bool> ownerDone{false};
    auto take = [&](BxSmartPointer<BxTask> task) {
        if (!task)
            return false;
        ++taken[numberOf(task)];
        ++total;
        return true;
    };
    std::vector<std::thread> thieves;
    for (int t = 0; t < 2; ++t)
        thieves.emplace_back([&] {
            while (!ownerDone.load() || !queue.IsEmpty())
                take(queue.PopFront());
        });
    for (int i = 0; i < kCount; ++i)
    {
        queue.PushBack(numbered(i));
        if (i % 3 == 0)
            take(queue.PopBack());
    }
    while (take(queue.PopBack()))
    {
    }
    ownerDone = true;
    for (auto& thief : thieves)
        thief.join();
    EXPECT_EQ(total.load(), kCount);
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(taken[i], 1) << "entry " << i;
}

TEST(BxNoHelpScope, CountsRaisesPerThreadAndNests)
{
    EXPECT_FALSE(BxNoHelpScope::IsRaised());
    {
        BxNoHelpScope outer;
        EXPECT_TRUE(BxNoHelpScope::IsRaised());
        {
            BxNoHelpScope inner;
        }
        EXPECT_TRUE(BxNoHelpScope::IsRaised()); // the outer scope still holds it
        std::thread other([] { EXPECT_FALSE(BxNoHelpScope::IsRaised()); });
        other.join();
    }
    EXPECT_FALSE(BxNoHelpScope::IsRaised());

    // Raised by id from another thread (as a data manager may do), lowered here.
    const std::uint32_t me = GetCurrentThreadId();
    std::thread raiser([me] { BxNoHelpScope::Raise(me); });
    raiser.join();
    EXPECT_TRUE(BxNoHelpScope::IsRaised());
    BxNoHelpScope::Lower(me);
    EXPECT_FALSE(BxNoHelpScope::IsRaised());
    BxNoHelpScope::Lower(me); // unmatched: ignored
    EXPECT_FALSE(BxNoHelpScope::IsRaised());
}
