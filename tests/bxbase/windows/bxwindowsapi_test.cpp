#include <bxbase/threading/bxevent.h>
#include <bxbase/windows/bxmessageloop.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace
{
// What the test window procedure saw; one per window, reached via GWLP_USERDATA.
struct SLog
{
    std::vector<UINT> messages;
    std::vector<WPARAM> wParams;
    DWORD createThread = 0;
    std::wstring createName;
    LRESULT answerCreate = 0;
};

LRESULT testProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CREATE)
    {
        auto* create = reinterpret_cast<CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        auto* log = static_cast<SLog*>(create->lpCreateParams);
        log->createThread = GetCurrentThreadId();
        log->createName = create->lpszName ? create->lpszName : L"";
    }
    auto* log = reinterpret_cast<SLog*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (log == nullptr)
        return 0;
    log->messages.push_back(message);
    log->wParams.push_back(wParam);
    return message == WM_CREATE ? log->answerCreate : static_cast<LRESULT>(wParam) * 2;
}

const wchar_t* testClass()
{
    static const bool registered = [] {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = testProc;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"BxTestWindow";
        return RegisterClassExW(&wc) != 0;
    }();
    EXPECT_TRUE(registered);
    return L"BxTestWindow";
}

HWND createTestWindow(SLog& log, const wchar_t* name = L"test")
{
    return CreateWindowExW(0, testClass(), name, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                           HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr), &log);
}

// Takes out whatever is queued for the calling thread.
void drain()
{
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        if (msg.message == WM_QUIT)
            break;
}
} // namespace

