#include <vobase/history/vohistory.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <algorithm>
#include <iterator>

namespace {

using Operations = VoHistoryAction::Operations;
constexpr auto c_list0 = VoHistoryAction::eAIF_Primary;
constexpr auto c_list1 = VoHistoryAction::eAIF_Secondary;

/// Appends the operations of `id` newest first; with stopAtAbsolute it stops
/// after the first absolute one and returns true.
bool gatherNewestFirst(const Operations& operations, std::uint32_t id, std::vector<VoOperation*>& route,
                       bool stopAtAbsolute)
{
    for (auto record = operations.rbegin(); record != operations.rend(); ++record) {
        if (record->id != id)
            continue;
        route.push_back(record->operation.get());
        if (stopAtAbsolute && record->operation->IsAbsolute())
            return true;
    }
    return false;
}

/// Appends the operations of `id` oldest first; with stopAtAbsolute it stops
/// after the first absolute one and returns true.
bool gatherOldestFirst(const Operations& operations, std::uint32_t id, std::vector<VoOperation*>& route,
                       bool stopAtAbsolute)
{
    for (const VoHistoryAction::SHistoryOperation& record : operations) {
        if (record.id != id)
            continue;
        route.push_back(record.operation.get());
        if (stopAtAbsolute && record.operation->IsAbsolute())
            return true;
    }
    return false;
}

}  // namespace

VoHistory::VoHistory() = default;

VoHistory::~VoHistory() { clear(); }

void VoHistory::clear()
{
    m_undo.clear();
    m_redo.clear();
}

// --- recording ---------------------------------------------------------------

VoHistoryAction* VoHistory::BeginAction(CStringT<wchar_t> description)
{
    m_redo.clear();
    m_undo.push_back(std::make_unique<VoHistoryAction>(std::move(description)));
    return m_undo.back().get();
}

void VoHistory::EndAction(VoHistoryAction* action)
{
    if (!action)
        BX_THROW(BxExceptionPreconditionViolation, "VoHistory::EndAction", "no action given");
    action->close();
}

void VoHistory::CancelAction(VoHistoryAction* action)
{
    const auto entry = std::find_if(m_undo.begin(), m_undo.end(),
                                    [action](const std::unique_ptr<VoHistoryAction>& a) { return a.get() == action; });
    if (entry == m_undo.end())
        BX_THROW(BxExceptionPreconditionViolation, "VoHistory::CancelAction", "the action is not in the undo list");
    m_undo.erase(entry);
}

void VoHistory::registerID(const VoHistoryID& id)
{
    if (m_knownIds.insert(id.GetID()).second)
        m_ids.push_back(id.GetID());
}

void VoHistory::AddOperation(VoOperation* operation, VoHistoryAction* action, VoHistoryID* id,
                             VoHistoryAction::EActionInputFlag flag)
{
    if (!operation || !action || !id)
        BX_THROW(BxExceptionPreconditionViolation, "VoHistory::AddOperation", "operation, action and identifier are needed");
    registerID(*id);
    action->AddOperation(operation, *id, flag);
}

void VoHistory::AddOperation(VoOperation* operation, VoHistoryID* id, VoHistoryAction::EActionInputFlag flag)
{
    if (m_undo.empty())
        BX_THROW(BxExceptionContainer, "VoHistory::AddOperation", "there is no active action");
    AddOperation(operation, m_undo.back().get(), id, flag);
}

// --- undo --------------------------------------------------------------------

bool VoHistory::Undo(unsigned int n)
{
    if (n == 0 || m_undo.empty() || !m_undo.back()->IsClosed())
        return true;  // an open action cannot be undone
    Position target = std::prev(m_undo.end());
    for (unsigned int k = 1; k < n && target != m_undo.begin(); ++k) {
        const Position before = std::prev(target);
        if (!(*before)->IsClosed())
            break;
        target = before;
    }
    return undoDownTo(target);
}

bool VoHistory::UndoAll()
{
    if (m_undo.empty() || !m_undo.back()->IsClosed())
        return true;
    return undoDownTo(m_undo.begin());
}

bool VoHistory::undoDownTo(Position target)
{
    bool succeeded = true;
    for (std::uint32_t id : m_ids)
        succeeded = undoID(id, target) && succeeded;
    m_redo.splice(m_redo.begin(), m_undo, target, m_undo.end());
    return succeeded;
}

bool VoHistory::undoID(std::uint32_t id, Position target)
{
    // The route to the target: from the target to the end of the undo list,
    // oldest first, up to the first absolute operation of a list 0 (reverting
    // it restores everything before it).
    Route toTarget;
    for (Position action = target; action != m_undo.end(); ++action) {
        if (gatherOldestFirst((*action)->GetOperations(c_list0), id, toTarget, true))
            break;
        gatherOldestFirst((*action)->GetOperations(c_list1), id, toTarget, false);
    }

    // The route beyond: from the action before the target back towards the
    // head, newest first, down to the first absolute operation of a list 0.
    Route beyond;
    bool usable = false;
    for (Position action = target; !usable && action != m_undo.begin();) {
        --action;
        gatherNewestFirst((*action)->GetOperations(c_list1), id, beyond, false);
        usable = gatherNewestFirst((*action)->GetOperations(c_list0), id, beyond, true);
    }

    bool succeeded = true;
    if (usable && beyond.size() < toTarget.size()) {
        for (auto operation = beyond.rbegin(); operation != beyond.rend(); ++operation)
            succeeded = (*operation)->ApplyWithLocking() && succeeded;
    } else {
        for (auto operation = toTarget.rbegin(); operation != toTarget.rend(); ++operation)
            succeeded = (*operation)->RevertWithLocking() && succeeded;
    }
    return succeeded;
}

