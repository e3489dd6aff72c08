#include <vobase/objects/vonodethreadcounts.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

using Counts = VoNodeThreadCounts;
constexpr std::uint32_t c_inline = static_cast<std::uint32_t>(Counts::c_inlineEntries);

/// Every entry as thread -> (read, write), checking that no thread appears twice.
std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> entries(const Counts& counts)
{
    std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> all;
    counts.ForEach([&](std::uint32_t thread, const Counts::SReadWriteCount& c) {
        EXPECT_TRUE(all.emplace(thread, std::make_pair(c.readCount, c.writeCount)).second) << "thread " << thread;
    });
    return all;
}

}  // namespace

TEST(VoNodeThreadCounts, EntriesAreMadeOnFirstUseAndFoundAgain)
{
    Counts counts;
    EXPECT_EQ(counts.Find(7), nullptr);
    EXPECT_EQ(counts.Size(), 0u);

    ++counts.Get(7).readCount;
    counts.Get(9).writeCount += 2;
    ++counts.Get(7).readCount;
    ASSERT_NE(counts.Find(7), nullptr);
    EXPECT_EQ(counts.Find(7)->readCount, 2u);
    EXPECT_EQ(counts.Find(9)->writeCount, 2u);
    EXPECT_EQ(counts.Find(8), nullptr);
    EXPECT_EQ(counts.Size(), 2u);
    EXPECT_FALSE(counts.HasOverflow());
    const Counts& view = counts;
    EXPECT_EQ(view.Find(9), counts.Find(9));
}

TEST(VoNodeThreadCounts, ThreadsBeyondTheInlineSlotsOverflowIntoTheMapAndBack)
{
    Counts counts;
    const std::uint32_t threads = c_inline + 5;
    for (std::uint32_t t = 1; t <= threads; ++t)
        counts.Get(t).readCount = t;
    EXPECT_TRUE(counts.HasOverflow());
    EXPECT_EQ(counts.Size(), threads);
    const auto all = entries(counts);
    ASSERT_EQ(all.size(), threads);
    for (std::uint32_t t = 1; t <= threads; ++t)
        EXPECT_EQ(all.at(t), std::make_pair(t, 0u));

    // Overflow entries leave when they drop to zero; the map goes with the last one.
    for (std::uint32_t t = threads; t > c_inline; --t) {
        EXPECT_TRUE(counts.HasOverflow());
        Counts::SReadWriteCount* entry = counts.Find(t);
        ASSERT_NE(entry, nullptr);
        entry->readCount = 0;
        counts.Trim(t, *entry);
        EXPECT_EQ(counts.Find(t), nullptr);
    }
    EXPECT_FALSE(counts.HasOverflow());
    EXPECT_EQ(counts.Size(), c_inline);

    // An overflow entry that still counts stays.
    counts.Get(100).writeCount = 1;
    ASSERT_TRUE(counts.HasOverflow());
    counts.Trim(100, *counts.Find(100));
    EXPECT_EQ(counts.Find(100)->writeCount, 1u);
}

TEST(VoNodeThreadCounts, InlineSlotsAtZeroStayUntilAnotherThreadNeedsThem)
{
    Counts counts;
    for (std::uint32_t t = 1; t <= c_inline; ++t)
        counts.Get(t).readCount = 1;
    Counts::SReadWriteCount& second = *counts.Find(2);
    second.readCount = 0;
    counts.Trim(2, second);
    EXPECT_EQ(counts.Find(2), &second) << "an inline entry at zero is kept for the next lock";

    // A new thread takes the slot at zero instead of making the map.
    counts.Get(50).writeCount = 3;
    EXPECT_FALSE(counts.HasOverflow());
    EXPECT_EQ(counts.Find(2), nullptr);
    EXPECT_EQ(counts.Find(50)->writeCount, 3u);
    EXPECT_EQ(counts.Size(), c_inline);

    // A thread already in the map is found there, not given a free inline slot.
    counts.Get(60).readCount = 1;
    ASSERT_TRUE(counts.HasOverflow());
    counts.Find(1)->readCount = 0;
    ++counts.Get(60).readCount;
    EXPECT_EQ(entries(counts).at(60), std::make_pair(2u, 0u));
    EXPECT_EQ(counts.Size(), c_inline + 1);
}

TEST(VoNodeThreadCounts, ClearDropsInlineAndOverflowEntries)
{
    Counts counts;
    for (std::uint32_t t = 1; t <= c_inline + 2; ++t)
        counts.Get(t).readCount = 1;
    counts.Clear();
    EXPECT_EQ(counts.Size(), 0u);
    EXPECT_FALSE(counts.HasOverflow());
    for (std::uint32_t t = 1; t <= c_inline + 2; ++t)
        EXPECT_EQ(counts.Find(t), nullptr);
    EXPECT_EQ(counts.Get(3).readCount, 0u);
}
