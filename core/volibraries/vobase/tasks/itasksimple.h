// The unit of work of the simple work queues (VoTaskManagerPooling,
// VoTaskManagerSequential): reference counted, not copyable, one run
// operation whose result is ignored.
//
//   class CSave : public ITaskSimple {
//   public:
//       bool Run() override { save(); return true; }
//       BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }
//   private:
//       mutable BxReferenceCounter<unsigned int> m_counter;
//   };
//   queue.AddTask(BxSmartPointer<ITaskSimple>(new CSave));
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/inoncopyable.h>
#include <bxbase/ireferencecounted.h>

/// The unit of work of the simple work queues (VoTaskManagerPooling, VoTaskManagerSequential): reference counted,
/// not copyable, one run operation whose result is ignored.
class VOBASE_API ITaskSimple : public IReferenceCounted, private INonCopyable
{
public:
    ~ITaskSimple() override = default;

    /// The work; the queues ignore the result and swallow exceptions.
    virtual bool Run() = 0;
};
