#include <bxbase/diagnostics/bxtracerecorder.h>
#include <bxbase/diagnostics/bxtracescope.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/threading/bxthreadapi.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <latch>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

nlohmann::json writtenTrace()
{
    std::ostringstream out;
    BxTraceRecorder::Write(out);
    return nlohmann::json::parse(out.str()); // throws when the text is not JSON
}

std::vector<nlohmann::json> eventsOf(const nlohmann::json& trace, std::string_view phase)
{
    std::vector<nlohmann::json> events;
    for (const auto& event : trace.at("traceEvents"))
        if (event.at("ph") == phase)
            events.push_back(event);
    return events;
}

class BxTraceRecorderTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        BxTraceRecorder::Stop();
        BxTraceRecorder::Clear();
    }
};

} // namespace

TEST_F(BxTraceRecorderTest, RecordsNothingWhileOff)
{
    BxTraceRecorder::Start();
    BxTraceRecorder::Stop();
    BxTraceRecorder::Instant("test", "ignored");
    { BxTraceScope span("test", "ignored too"); }
    const auto trace = writtenTrace();
    EXPECT_TRUE(eventsOf(trace, "i").empty());
    EXPECT_TRUE(eventsOf(trace, "X").empty());
}

TEST_F(BxTraceRecorderTest, SpansFlowsAndAsyncSpansFromSeveralThreadsFormOneValidTrace)
{
    BxTraceRecorder::Start();
    const std::uint64_t flow = BxTraceRecorder::NewId();
    const std::uint64_t hold = BxTraceRecorder::NewId();
    std::latch sent(1);
    std::uint32_t receiverId = 0;
    {
        BxTraceScope span("test", "send");
        BxTraceRecorder::FlowStart("test", "message", flow);
        BxTraceRecorder::AsyncBegin("test", "lock \"root\"", hold);
    }
    std::thread receiver([&] {
        receiverId = GetCurrentThreadId();
        sent.wait();
        BxTraceScope span("test", "handle");
        BxTraceRecorder::FlowEnd("test", "message", flow);
        BxTraceRecorder::AsyncEnd("test", "lock \"root\"", hold); // released on another thread
    });
    sent.count_down();
    receiver.join();

    const auto trace = writtenTrace();
    const auto spans = eventsOf(trace, "X");
    ASSERT_EQ(spans.size(), 2u);
    std::map<std::string, nlohmann::json> byName;
    for (const auto& span : spans)
        byName[span.at("name")] = span;
    EXPECT_EQ(byName.at("send").at("tid"), GetCurrentThreadId());
    EXPECT_EQ(byName.at("handle").at("tid"), receiverId);
    EXPECT_GE(byName.at("handle").at("ts").get<double>(), byName.at("send").at("ts").get<double>());

    const auto starts = eventsOf(trace, "s");
    const auto ends = eventsOf(trace, "f");
    ASSERT_EQ(starts.size(), 1u);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(starts[0].at("id"), ends[0].at("id"));
    EXPECT_EQ(ends[0].at("bp"), "e");
    EXPECT_EQ(eventsOf(trace, "b").at(0).at("name"), "lock \"root\"");
    EXPECT_EQ(eventsOf(trace, "e").at(0).at("id"), hold);

    // Every thread that recorded is named by a metadata event.
    std::map<std::uint32_t, bool> named;
    for (const auto& meta : eventsOf(trace, "M"))
        named[meta.at("tid").get<std::uint32_t>()] = !meta.at("args").at("name").get<std::string>().empty();
    EXPECT_TRUE(named[GetCurrentThreadId()]);
    EXPECT_TRUE(named[receiverId]);
}

TEST_F(BxTraceRecorderTest, AFullRingKeepsTheNewestEventsAndSaysHowManyWent)
{
    BxTraceRecorder::Start(4);
    std::thread recorder([] {
        for (int i = 0; i < 10; ++i)
            BxTraceRecorder::Instant("test", "event " + std::to_string(i));
    });
    recorder.join(); // the ring outlives its thread
    EXPECT_EQ(BxTraceRecorder::GetDropped(), 6u);
    const auto trace = writtenTrace();
    std::vector<std::string> kept;
    bool noted = false;
    for (const auto& event : eventsOf(trace, "i"))
    {
        const std::string name = event.at("name");
        if (name.rfind("event ", 0) == 0)
            kept.push_back(name);
        noted = noted || name.find("6 older events dropped") != std::string::npos;
    }
    EXPECT_EQ(kept, (std::vector<std::string>{"event 6", "event 7", "event 8", "event 9"}));
    EXPECT_TRUE(noted);
    EXPECT_EQ(trace.at("otherData").at("droppedEvents"), "6");
}

TEST_F(BxTraceRecorderTest, NamesAreEscapedAndCutOnACharacterBoundary)
{
    BxTraceRecorder::Start();
    BxTraceRecorder::Instant("test", "tab\tquote\"back\\slash\x01");
    BxTraceRecorder::Instant("test", std::string(62, 'a') + "\xC3\xA9"); // é would straddle the cut
    BxTraceRecorder::Instant("test", std::wstring_view(L"Gr\u00FC\u00DFe"));
    const auto events = eventsOf(writtenTrace(), "i");
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0].at("name"), "tab\tquote\"back\\slash\x01");
    EXPECT_EQ(events[1].at("name"), std::string(62, 'a'));
    EXPECT_EQ(events[2].at("name"), "Gr\xC3\xBC\xC3\x9F" "e");
}

TEST_F(BxTraceRecorderTest, WritingWhileThreadsRecordLosesNothingWrittenBefore)
{
    BxTraceRecorder::Start();
    constexpr int kThreads = 4;
    constexpr int kEvents = 2000;
    std::latch started(kThreads + 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            started.arrive_and_wait();
            for (int i = 0; i < kEvents; ++i)
            {
                BxTraceScope span("test", "work");
            }
        });
    started.arrive_and_wait();
    const auto during = writtenTrace(); // recording pauses and resumes around the write
    for (auto& thread : threads)
        thread.join();
    EXPECT_LE(eventsOf(during, "X").size(), static_cast<std::size_t>(kThreads * kEvents));
    const auto after = writtenTrace();
    const std::size_t total = eventsOf(after, "X").size();
    EXPECT_LE(total, static_cast<std::size_t>(kThreads * kEvents));
    EXPECT_GE(total, eventsOf(during, "X").size());
}

TEST_F(BxTraceRecorderTest, AnUnwritableFileThrowsTheStreamException)
{
    BxTraceRecorder::Start();
    EXPECT_THROW(BxTraceRecorder::WriteFile("/nonexistent-folder/trace.json"), BxExceptionStream);
}
