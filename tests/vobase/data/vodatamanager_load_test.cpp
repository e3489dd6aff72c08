// Deadlock freedom and reader/writer exclusion of the data manager under load:
// several threads take random sets of read and write handles over one tree,
// with short time-outs, and check every grant against their own per-node
// holder counts. With more threads than a node keeps inline, the per-thread
// counts spill into their overflow maps and back while the load runs; 64
// readers holding one node at once fill the map and empty it again.
#include "../objects/vonodetestaccess.h"

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/threading/bxevent.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <latch>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int c_rounds = 3000;  // sanitizers slow every lock down ten times and more
#else
constexpr int c_rounds = 10000;
#endif
constexpr int c_threads = 4;
/// More threads than the inline entries of a node's thread counts.
constexpr int c_manyThreads = 2 * static_cast<int>(VoNodeThreadCounts::c_inlineEntries);
constexpr int c_nodes = 200;
constexpr DWORD c_watchdogMs = 10 * 60 * 1000;

/// The tree under test: node 0 is the root, every other node hangs below a
/// random earlier one. subtree[i] lists i and all its descendants.
struct CLoadTree
{
    VoDataManager manager;
    std::vector<BxSmartPointer<VoNode>> nodes;
    std::vector<std::vector<int>> subtree;

    CLoadTree()
    {
        std::mt19937 random(20261123);
        std::vector<int> parent(c_nodes, -1);
        nodes.push_back(manager.GetRootNode());
        for (int i = 1; i < c_nodes; ++i) {
            parent[i] = std::uniform_int_distribution<int>(0, i - 1)(random);
            nodes.emplace_back(new VoNode((L"n" + std::to_wstring(i)).c_str(), true, VoNode::eTMM_Track));
            EXPECT_TRUE(manager.InsertNode(nodes[parent[i]], nodes[i]));
        }
        subtree.resize(c_nodes);
        for (int i = 0; i < c_nodes; ++i)
            for (int n = i; n >= 0; n = parent[n])
                subtree[n].push_back(i);
    }
};

/// Per-node counts of the threads that hold the node, kept by the test itself.
struct CHolders
{
    std::array<std::atomic<int>, c_nodes> readers{};
    std::array<std::atomic<int>, c_nodes> writers{};
    std::atomic<int> violations{0};
};

struct SRequest
{
    int node;
    bool write;
};

/// What one set of granted handles covers: per node nothing (0), read (1) or write (2).
class CCoverage
{
public:
    void Add(const CLoadTree& tree, const SRequest& request)
    {
        for (int n : tree.subtree[request.node]) {
            if (m_mode[n] == 0)
                m_touched.push_back(n);
            m_mode[n] = std::max<int>(m_mode[n], request.write ? 2 : 1);
        }
    }

    /// Enters the holder counts and checks exclusion (sequentially consistent:
    /// of two conflicting holders at least one sees the other).
    void Enter(CHolders& holders) const
    {
        for (int n : m_touched) {
            if (m_mode[n] == 2) {
                const int writers = ++holders.writers[n];
                if (writers != 1 || holders.readers[n].load() != 0)
                    ++holders.violations;
            } else {
                ++holders.readers[n];
                if (holders.writers[n].load() != 0)
                    ++holders.violations;
            }
        }
    }

    void Leave(CHolders& holders)
    {
        for (int n : m_touched) {
            if (m_mode[n] == 2)
                --holders.writers[n];
            else
                --holders.readers[n];
            m_mode[n] = 0;
        }
        m_touched.clear();
    }

private:
    std::array<std::uint8_t, c_nodes> m_mode{};
    std::vector<int> m_touched;
};

struct SThreadResult
{
    int granted = 0;
    int refused = 0;
    int reentries = 0;
    bool lockingAtEnd = true;
};

void runLoad(CLoadTree& tree, CHolders& holders, unsigned seed, int rounds, SThreadResult& result)
{
    std::mt19937 random(seed);
    auto chance = [&](int percent) { return std::uniform_int_distribution<int>(0, 99)(random) < percent; };
    auto any = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
    CCoverage coverage;
    std::vector<SRequest> requests;
    std::vector<std::unique_ptr<VoDataHandleBase>> handles;

    for (int round = 0; round < rounds; ++round) {
        requests.clear();
        const int count = 1 + any(3);
        for (int k = 0; k < count; ++k)
            requests.push_back({chance(3) ? 0 : any(c_nodes), chance(35)});
        for (const SRequest& request : requests) {
            if (request.write)
                handles.push_back(std::make_unique<VoDataHandleLockOnly<1>>(tree.manager, tree.nodes[request.node]));
            else
                handles.push_back(std::make_unique<VoDataHandleLockOnly<0>>(tree.manager, tree.nodes[request.node]));
        }
        VoDataManager::ELockStatus status;
        if (tree.manager.TryLockAndWait(static_cast<unsigned>(any(4)), status)) {
            ++result.granted;
            for (const SRequest& request : requests)
                coverage.Add(tree, request);
            coverage.Enter(holders);
            for (const auto& handle : handles)
                if (!handle->IsAccessGranted())
                    ++holders.violations;
            if (chance(20)) {
                // Re-entry: a read below a held node is granted at once.
                const SRequest& held = requests.front();
                const auto& below = tree.subtree[held.node];
                VoDataHandleLockOnly<0> reentry(tree.manager, tree.nodes[below[any(int(below.size()))]]);
                if (!reentry.IsAccessGranted())
                    ++holders.violations;
                ++result.reentries;
            }
            std::this_thread::yield();
            coverage.Leave(holders);
        } else {
            ++result.refused;
            if (status != VoDataManager::eLS_Busy && status != VoDataManager::eLS_Timeout)
                ++holders.violations;
        }
        handles.clear();
    }
    result.lockingAtEnd = tree.manager.IsCurrentThreadLocking();
}

