#include "messagingtestsupport.h"

#include <vobase/messaging/vohangdetector.h>

#include <array>
#include <thread>

namespace MessagingTest {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kPostsPerProducer = 20000;  // sanitizers run the route about ten times slower
#else
constexpr int kPostsPerProducer = 100000;
#endif
constexpr int kProducers = 4;
constexpr int kPostsPerSend = 10;  // every producer sends once after every ten posts
constexpr int kSendsPerProducer = kPostsPerProducer / kPostsPerSend;

class CMsgLoad : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    CMsgLoad() = default;
    CMsgLoad(int producer, int sequence) : producer(producer), sequence(sequence) {}
    int producer = -1;
    int sequence = 0;
};
BX_IMPLEMENT_RTTI(CMsgLoad, &VoMessage::RTTI)

// Counts what it handles per producer and checks that each producer's
// messages arrive in the order they were made. Its fields belong to its thread
// and are read after a send to it has returned.
class CLoadHandler : public VoMessageHandlerThreaded
{
public:
    explicit CLoadHandler(const std::wstring& name) : VoMessageHandlerThreaded(name, eTP_Normal) {}
    ~CLoadHandler() override { UnsubscribeAll(); }

    std::array<long long, kProducers> handled{};
    std::array<int, kProducers> lastSequence{-1, -1, -1, -1};
    long long outOfOrder = 0;

protected:
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CMsgLoad::RTTI))
            return VoMessageHandlerThreaded::handleMessage(message);
        const auto& load = static_cast<const CMsgLoad&>(message);
        if (load.producer < 0)
            return 2;  // the final synchronisation
        ++handled[load.producer];
        if (load.sequence <= lastSequence[load.producer])
            ++outOfOrder;
        lastSequence[load.producer] = load.sequence;
        return 1;
    }
};

TEST_F(CDispatcherTest, LoadFourProducersTwoThreadedHandlers)
{
    // Busy handlers are not stuck ones: with a short detection time, no send
    // of the load is reported as blocked.
    const std::uint32_t savedTimeout = VoHangDetector::GetTimeout();
    VoHangDetector::SetTimeout(250);
    const std::uint64_t reportsBefore = VoHangDetector::GetReportCount();

    CLoadHandler first(L"LoadFirst"), second(L"LoadSecond");
    ASSERT_TRUE(first.StartAndWait());
    ASSERT_TRUE(second.StartAndWait());
    first.Subscribe(CMsgLoad::RTTI);
    second.Subscribe(CMsgLoad::RTTI);

    std::array<long long, kProducers> badSends{};
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
    {
        producers.emplace_back([p, &badSends] {
            int sequence = 0;
            for (int s = 0; s < kSendsPerProducer; ++s)
            {
                for (int i = 0; i < kPostsPerSend; ++i)
                    VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgLoad(p, sequence++)));
                BxList<std::int64_t> results;
                if (VoMessageDispatcher::SendMessageW(CMsgLoad(p, sequence++), results) != 1 || results.size() != 2)
                    ++badSends[p];
            }
        });
    }
    for (auto& producer : producers)
        producer.join();
    // Every post was routed before this send, and each handler takes its queue in order.
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgLoad(-1, 0), first), 2);
    EXPECT_EQ(VoMessageDispatcher::SendMessageW(CMsgLoad(-1, 0), second), 2);

    const long long expected = kPostsPerProducer + kSendsPerProducer;
    for (int p = 0; p < kProducers; ++p)
    {
        EXPECT_EQ(badSends[p], 0) << "producer " << p;
        EXPECT_EQ(first.handled[p], expected) << "producer " << p;
        EXPECT_EQ(second.handled[p], expected) << "producer " << p;
    }
    EXPECT_EQ(first.outOfOrder, 0);
    EXPECT_EQ(second.outOfOrder, 0);

    EXPECT_EQ(VoHangDetector::GetReportCount(), reportsBefore);
    EXPECT_TRUE(VoHangDetector::GetBlockedWaits().empty());
    VoHangDetector::SetTimeout(savedTimeout);
}

}  // namespace
}  // namespace MessagingTest
