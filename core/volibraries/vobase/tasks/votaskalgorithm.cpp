#include <vobase/tasks/votaskalgorithm.h>

#include <vobase/algorithms/voalgorithm.h>

BxCheckReturn<bool, BxCheckReturnPolicyAssert> VoTaskAlgorithm::run()
{
    return m_algorithm->Compute();
}