/// Runs `threads` threads of `rounds` random lock sets each over one tree and
/// checks exclusion, progress and that no lock is left behind.
void checkLoad(int threads, int rounds)
{
    CLoadTree tree;
    CHolders holders;
    std::vector<SThreadResult> results(threads);
    std::atomic<int> running{threads};
    BxEvent allDone;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&, t] {
            runLoad(tree, holders, 1000u + unsigned(t), rounds, results[t]);
            if (--running == 0)
                allDone.Set();
        });
    if (!allDone.Wait(c_watchdogMs)) {
        BxStreamWriteASCIIStringT<CStringW> text;
        tree.manager.dump(text);
        std::wcerr << L"load test hangs; current state:" << text.GetString() << std::endl;
        std::abort();
    }
    for (std::thread& worker : workers)
        worker.join();

    EXPECT_EQ(holders.violations.load(), 0);
    int refused = 0;
    for (const SThreadResult& result : results) {
        refused += result.refused;
        EXPECT_EQ(result.granted + result.refused, rounds);
        EXPECT_GT(result.granted, rounds / 4);
        EXPECT_FALSE(result.lockingAtEnd);
    }
    ::testing::Test::RecordProperty("refused", refused);
    BxStreamWriteASCIIStringT<CStringW> text;
    tree.manager.dump(text);
    const std::wstring dump = text.GetString();
    const std::wstring header = L"Current data locks:\n";
    const std::size_t locks = dump.find(header) + header.size();
    EXPECT_EQ(dump.substr(locks, 68), std::wstring(68, L'-')) << "locks left behind";
    for (const BxSmartPointer<VoNode>& node : tree.nodes)
        EXPECT_FALSE(VoNodeTestAccess::HasOverflow(node)) << "an overflow map outlived its entries";
}

}  // namespace

TEST(VoDataManagerLoad, RandomHandleSetsNeverDeadlockAndRespectExclusion)
{
    checkLoad(c_threads, c_rounds);
}

TEST(VoDataManagerLoad, MoreThreadsThanInlineCountsKeepExclusion)
{
    checkLoad(c_manyThreads, c_rounds / 4);
}

TEST(VoDataManagerLoad, SixtyFourReadersHoldOneNodeAtOnce)
{
    constexpr int readers = 64;
    VoDataManager manager;
    const BxSmartPointer<VoNode> shared(new VoNode(L"shared", true, VoNode::eTMM_Track));
    const BxSmartPointer<VoNode> leaf(new VoNode(L"leaf", true, VoNode::eTMM_Track));
    ASSERT_TRUE(manager.InsertNode(manager.GetRootNode(), shared));
    ASSERT_TRUE(manager.InsertNode(shared, leaf));

    std::latch holding(readers + 1), release(1), released(readers + 1);
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int k = 0; k < readers; ++k)
        threads.emplace_back([&] {
            {
                VoDataHandleLockOnly<0> read(manager, shared);
                VoDataManager::ELockStatus status;
                if (!manager.TryLockAndWait(INFINITE, status) || status != VoDataManager::eLS_Granted)
                    ++refused;
                holding.count_down();
                release.wait();
            }
            released.count_down();
        });

    holding.arrive_and_wait();
    EXPECT_EQ(refused.load(), 0);
    for (const BxSmartPointer<VoNode>& node : {shared, leaf}) {
        EXPECT_EQ(VoNodeTestAccess::TotalRead(node), unsigned(readers));
        EXPECT_EQ(VoNodeTestAccess::EntryCount(node), std::size_t(readers));
        EXPECT_TRUE(VoNodeTestAccess::HasOverflow(node));
    }
    {
        BxStreamWriteASCIIStringT<CStringW> text;
        manager.dump(text);
        const std::wstring dump = text.GetString();
        std::size_t entries = 0;
        for (std::size_t at = dump.find(L": r(1)/w(0)]"); at != std::wstring::npos;
             at = dump.find(L": r(1)/w(0)]", at + 1))
            ++entries;
        EXPECT_EQ(entries, std::size_t(2 * readers)) << "one entry per reader on both nodes";
    }
    {
        VoDataHandleLockOnly<1> write(manager, leaf);
        VoDataManager::ELockStatus status;
        EXPECT_FALSE(manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_Busy);
    }

    release.count_down();
    released.arrive_and_wait();
    for (const BxSmartPointer<VoNode>& node : {shared, leaf}) {
        EXPECT_FALSE(VoNodeTestAccess::IsLocked(node));
        EXPECT_FALSE(VoNodeTestAccess::HasOverflow(node));
        EXPECT_TRUE(VoNodeTestAccess::UnlockedEvent(node).IsSet());
    }
    {
        VoDataHandleLockOnly<1> write(manager, shared);
        VoDataManager::ELockStatus status;
        EXPECT_TRUE(manager.TryLockAndWait(0, status));
        EXPECT_EQ(status, VoDataManager::eLS_Granted);
    }
    for (std::thread& thread : threads)
        thread.join();
}
