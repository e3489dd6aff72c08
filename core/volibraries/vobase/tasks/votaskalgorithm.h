// A pool task that computes an algorithm.
//
//   CSmooth smooth;                                   // a VoAlgorithm
//   BxSmartPointer<VoTaskAlgorithm> task(new VoTaskAlgorithm(smooth));
//   BxThreadPool::GetInstance().AddTask(task, 1);
//   task->WaitUntilTerminate();
//   if (!task->GetResult())
//       report(smooth.GetException());                // why it failed
//
// run() returns what VoAlgorithm::Compute returns: false when the algorithm
// failed, whose failure stays readable through the algorithm's GetException.
// The algorithm must outlive the task.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/threading/bxtask.h>

class VoAlgorithm;

/// A pool task that computes an algorithm.
class VOBASE_API VoTaskAlgorithm : public BxTask
{
public:
    /// A task that computes `algorithm` when the pool runs it; the algorithm
    /// is not owned and must outlive the task.
    explicit VoTaskAlgorithm(VoAlgorithm& algorithm) noexcept : m_algorithm(&algorithm) {}
    /// A new task for the same algorithm (a task's run state is not copied).
    VoTaskAlgorithm(const VoTaskAlgorithm& other) noexcept : BxTask(), m_algorithm(other.m_algorithm) {}
    /// A new task for the same algorithm, as the copy (`other` keeps its algorithm).
    VoTaskAlgorithm(VoTaskAlgorithm&& other) noexcept : BxTask(), m_algorithm(other.m_algorithm) {}

    /// The algorithm the task computes.
    VoAlgorithm& GetAlgorithm() const noexcept { return *m_algorithm; }

protected:
    /// Computes the algorithm; false when it failed.
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override;

private:
    VoAlgorithm* m_algorithm; ///< not owned
};
