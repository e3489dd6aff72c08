// Something that can be run once on whichever thread receives it; carried to
// a handler's thread by VoMessageRunnable.
//
//   class CRefresh : public IRunnable {
//       BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_count; }
//       void Run() override { view.Refresh(); }
//       mutable BxReferenceCounter<unsigned int> m_count;
//   };
//   VoMessageDispatcher::PostMessageW(new VoMessageRunnable(new CRefresh));
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/ireferencecounted.h>

/// Something that can be run once on whichever thread receives it; carried to a handler's thread by
/// VoMessageRunnable.
class VOBASE_API IRunnable : public IReferenceCounted
{
public:
    /// Does the work, on the calling thread.
    virtual void Run() = 0;
};
