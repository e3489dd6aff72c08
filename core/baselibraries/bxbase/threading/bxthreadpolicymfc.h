// The thread policy of BxThread: calls made on the new thread before and
// after its thread function. This policy (named after the framework the
// library came from, where it set up the per-thread state) needs no per-thread
// set-up on this platform; a policy with other needs supplies the same two
// static members.
//
//   class CWorker : public BxThread<CWorker, BxThreadPolicyMFC> { ... };
#pragma once

/// The thread policy of BxThread: calls made on the new thread before and after its thread function.
struct BxThreadPolicyMFC
{
    /// Called on the new thread before its thread function.
    static void OnThreadEnter() {}
    /// Called on the thread after its thread function returned (or threw).
    static void OnThreadLeave() {}
};
