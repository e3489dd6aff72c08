#include "vonodetestaccess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

using Access = VoNodeTestAccess;
using Node = BxSmartPointer<VoNode>;

namespace {

constexpr int c_threads = 4;

// A root with `width` children, each with `width` children.
std::vector<Node> makeTree(int width)
{
    std::vector<Node> nodes{Node(new VoNode(L"root", true, VoNode::eTMM_Track))};
    for (int i = 0; i < width; ++i) {
        Node child(new VoNode(L"c", true, VoNode::eTMM_Track));
        Access::Link(nodes[0], child);
        nodes.push_back(child);
        for (int j = 0; j < width; ++j) {
            Node grandchild(new VoNode(L"g", true, VoNode::eTMM_Track));
            Access::Link(child, grandchild);
            nodes.push_back(grandchild);
        }
    }
    return nodes;
}

}  // namespace

TEST(VoNodeConcurrency, CountersFromSeveralThreadsAddUp)
{
    const std::vector<Node> nodes = makeTree(3);
    const Node& root = nodes[0];
    constexpr int rounds = 200;
    std::vector<unsigned> ids(c_threads);
    std::latch start(c_threads), incremented(c_threads + 1), decrement(1);
    std::vector<std::thread> threads;
    for (int k = 0; k < c_threads; ++k) {
        threads.emplace_back([&, k] {
            ids[k] = Access::ThisThread();
            start.arrive_and_wait();
            for (int r = 0; r < rounds; ++r) {
                Access::IncrementRead(root, ids[k]);
                Access::IncrementWrite(nodes[1 + k % 3], ids[k]);
                Access::DecrementWrite(nodes[1 + k % 3], ids[k]);
            }
            incremented.count_down();
            decrement.wait();
            for (int r = 0; r < rounds; ++r)
                Access::DecrementRead(root, ids[k]);
        });
    }
    incremented.arrive_and_wait();
    for (const Node& n : nodes) {
        EXPECT_EQ(Access::TotalRead(n), std::uint32_t(c_threads * rounds));
        EXPECT_EQ(Access::TotalWrite(n), 0u);
        for (unsigned id : ids)
            EXPECT_EQ(Access::Entry(n, id).readCount, std::uint32_t(rounds));
    }
    // Nodes that were also write-locked had their event set when the writes
    // reached 0; the root only ever counted reads.
    EXPECT_FALSE(Access::UnlockedEvent(root).IsSet());
    decrement.count_down();
    for (std::thread& t : threads)
        t.join();
    for (const Node& n : nodes) {
        EXPECT_EQ(Access::TotalRead(n), 0u);
        EXPECT_TRUE(Access::UnlockedEvent(n).IsSet());
    }
    Access::Release(root);
}

TEST(VoNodeConcurrency, UnlockedEventReleasesAWaiterOnAnotherThread)
{
    const std::vector<Node> nodes = makeTree(2);
    const Node& root = nodes[0];
    const Node& leaf = nodes.back();
    std::latch locked(1);
    std::atomic<bool> unlocked{false};
    std::thread writer([&] {
        const unsigned me = Access::ThisThread();
        Access::IncrementWrite(root, me);
        locked.count_down();
        unlocked.store(true);
        Access::DecrementWrite(root, me);
    });
    locked.wait();
    // The leaf was locked with the root; its event opens when the writer is done.
    EXPECT_TRUE(Access::UnlockedEvent(leaf).Wait(INFINITE));
    EXPECT_TRUE(unlocked.load());
    writer.join();
    EXPECT_FALSE(Access::IsLocked(leaf));
    Access::Release(root);
}

TEST(VoNodeConcurrency, ParentLinkReadersSeeOneOfTheParents)
{
    const Node first(new VoNode(L"first", true, VoNode::eTMM_Track));
    const Node second(new VoNode(L"second", true, VoNode::eTMM_Track));
    const Node moving(new VoNode(L"moving", true, VoNode::eTMM_Track));
    Access::SetParent(moving, first);
    std::atomic<bool> stop{false};
    std::latch ready(3);
    std::thread mover([&] {
        ready.arrive_and_wait();
        for (int i = 0; i < 2000; ++i)
            Access::SetParent(moving, (i % 2) ? first : second);
        Access::SetParent(moving, nullptr);
        stop.store(true);
    });
    std::vector<std::thread> readers;
    std::atomic<int> wrong{0};
    for (int k = 0; k < 2; ++k) {
        readers.emplace_back([&] {
            ready.arrive_and_wait();
            while (!stop.load()) {
                const Node parent = moving->GetParent();
                if (parent && parent != first && parent != second)
                    ++wrong;
                if (moving->IsDescendantOf(moving))
                    ++wrong;
            }
        });
    }
    mover.join();
    for (std::thread& t : readers)
        t.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_EQ(moving->GetParent(), nullptr);
    EXPECT_EQ(first->getReferenceCounter().Get(), 1u);
    EXPECT_EQ(second->getReferenceCounter().Get(), 1u);
}

TEST(VoNodeConcurrency, ReadersTraverseWhileOthersCount)
{
    const std::vector<Node> nodes = makeTree(4);
    const Node& root = nodes[0];
    std::latch start(c_threads);
    std::atomic<int> visited{0};
    std::vector<std::thread> threads;
    for (int k = 0; k < c_threads; ++k) {
        threads.emplace_back([&, k] {
            start.arrive_and_wait();
            for (int r = 0; r < 50; ++r) {
                if (k % 2) {
                    Access::IncrementRead(root, Access::ThisThread());
                    Access::DecrementRead(root, Access::ThisThread());
                } else {
                    root->ApplyRecursive([&](BxSmartPointer<VoNode>) { ++visited; });
                    (void)root->IsModified(true);
                }
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(visited.load(), 2 * 50 * int(nodes.size()));
    for (const Node& n : nodes)
        EXPECT_FALSE(Access::IsLocked(n));
    Access::Release(root);
}