// --- redo --------------------------------------------------------------------

bool VoHistory::Redo(unsigned int n)
{
    if (n == 0 || m_redo.empty())
        return true;
    Position target = m_redo.begin();
    for (unsigned int k = 1; k < n && std::next(target) != m_redo.end(); ++k)
        ++target;
    return redoUpTo(target);
}

bool VoHistory::RedoAll()
{
    if (m_redo.empty())
        return true;
    return redoUpTo(std::prev(m_redo.end()));
}

bool VoHistory::redoUpTo(Position target)
{
    bool succeeded = true;
    for (std::uint32_t id : m_ids)
        succeeded = redoID(id, target) && succeeded;
    m_undo.splice(m_undo.end(), m_redo, m_redo.begin(), std::next(target));
    return succeeded;
}

bool VoHistory::redoID(std::uint32_t id, Position target)
{
    // The route to the target: from the target back to the head of the redo
    // list, newest first (list 1, then list 0), up to the first absolute
    // operation of a list 0 (it sets the state outright).
    Route toTarget;
    for (Position action = target;; --action) {
        gatherNewestFirst((*action)->GetOperations(c_list1), id, toTarget, false);
        if (gatherNewestFirst((*action)->GetOperations(c_list0), id, toTarget, true) || action == m_redo.begin())
            break;
    }

    // The route beyond: the actions after the target, each with list 1 newest
    // first and list 0 oldest first, up to the first absolute operation of a
    // list 0 (usable: reverting back from it reaches the target's state), or
    // to the first operation of a list 0 that cannot be reverted (given up).
    Route beyond;
    bool usable = false;
    bool givenUp = false;
    for (Position action = std::next(target); !usable && !givenUp && action != m_redo.end(); ++action) {
        gatherNewestFirst((*action)->GetOperations(c_list1), id, beyond, false);
        for (const VoHistoryAction::SHistoryOperation& record : (*action)->GetOperations(c_list0)) {
            if (record.id != id)
                continue;
            if (!record.operation->IsReversible()) {
                givenUp = true;
                break;
            }
            beyond.push_back(record.operation.get());
            if (record.operation->IsAbsolute()) {
                usable = true;
                break;
            }
        }
    }

    bool succeeded = true;
    if (usable && beyond.size() < toTarget.size()) {
        for (auto operation = beyond.rbegin(); operation != beyond.rend(); ++operation) {
            VoOperation& step = **operation;
            succeeded = (step.IsReversible() ? step.RevertWithLocking() : step.ApplyWithLocking()) && succeeded;
        }
    } else {
        for (auto operation = toTarget.rbegin(); operation != toTarget.rend(); ++operation)
            succeeded = (*operation)->ApplyWithLocking() && succeeded;
    }
    return succeeded;
}

// --- queries -----------------------------------------------------------------

BxList<CStringT<wchar_t>> VoHistory::GetActionDescriptionsUndoList() const
{
    BxList<CStringT<wchar_t>> descriptions;
    for (const auto& action : m_undo)
        descriptions.push_back(action->GetDescription());
    return descriptions;
}

BxList<CStringT<wchar_t>> VoHistory::GetActionDescriptionsRedoList() const
{
    BxList<CStringT<wchar_t>> descriptions;
    for (const auto& action : m_redo)
        descriptions.push_back(action->GetDescription());
    return descriptions;
}

const VoOperationAbsolute* VoHistory::GetLastAbsoluteOperation(VoHistoryID* id) const
{
    if (!id)
        return nullptr;
    for (auto action = m_undo.rbegin(); action != m_undo.rend(); ++action)
        for (auto flag : {c_list1, c_list0}) {
            const Operations& operations = (*action)->GetOperations(flag);
            for (auto record = operations.rbegin(); record != operations.rend(); ++record)
                if (record->id == id->GetID())
                    if (auto absolute = dynamic_cast<const VoOperationAbsolute*>(record->operation.get()))
                        return absolute;
        }
    return nullptr;
}

std::size_t VoHistory::GetMemoryUsage() const
{
    const std::size_t listLinks = 2 * sizeof(void*);
    std::size_t bytes = sizeof(*this) + m_ids.size() * (sizeof(std::uint32_t) + listLinks) +
                        m_knownIds.size() * (sizeof(std::uint32_t) + sizeof(void*)) +
                        m_knownIds.bucket_count() * sizeof(void*);
    for (const ActionList* list : {&m_undo, &m_redo})
        for (const auto& action : *list)
            bytes += sizeof(action) + listLinks + action->GetMemoryUsage();
    return bytes;
}
