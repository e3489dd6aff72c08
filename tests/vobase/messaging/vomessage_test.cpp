#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessagerunnable.h>
#include <vobase/messaging/vomessageshutdown.h>
#include <vobase/messaging/vomessagesubscription.h>

#include <bxbase/bxformat.h>
#include <bxbase/bxsmartpointer.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <unordered_set>
#include <vector>

namespace {

TEST(VoMessage, IdsAreConsecutiveAndCopiesGetNewOnes)
{
    VoMessage first;
    VoMessageCommand second(5);
    EXPECT_EQ(second.GetID(), first.GetID() + 1);

    VoMessageCommand copy(second);
    EXPECT_EQ(copy.GetID(), second.GetID() + 1);
    VoMessageCommand moved(std::move(copy));
    EXPECT_GT(moved.GetID(), copy.GetID());
    const std::uint32_t before = moved.GetID();
    moved = second;
    EXPECT_GT(moved.GetID(), before);
    EXPECT_EQ(moved.GetWParam(), 5u);
    EXPECT_EQ(moved.getReferenceCounter().Get(), 0u);
}

TEST(VoMessage, FirstMessageOfAProcessHasIdOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process: no message made yet
    EXPECT_EXIT(std::exit(VoMessage().GetID() == 1 ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST(VoMessage, IdsAreUniqueAcrossThreads)
{
    constexpr int kThreads = 4, kPerThread = 2000;
    std::vector<std::vector<std::uint32_t>> ids(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&ids, t] {
            for (int i = 0; i < kPerThread; ++i)
                ids[t].push_back(VoMessage().GetID());
        });
    for (auto& thread : threads)
        thread.join();
    std::unordered_set<std::uint32_t> all;
    for (const auto& list : ids)
        all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), static_cast<std::size_t>(kThreads * kPerThread));
}

TEST(VoMessage, CommandIsAWindowsMessageAndAWorkflowAction)
{
    VoMessageCommand command(5);
    EXPECT_EQ(command.GetMessageID(), 0x111u);
    EXPECT_EQ(command.GetWParam(), 5u);
    EXPECT_EQ(command.GetLParam(), 0);
    EXPECT_TRUE(command.IsKindOf(VoMessageWindows::RTTI));
    EXPECT_TRUE(command.IsKindOf(VoMessageWorkflowAction::RTTI));
    EXPECT_TRUE(command.IsKindOf(VoMessage::RTTI));
    EXPECT_FALSE(command.Is(VoMessageWindows::RTTI));
    EXPECT_STREQ(command.GetClassNameW(), L"VoMessageCommand");
}

TEST(VoMessage, WindowsEqualityComparesTheThreeFields)
{
    VoMessageWindows a(0x111, 5, 0);
    EXPECT_TRUE(a == VoMessageCommand(5));  // same fields, derived class
    EXPECT_FALSE(a == VoMessageCommand(6));
    EXPECT_FALSE(a == VoMessageWindows(0x111, 5, 1));
    EXPECT_FALSE(a == VoMessageShutDown());
    VoMessage plain;
    EXPECT_TRUE(plain == plain);
    EXPECT_FALSE(plain == VoMessage());
}

TEST(VoMessage, DumpTexts)
{
    EXPECT_EQ(VoMessageShutDown().ToString(), L"VoMessageShutDown");
    EXPECT_EQ(VoMessageWindows(512, 3, -7).ToString(), L"VoMessageWindows (Message 512 [3, -7])");
    EXPECT_EQ(VoMessageCommand(7).ToString(), L"VoMessageCommand (Message 273 [7, 0])");
}

TEST(VoMessage, ClonableClassesCloneThroughTheRegistry)
{
    VoMessageWindows original(0x200, 1, 2);
    std::unique_ptr<IObject> clone = VoMessageWindows::RTTI.CloneObject(original);
    ASSERT_NE(clone, nullptr);
    const auto& copy = dynamic_cast<const VoMessageWindows&>(*clone);
    EXPECT_TRUE(copy == original);
    EXPECT_NE(copy.GetID(), original.GetID());
    EXPECT_TRUE(VoMessageCommand::RTTI.HasCloneFactory());
    EXPECT_FALSE(VoMessageSubscription::RTTI.HasFactory());
    EXPECT_NE(BxRTTI::Find(L"VoMessageRunnable"), nullptr);
}

struct SCountingRunnable : IRunnable
{
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return counter; }
    void Run() override { ++runs; }
    mutable BxReferenceCounter<unsigned int> counter;
    int runs = 0;
};

