// The message queue's two parts: what the owner has taken over (its batch)
// and what posters appended since. Each test mixes both, so that order,
// filters, window destruction and wake-ups are checked across the seam.
#include <bxbase/threading/bxevent.h>
#include <bxbase/windows/bxmessagequeue.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace
{
LRESULT silentProc(HWND, UINT, WPARAM, LPARAM)
{
    return 0;
}

HWND createSilentWindow()
{
    static const bool registered = [] {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = silentProc;
        wc.lpszClassName = L"BxQueueTestWindow";
        return RegisterClassExW(&wc) != 0;
    }();
    EXPECT_TRUE(registered);
    return CreateWindowExW(0, L"BxQueueTestWindow", L"", 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                           HWND_MESSAGE, nullptr, nullptr, nullptr);
}

// Takes everything queued (removing), up to a quit, and returns the wParams.
std::vector<WPARAM> takeAll()
{
    std::vector<WPARAM> taken;
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE) && msg.message != WM_QUIT)
        taken.push_back(msg.wParam);
    return taken;
}
} // namespace

TEST(BxMessageQueueBatch, FilteredTakesAndNewArrivalsKeepOneOrder)
{
    HWND a = createSilentWindow();
    HWND b = createSilentWindow();
    for (WPARAM i = 1; i <= 4; ++i)
        ASSERT_TRUE(PostMessageW(i % 2 ? a : b, WM_USER + static_cast<UINT>(i), i, 0));
    MSG msg{};
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE)); // the owner takes 1..4 over
    EXPECT_EQ(msg.wParam, 1u);
    BxMessageQueue& queue = BxMessageQueue::ForCurrentThread();
    EXPECT_EQ(queue.GetCount(), 4u);

    ASSERT_TRUE(PostMessageW(a, WM_USER + 5, 5, 0)); // arrives behind the batch
    ASSERT_TRUE(PostMessageW(b, WM_USER + 6, 6, 0));
    EXPECT_EQ(queue.GetCount(), 6u);

    // From the middle of the batch, then from the new arrivals past the batch's rest.
    ASSERT_TRUE(PeekMessageW(&msg, a, WM_USER + 3, WM_USER + 3, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 3u);
    ASSERT_TRUE(PeekMessageW(&msg, b, WM_USER + 6, WM_USER + 6, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 6u);
    EXPECT_FALSE(PeekMessageW(&msg, b, WM_USER + 6, WM_USER + 6, PM_NOREMOVE));
    ASSERT_TRUE(PostMessageW(a, WM_USER + 7, 7, 0));
    EXPECT_EQ(queue.GetCount(), 5u);

    // The quit flag waits until the rest, old and new, is taken (takeAll stops at the quit).
    PostQuitMessage(0);
    EXPECT_EQ(takeAll(), (std::vector<WPARAM>{1, 2, 4, 5, 7}));
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE)); // the quit was taken too
    EXPECT_EQ(queue.GetCount(), 0u);
    DestroyWindow(a);
    DestroyWindow(b);
}

TEST(BxMessageQueueBatch, DestroyingAWindowDropsItsMessagesFromBothParts)
{
    HWND a = createSilentWindow();
    HWND b = createSilentWindow();
    for (WPARAM i = 1; i <= 4; ++i)
        ASSERT_TRUE(PostMessageW(i % 2 ? a : b, WM_USER, i, 0));
    MSG msg{};
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)); // 1 taken, 2..4 in the batch
    EXPECT_EQ(msg.wParam, 1u);
    ASSERT_TRUE(PostMessageW(a, WM_USER, 5, 0));
    ASSERT_TRUE(PostMessageW(b, WM_USER, 6, 0));
    ASSERT_TRUE(DestroyWindow(a));
    EXPECT_FALSE(PostMessageW(a, WM_USER, 7, 0));
    EXPECT_EQ(takeAll(), (std::vector<WPARAM>{2, 4, 6}));
    DestroyWindow(b);
}

TEST(BxMessageQueueBatch, TimeStampsNeverGoBack)
{
    HWND a = createSilentWindow();
    MSG msg{};
    DWORD last = 0;
    for (int round = 0; round < 3; ++round)
    {
        for (WPARAM i = 0; i < 3; ++i)
            ASSERT_TRUE(PostMessageW(a, WM_USER, i, 0));
        for (int i = 0; i < 3; ++i)
        {
            ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
            EXPECT_GE(msg.time, last);
            EXPECT_NE(msg.time, 0u);
            last = msg.time;
        }
    }
    DestroyWindow(a);
}

// Posters race with an owner that keeps running dry and sleeping: no message
// may be lost, doubled or reordered per poster, and no wake-up may be lost
// (a lost one hangs GetMessageW, and the test with it).
TEST(BxMessageQueueBatch, ManyPostersAndASleepingOwner)
{
#if defined(__SANITIZE_THREAD__)
    constexpr int kPerPoster = 5000;
#else
    constexpr int kPerPoster = 50000;
#endif
    constexpr int kPosters = 4;
    HWND hwnd = createSilentWindow();
    std::vector<std::thread> posters;
    for (int p = 0; p < kPosters; ++p)
        posters.emplace_back([hwnd, p] {
            for (int i = 0; i < kPerPoster; ++i)
                ASSERT_TRUE(PostMessageW(hwnd, WM_USER, static_cast<WPARAM>(p), i));
        });
    std::array<LPARAM, kPosters> next{};
    int received = 0, outOfOrder = 0;
    MSG msg;
    while (received < kPosters * kPerPoster && GetMessageW(&msg, nullptr, 0, 0) > 0)
    {
        const auto p = static_cast<std::size_t>(msg.wParam);
        ASSERT_LT(p, next.size());
        if (msg.lParam != next[p])
            ++outOfOrder;
        next[p] = msg.lParam + 1;
        ++received;
        // Now and then look for a message that is not there: the owner takes
        // everything over and searches it, without disturbing the order.
        if (received % 1000 == 0)
            EXPECT_FALSE(PeekMessageW(&msg, hwnd, WM_APP, WM_APP, PM_REMOVE));
    }
    for (auto& poster : posters)
        poster.join();
    EXPECT_EQ(outOfOrder, 0);
    for (LPARAM count : next)
        EXPECT_EQ(count, kPerPoster);
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    DestroyWindow(hwnd);
}
