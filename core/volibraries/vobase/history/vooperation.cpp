#include <vobase/history/vooperation.h>

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/data/vodatamanager.h>
#include <vobase/objects/vonode.h>

BX_IMPLEMENT_RTTI_ABSTRACT(VoOperation)

VoOperation::VoOperation() : VoOperation(true, false) {}

VoOperation::VoOperation(bool reversible, bool absolute) : m_reversible(reversible), m_absolute(absolute) {}

VoOperation::~VoOperation() = default;

std::size_t VoOperation::GetMemoryUsage() const
{
    // A list element holds the smart pointer and two links.
    return sizeof(*this) + m_nodesToLock.size() * (sizeof(BxSmartPointer<VoNode>) + 2 * sizeof(void*));
}

void VoOperation::AddNodePointerToLock(BxSmartPointer<VoNode> node) { m_nodesToLock.push_back(std::move(node)); }

bool VoOperation::ApplyWithLocking() { return runWithLocking(&VoOperation::Apply); }

bool VoOperation::RevertWithLocking() { return runWithLocking(&VoOperation::Revert); }

bool VoOperation::runWithLocking(bool (VoOperation::*step)())
{
    if (!m_dataManager || m_nodesToLock.empty())
        return (this->*step)();
    // The handles are requested in list order and released before returning.
    BxList<VoDataHandleLockOnly<1>> handles;
    for (const BxSmartPointer<VoNode>& node : m_nodesToLock)
        handles.emplace_back(*m_dataManager, node);
    if (!m_dataManager->TryLockAndWait(INFINITE))
        return false;
    return (this->*step)();
}