TEST(BxWindowClass, RegisterLookUpAndUnregister)
{
    WNDCLASSEXW wc{};
    wc.cbSize = sizeof(wc);
    wc.lpfnWndProc = testProc;
    wc.lpszClassName = L"BxClassTest";
    EXPECT_EQ(sizeof(WNDCLASSEXW), 80u);
    ATOM atom = RegisterClassExW(&wc);
    EXPECT_NE(atom, 0);
    EXPECT_EQ(RegisterClassExW(&wc), 0);
    EXPECT_EQ(GetLastError(), ERROR_CLASS_ALREADY_EXISTS);

    WNDCLASSEXW found{};
    ASSERT_TRUE(GetClassInfoExW(GetModuleHandleW(nullptr), L"BxClassTest", &found));
    EXPECT_EQ(found.lpfnWndProc, &testProc);
    EXPECT_STREQ(found.lpszClassName, L"BxClassTest");
    EXPECT_FALSE(GetClassInfoExW(nullptr, L"NoSuchClass", &found));
    EXPECT_EQ(GetLastError(), ERROR_CLASS_DOES_NOT_EXIST);

    SLog log;
    HWND hwnd = CreateWindowExW(0, L"BxClassTest", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, &log);
    ASSERT_NE(hwnd, nullptr);
    EXPECT_FALSE(UnregisterClassW(L"BxClassTest", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_CLASS_HAS_WINDOWS);
    EXPECT_TRUE(DestroyWindow(hwnd));
    EXPECT_TRUE(UnregisterClassW(L"BxClassTest", nullptr));
    EXPECT_FALSE(GetClassInfoExW(nullptr, L"BxClassTest", &found));

    WNDCLASSEXW bad = wc;
    bad.lpfnWndProc = nullptr;
    EXPECT_EQ(RegisterClassExW(&bad), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    bad = wc;
    bad.cbSize = 12;
    EXPECT_EQ(RegisterClassExW(&bad), 0);
    EXPECT_EQ(CreateWindowExW(0, L"NoSuchClass", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
}

TEST(BxWindow, CreationAndDestructionAreDeliveredSynchronously)
{
    SLog log;
    HWND hwnd = createTestWindow(log, L"Dispatcher");
    ASSERT_NE(hwnd, nullptr);
    EXPECT_TRUE(IsWindow(hwnd));
    EXPECT_EQ(log.messages, (std::vector<UINT>{WM_CREATE}));
    EXPECT_EQ(log.createThread, GetCurrentThreadId());
    EXPECT_EQ(log.createName, L"Dispatcher");
    DWORD pid = 0;
    EXPECT_EQ(GetWindowThreadProcessId(hwnd, &pid), GetCurrentThreadId());
    EXPECT_NE(pid, 0u);
    EXPECT_EQ(SendMessageW(hwnd, WM_USER, 21, 0), 42); // the procedure answers wParam * 2

    EXPECT_TRUE(DestroyWindow(hwnd));
    EXPECT_EQ(log.messages, (std::vector<UINT>{WM_CREATE, WM_USER, WM_DESTROY}));
    EXPECT_FALSE(IsWindow(hwnd));
    EXPECT_FALSE(DestroyWindow(hwnd));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_FALSE(PostMessageW(hwnd, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(GetWindowLongPtrW(hwnd, GWLP_USERDATA), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);

    // A new window may take the same slot, but the old handle stays dead.
    SLog second;
    HWND again = createTestWindow(second);
    EXPECT_NE(again, hwnd);
    EXPECT_FALSE(IsWindow(hwnd));
    EXPECT_TRUE(DestroyWindow(again));
}

TEST(BxWindow, RefusedCreationGivesNoWindow)
{
    SLog log;
    log.answerCreate = -1;
    EXPECT_EQ(createTestWindow(log), nullptr);
    EXPECT_EQ(log.messages, (std::vector<UINT>{WM_CREATE, WM_DESTROY}));
}

TEST(BxWindow, UserDataAndIndexes)
{
    SLog log;
    HWND hwnd = createTestWindow(log);
    EXPECT_EQ(SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0), reinterpret_cast<LONG_PTR>(&log));
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(GetWindowLongPtrW(hwnd, GWLP_USERDATA), 0);
    EXPECT_EQ(GetWindowLongPtrW(hwnd, GWLP_WNDPROC), reinterpret_cast<LONG_PTR>(&testProc));
    EXPECT_EQ(SetWindowLongPtrW(hwnd, 12345, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_INDEX);
    EXPECT_TRUE(DestroyWindow(hwnd)); // user data cleared: WM_DESTROY is not logged
    EXPECT_EQ(log.messages, (std::vector<UINT>{WM_CREATE}));
}

TEST(BxMessageQueue, PeekFiltersByWindowRangeAndRemoveFlag)
{
    SLog logA, logB;
    HWND a = createTestWindow(logA);
    HWND b = createTestWindow(logB);
    ASSERT_TRUE(PostMessageW(a, WM_USER + 1, 1, 0));
    ASSERT_TRUE(PostMessageW(b, 0xB001, 2, 0));
    ASSERT_TRUE(PostMessageW(a, 0xB001, 3, 0));
    ASSERT_TRUE(PostMessageW(nullptr, WM_APP, 4, 0)); // a thread message

    MSG msg{};
    // Window b, any number: its one message, left in place.
    ASSERT_TRUE(PeekMessageW(&msg, b, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.wParam, 2u);
    ASSERT_TRUE(PeekMessageW(&msg, b, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.wParam, 2u);
    // Window a, range 0xB001..0xB001: skips the earlier WM_USER + 1.
    ASSERT_TRUE(PeekMessageW(&msg, a, 0xB001, 0xB001, PM_REMOVE));
    EXPECT_EQ(msg.hwnd, a);
    EXPECT_EQ(msg.wParam, 3u);
    EXPECT_FALSE(PeekMessageW(&msg, a, 0xB001, 0xB001, PM_REMOVE));
    // Thread messages only.
    ASSERT_TRUE(PeekMessageW(&msg, reinterpret_cast<HWND>(-1), 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.hwnd, nullptr);
    EXPECT_EQ(msg.wParam, 4u);
    // Everything else in FIFO order.
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 1u);
    EXPECT_EQ(DispatchMessageW(&msg), 2);
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 2u);
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));

    // WM_QUIT matches any filter once nothing else matches, and stays until removed.
    PostMessageW(a, WM_USER, 5, 0);
    PostQuitMessage(7);
    ASSERT_TRUE(PeekMessageW(&msg, b, 0xB001, 0xB001, PM_NOREMOVE));
    EXPECT_EQ(msg.message, WM_QUIT);
    EXPECT_EQ(msg.wParam, 7u);
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, static_cast<UINT>(WM_USER));
    EXPECT_EQ(GetMessageW(&msg, nullptr, 0, 0), 0);
    EXPECT_EQ(msg.wParam, 7u);
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE));

    // Destroying a window drops what is queued for it.
    PostMessageW(a, WM_USER, 6, 0);
    PostMessageW(b, WM_USER, 7, 0);
    DestroyWindow(a);
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.wParam, 7u);
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
    DestroyWindow(b);

    EXPECT_EQ(GetMessageW(nullptr, nullptr, 0, 0), -1);
    EXPECT_EQ(GetMessageW(&msg, a, 0, 0), -1); // a is gone
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST(BxMessageQueue, PostsFromOtherThreadsArriveInOrder)
{
    SLog log;
    HWND hwnd = createTestWindow(log);
    constexpr int kCount = 5000;
    std::thread poster([hwnd] {
        for (int i = 0; i < kCount; ++i)
            ASSERT_TRUE(PostMessageW(hwnd, WM_USER, static_cast<WPARAM>(i), 0));
        PostMessageW(hwnd, WM_QUIT, 0, 0); // a posted quit ends GetMessageW in its turn
    });
    MSG msg;
    int expected = 0;
    while (GetMessageW(&msg, nullptr, 0, 0) > 0)
    {
        EXPECT_EQ(msg.hwnd, hwnd);
        EXPECT_EQ(msg.wParam, static_cast<WPARAM>(expected++));
        DispatchMessageW(&msg);
    }
    poster.join();
    EXPECT_EQ(expected, kCount);
    EXPECT_EQ(log.messages.size(), kCount + 1u);
    DestroyWindow(hwnd);
}

TEST(BxMessageQueue, MisuseAcrossThreadsHasDefinedOutcomes)
{
    SLog log;
    HWND mine = createTestWindow(log);
    HWND theirs = nullptr;
    SLog theirLog;
    BxEvent created, release;
    std::thread owner([&] {
        theirs = createTestWindow(theirLog);
        created.Set();
        release.Wait();
    });
    created.Wait();

    // Another thread's window: no destroying, no sending, no filtering on it.
    EXPECT_FALSE(DestroyWindow(theirs));
    EXPECT_EQ(GetLastError(), ERROR_WINDOW_OF_OTHER_THREAD);
    EXPECT_EQ(SendMessageW(theirs, WM_USER, 1, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_WINDOW_OF_OTHER_THREAD);
    MSG msg;
    EXPECT_EQ(GetMessageW(&msg, theirs, 0, 0), -1);
    EXPECT_TRUE(PostMessageW(theirs, WM_USER, 2, 0));
    std::thread destroyer([&] { EXPECT_FALSE(DestroyWindow(mine)); });
    destroyer.join();
    EXPECT_TRUE(IsWindow(mine));

    // The owner ends without destroying its window: the window goes with it.
    release.Set();
    owner.join();
    EXPECT_FALSE(IsWindow(theirs));
    EXPECT_FALSE(PostMessageW(theirs, WM_USER, 3, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(theirLog.messages, (std::vector<UINT>{WM_CREATE})); // no WM_DESTROY at thread end
    DestroyWindow(mine);
}

TEST(BxMessageQueue, PostingRacesSafelyWithDestruction)
{
    SLog log;
    HWND hwnd = createTestWindow(log);
    std::atomic<int> accepted{0}, refused{0};
    BxEvent go, landed;
    std::vector<std::thread> posters;
    for (int t = 0; t < 3; ++t)
        posters.emplace_back([&, landed]() mutable {
            go.Wait();
            for (int i = 0; i < 2000; ++i)
            {
                if (PostMessageW(hwnd, WM_USER, 1, 0))
                {
                    ++accepted;
                    landed.Set(); // some posts land before the window goes
                }
                else
                    ++refused;
            }
        });
    go.Set();
    landed.Wait();
    DestroyWindow(hwnd);
    for (auto& t : posters)
        t.join();
    EXPECT_EQ(accepted + refused, 6000);
    EXPECT_GT(accepted, 0);
    // Whatever was accepted before the destruction was dropped with the window.
    MSG msg;
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE));
}

TEST(BxMessageLoop, RunDispatchesUntilQuit)
{
    SLog log;
    HWND hwnd = nullptr;
    BxEvent created;
    int exitCode = 0;
    std::thread thread([&] {
        hwnd = createTestWindow(log);
        created.Set();
        exitCode = BxMessageLoop::Run();
        DestroyWindow(hwnd);
    });
    created.Wait();
    for (WPARAM i = 1; i <= 3; ++i)
        PostMessageW(hwnd, WM_USER, i, 0);
    PostMessageW(hwnd, WM_QUIT, 9, 0);
    thread.join();
    EXPECT_EQ(exitCode, 9);
    EXPECT_EQ(log.wParams, (std::vector<WPARAM>{0, 1, 2, 3, 0})); // create, three posts, destroy
}

TEST(BxMessageLoop, ProcessPendingHandlesWhatIsQueuedAndStopsAtQuit)
{
    SLog log;
    HWND hwnd = createTestWindow(log);
    EXPECT_EQ(BxMessageLoop::ProcessPending(0), 0u); // nothing queued, no wait
    EXPECT_EQ(BxMessageLoop::ProcessPending(10), 0u); // waits 10 ms in vain

    PostMessageW(hwnd, WM_USER, 1, 0);
    PostMessageW(hwnd, WM_USER, 2, 0);
    EXPECT_EQ(BxMessageLoop::ProcessPending(0), 2u);

    // A message from another thread ends the wait.
    std::thread poster([hwnd] { PostMessageW(hwnd, WM_USER, 3, 0); });
    EXPECT_EQ(BxMessageLoop::ProcessPending(INFINITE), 1u);
    poster.join();

    PostMessageW(hwnd, WM_USER, 4, 0);
    PostQuitMessage(3);
    PostMessageW(hwnd, WM_USER, 5, 0);
    EXPECT_EQ(BxMessageLoop::ProcessPending(0), 2u); // the quit flag waits for the queue to empty
    EXPECT_TRUE(BxMessageLoop::IsQuitPending());
    EXPECT_EQ(BxMessageLoop::ProcessPending(0), 0u);
    EXPECT_EQ(BxMessageLoop::Run(), 3); // the quit is still there for the loop
    EXPECT_FALSE(BxMessageLoop::IsQuitPending());
    EXPECT_EQ(log.wParams, (std::vector<WPARAM>{0, 1, 2, 3, 4, 5}));
    DestroyWindow(hwnd);
    drain();
}