TEST(VoMessage, RunnableMessageSharesItsRunnable)
{
    BxSmartPointer<SCountingRunnable> job(new SCountingRunnable);
    {
        BxSmartPointer<const VoMessage> message(new VoMessageRunnable(job));
        EXPECT_EQ(job->counter.Get(), 2u);
        static_cast<const VoMessageRunnable&>(*message).GetRunnable()->Run();
    }
    EXPECT_EQ(job->runs, 1);
    EXPECT_EQ(job->counter.Get(), 1u);
}

TEST(VoMessageSubscription, InvalidatingRules)
{
    auto* handler = reinterpret_cast<VoMessageHandlerBase*>(std::uintptr_t{0x1000});
    VoMessageCommand command3(3), command4(4);
    VoMessageWindows windows(0x200, 3, 0);
    VoMessageShutDown other;

    VoMessageSubscription byClass(handler, VoMessageSubscription::eA_Unsubscribe, VoMessageWindows::RTTI);
    EXPECT_TRUE(byClass.IsInvalidating(windows));
    EXPECT_TRUE(byClass.IsInvalidating(command3));  // derived class
    EXPECT_FALSE(byClass.IsInvalidating(other));

    VoMessageSubscription byCommand(handler, VoMessageSubscription::eA_UnsubscribeCommand, std::uint64_t{3});
    EXPECT_EQ(byCommand.GetSubscriberRTTI(), &VoMessageCommand::RTTI);
    EXPECT_TRUE(byCommand.IsInvalidating(command3));
    EXPECT_FALSE(byCommand.IsInvalidating(command4));
    EXPECT_FALSE(byCommand.IsInvalidating(windows));  // wParam 3, but not a command

    for (auto action : {VoMessageSubscription::eA_Subscribe, VoMessageSubscription::eA_UnsubscribeAll})
        EXPECT_FALSE(VoMessageSubscription(handler, action, VoMessage::RTTI).IsInvalidating(command3));
    EXPECT_FALSE(VoMessageSubscription(handler, VoMessageSubscription::eA_SubscribeCommand, std::uint64_t{3})
                     .IsInvalidating(command3));
}

TEST(VoMessageSubscription, DumpTexts)
{
    auto* handler = reinterpret_cast<VoMessageHandlerBase*>(std::uintptr_t{0xABCDEF10});
    using S = VoMessageSubscription;
    EXPECT_EQ(S(handler, S::eA_Subscribe, VoMessageCommand::RTTI).ToString(),
              L"VoMessageSubscription(eA_Subscribe: 0x00000000ABCDEF10, VoMessageCommand)");
    EXPECT_EQ(S(handler, S::eA_SubscribeCommand, std::uint64_t{0x1F}).ToString(),
              L"VoMessageSubscription(eA_SubscribeCommand: 0x00000000ABCDEF10, 0x1F)");
    EXPECT_EQ(S(handler, S::eA_Unsubscribe, VoMessageShutDown::RTTI).ToString(),
              L"VoMessageSubscription(eA_Unsubscribe: 0x00000000ABCDEF10, VoMessageShutDown)");
    EXPECT_EQ(S(handler, S::eA_UnsubscribeCommand, std::uint64_t{255}).ToString(),
              L"VoMessageSubscription(eA_UnsubscribeCommand: 0x00000000ABCDEF10, 0xFF)");
    EXPECT_EQ(S(handler, S::eA_UnsubscribeAll).ToString(), L"VoMessageSubscription(eA_UnsubscribeAll: 0x00000000ABCDEF10)");
}

}  // namespace
