#include "historytestoperations.h"

#include <vobase/history/vohistory.h>
#include <vobase/objects/vonode.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxexceptionpreconditionviolation.h>

#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <random>

using namespace HistoryTest;

namespace {

constexpr auto c_list0 = VoHistoryAction::eAIF_Primary;
constexpr auto c_list1 = VoHistoryAction::eAIF_Secondary;

/// Applies `operation` and records it for `object` in the active action.
void run(VoHistory& history, CObject& object, VoOperation* operation,
         VoHistoryAction::EActionInputFlag flag = VoHistoryAction::eAIF_Primary)
{
    BxSmartPointer<VoOperation> keep(operation);
    ASSERT_TRUE(operation->ApplyWithLocking());
    history.AddOperation(operation, &object.id, flag);
}

BxList<std::wstring> list(std::initializer_list<const wchar_t*> texts)
{
    BxList<std::wstring> result;
    for (const wchar_t* text : texts)
        result.push_back(text);
    return result;
}

}  // namespace

// --- actions and lists --------------------------------------------------------

TEST(VoHistory, ZeroStepsChangeNothing)
{
    VoHistory history;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, object, new COpAdd(object, 3));
    history.EndAction(a);
    history.BeginAction(L"b");  // stays open
    run(history, object, new COpAdd(object, 4));

    // b is open at the end of the list: nothing can be undone.
    EXPECT_TRUE(history.Undo(1));
    EXPECT_TRUE(history.UndoAll());
    EXPECT_EQ(object.value, 7);
    EXPECT_EQ(history.GetActionDescriptionsRedoList().size(), 0u);

    history.EndAction(history.BeginAction(L"c"));
    EXPECT_TRUE(history.Undo(0));
    EXPECT_TRUE(history.Redo(0));
    EXPECT_EQ(object.value, 7);
    EXPECT_EQ(history.GetActionDescriptionsUndoList(), list({L"a", L"b", L"c"}));
}

TEST(VoHistory, UndoMoreThanThereIsUndoesEverythingClosed)
{
    VoHistory history;
    CObject object;
    VoHistoryAction* first = history.BeginAction(L"first");
    run(history, object, new COpAdd(object, 10));
    history.EndAction(first);
    VoHistoryAction* second = history.BeginAction(L"second");
    run(history, object, new COpAdd(object, 5));
    history.EndAction(second);
    EXPECT_TRUE(first->IsClosed());

    EXPECT_TRUE(history.Undo(5));
    EXPECT_EQ(object.value, 0);
    EXPECT_FALSE(history.IsUndoApplicable());
    EXPECT_TRUE(history.IsRedoApplicable());
    EXPECT_EQ(history.GetActionDescriptionsRedoList(), list({L"first", L"second"}));

    EXPECT_TRUE(history.Redo(1));
    EXPECT_EQ(object.value, 10);
    EXPECT_TRUE(history.RedoAll());
    EXPECT_EQ(object.value, 15);
    EXPECT_EQ(history.GetActionDescriptionsUndoList(), list({L"first", L"second"}));
    EXPECT_FALSE(history.IsRedoApplicable());
}

TEST(VoHistory, UndoStopsBeforeAnOpenAction)
{
    VoHistory history;
    CObject object;
    history.BeginAction(L"open");  // never ended
    run(history, object, new COpAdd(object, 100));
    for (const wchar_t* name : {L"x", L"y"}) {
        VoHistoryAction* a = history.BeginAction(name);
        run(history, object, new COpAdd(object, 1));
        history.EndAction(a);
    }
    EXPECT_TRUE(history.Undo(5));
    EXPECT_EQ(object.value, 100);
    EXPECT_EQ(history.GetActionDescriptionsUndoList(), list({L"open"}));
    EXPECT_EQ(history.GetActionDescriptionsRedoList(), list({L"x", L"y"}));
}

TEST(VoHistory, BeginActionDiscardsTheRedoList)
{
    VoHistory history;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, object, new COpAdd(object, 1));
    history.EndAction(a);
    ASSERT_TRUE(history.Undo(1));
    ASSERT_TRUE(history.IsRedoApplicable());
    const std::size_t withRedo = history.GetMemoryUsage();

    history.BeginAction(L"b");
    EXPECT_FALSE(history.IsRedoApplicable());
    EXPECT_TRUE(history.IsUndoApplicable());
    EXPECT_LT(history.GetMemoryUsage(), withRedo);
    EXPECT_TRUE(history.Redo(1));  // nothing left to redo
    EXPECT_EQ(object.value, 0);
}

TEST(VoHistory, CancelActionDeletesItWithoutRevertingAnything)
{
    VoHistory history;
    CObject object;
    VoHistoryAction* kept = history.BeginAction(L"kept");
    history.EndAction(kept);
    VoHistoryAction* dropped = history.BeginAction(L"dropped");
    run(history, object, new COpAdd(object, 2));
    history.CancelAction(dropped);
    EXPECT_EQ(object.value, 2);
    EXPECT_EQ(history.GetActionDescriptionsUndoList(), list({L"kept"}));
    EXPECT_TRUE(history.UndoAll());
    EXPECT_EQ(object.value, 2);  // the cancelled operation is gone from the history

    VoHistoryAction stranger(L"stranger");
    EXPECT_THROW(history.CancelAction(&stranger), BxExceptionPreconditionViolation);
}

TEST(VoHistory, BadArgumentsThrow)
{
    VoHistory history;
    CObject object;
    BxSmartPointer<VoOperation> op(new COpAdd(object, 1));
    EXPECT_THROW(history.AddOperation(op.get(), &object.id, c_list0), BxExceptionContainer);  // no action
    VoHistoryAction* a = history.BeginAction(L"a");
    EXPECT_THROW(history.AddOperation(nullptr, a, &object.id, c_list0), BxExceptionPreconditionViolation);
    EXPECT_THROW(history.AddOperation(op.get(), nullptr, &object.id, c_list0), BxExceptionPreconditionViolation);
    EXPECT_THROW(history.AddOperation(op.get(), a, nullptr, c_list0), BxExceptionPreconditionViolation);
    EXPECT_THROW(history.EndAction(nullptr), BxExceptionPreconditionViolation);
}

TEST(VoHistory, IdentifiersWithTheSameValueAreRegisteredOnce)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryID twin = object.id;  // another object, the same identifier
    VoHistoryAction* a = history.BeginAction(L"a");
    BxSmartPointer<VoOperation> first(new COpAdd(object, 1, "first", &log));
    BxSmartPointer<VoOperation> second(new COpAdd(object, 2, "second", &log));
    history.AddOperation(first.get(), a, &object.id, c_list0);
    history.AddOperation(second.get(), a, &twin, c_list0);
    history.EndAction(a);
    object.value = 3;

    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(log, (Log{"revert second", "revert first"}));  // each once
    EXPECT_EQ(object.value, 0);
}

TEST(VoHistory, FlagsOtherThanZeroAndOneRecordNothing)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    BxSmartPointer<VoOperation> op(new COpAdd(object, 1, "op", &log));
    history.AddOperation(op.get(), a, &object.id, static_cast<VoHistoryAction::EActionInputFlag>(2));
    history.EndAction(a);
    EXPECT_TRUE(a->GetOperations(c_list0).empty());
    EXPECT_TRUE(a->GetOperations(c_list1).empty());
    ASSERT_TRUE(history.Undo(1));
    EXPECT_TRUE(log.empty());
}

TEST(VoHistory, ListsAreCarriedOutInOrder)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    history.AddOperation(new COpAdd(object, 1, "a", &log), a, &object.id, c_list0);
    history.AddOperation(new COpAdd(object, 2, "c", &log), a, &object.id, c_list1);
    history.AddOperation(new COpAdd(object, 3, "b", &log), a, &object.id, c_list0);
    history.EndAction(a);
    EXPECT_EQ(a->GetOperations(c_list0).size(), 2u);

    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(log, (Log{"revert c", "revert b", "revert a"}));
    log.clear();
    ASSERT_TRUE(history.Redo(1));
    EXPECT_EQ(log, (Log{"apply a", "apply b", "apply c"}));
}

// --- the absolute shortcuts ----------------------------------------------------

TEST(VoHistory, RedoStartsFromTheLatestAbsoluteOperation)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, object, new COpAdd(object, 1, "add1", &log));
    run(history, object, new COpSet(object, 10, "set10", &log));
    run(history, object, new COpAdd(object, 2, "add2", &log));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    run(history, object, new COpSet(object, 20, "set20", &log));
    run(history, object, new COpAdd(object, 3, "add3", &log));
    history.EndAction(b);
    ASSERT_EQ(object.value, 23);

    log.clear();
    ASSERT_TRUE(history.UndoAll());
    EXPECT_EQ(object.value, 0);
    // Undo walks from the oldest undone action to its first absolute operation.
    EXPECT_EQ(log, (Log{"revert set10", "revert add1"}));

    log.clear();
    ASSERT_TRUE(history.RedoAll());
    EXPECT_EQ(object.value, 23);
    EXPECT_EQ(log, (Log{"apply set20", "apply add3"}));
}

TEST(VoHistory, RedoRevertsBackFromANearerAbsoluteOperationBeyondTheTarget)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    for (int i = 0; i < 3; ++i)
        run(history, object, new COpAdd(object, 1, "add" + std::to_string(i), &log));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    run(history, object, new COpAdd(object, 5, "add5", &log));
    run(history, object, new COpSet(object, 50, "set50", &log));
    history.EndAction(b);
    ASSERT_TRUE(history.UndoAll());
    ASSERT_EQ(object.value, 0);

    log.clear();
    ASSERT_TRUE(history.Redo(1));  // target a: three additions, or two steps back from set50
    EXPECT_EQ(log, (Log{"revert set50", "revert add5"}));
    EXPECT_EQ(object.value, 3);
    ASSERT_TRUE(history.Redo(1));
    EXPECT_EQ(object.value, 50);
}

TEST(VoHistory, RedoGivesUpTheRouteBeyondAtAnIrreversibleOperation)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    for (int i = 0; i < 3; ++i)
        run(history, object, new COpAdd(object, 1, "add" + std::to_string(i), &log));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    run(history, object, new COpAdd(object, 5, "oneway", &log, false));
    run(history, object, new COpSet(object, 50, "set50", &log));
    history.EndAction(b);
    ASSERT_TRUE(history.UndoAll());

    log.clear();
    ASSERT_TRUE(history.Redo(1));
    EXPECT_EQ(log, (Log{"apply add0", "apply add1", "apply add2"}));
    EXPECT_EQ(object.value, 3);
}

TEST(VoHistory, UndoReappliesFromANearerAbsoluteOperationBeforeTheTarget)
{
    VoHistory history;
    Log log;
    CObject object;
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, object, new COpSet(object, 7, "set7", &log));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    for (int i = 0; i < 3; ++i)
        run(history, object, new COpAdd(object, 1, "add" + std::to_string(i), &log));
    history.EndAction(b);
    ASSERT_EQ(object.value, 10);

    log.clear();
    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(log, (Log{"apply set7"}));
    EXPECT_EQ(object.value, 7);
    ASSERT_TRUE(history.Redo(1));
    EXPECT_EQ(object.value, 10);
}

TEST(VoHistory, EachObjectIsHandledOnItsOwn)
{
    VoHistory history;
    CObject x, y;
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, x, new COpSet(x, 4));
    run(history, y, new COpAdd(y, 9));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    run(history, y, new COpSet(y, 1));
    run(history, x, new COpAdd(x, 2));
    history.EndAction(b);

    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(x.value, 4);
    EXPECT_EQ(y.value, 9);
    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(x.value, 0);
    EXPECT_EQ(y.value, 0);
    ASSERT_TRUE(history.Redo(2));
    EXPECT_EQ(x.value, 6);
    EXPECT_EQ(y.value, 1);
}

TEST(VoHistory, LastAbsoluteOperationFollowsTheUndoList)
{
    VoHistory history;
    CObject x, y;
    EXPECT_EQ(history.GetLastAbsoluteOperation(&x.id), nullptr);
    EXPECT_EQ(history.GetLastAbsoluteOperation(nullptr), nullptr);
    VoHistoryAction* a = history.BeginAction(L"a");
    run(history, x, new COpSet(x, 1));
    run(history, y, new COpAdd(y, 1));
    history.EndAction(a);
    VoHistoryAction* b = history.BeginAction(L"b");
    run(history, x, new COpSet(x, 2));
    run(history, x, new COpAdd(x, 5));
    history.EndAction(b);

    auto newValue = [](const VoOperationAbsolute* op) { return dynamic_cast<const COpSet&>(*op).GetNewValue(); };
    ASSERT_NE(history.GetLastAbsoluteOperation(&x.id), nullptr);
    EXPECT_EQ(newValue(history.GetLastAbsoluteOperation(&x.id)), 2);
    EXPECT_EQ(history.GetLastAbsoluteOperation(&y.id), nullptr);
    ASSERT_TRUE(history.Undo(1));
    EXPECT_EQ(newValue(history.GetLastAbsoluteOperation(&x.id)), 1);

    // Marked absolute but not a VoOperationAbsolute: not returned.
    class CAbsoluteFlagOnly : public VoOperation
    {
    public:
        CAbsoluteFlagOnly() : VoOperation(true, true) {}
        bool Apply() override { return true; }
        bool Revert() override { return true; }
    };
    history.BeginAction(L"c");
    history.AddOperation(new CAbsoluteFlagOnly, &y.id, c_list0);
    EXPECT_EQ(history.GetLastAbsoluteOperation(&y.id), nullptr);
}

TEST(VoHistory, MemoryUsageGrowsWithTheRecords)
{
    VoHistory history;
    CObject object;
    const std::size_t empty = history.GetMemoryUsage();
    VoHistoryAction* a = history.BeginAction(L"a fairly long description of the action");
    const std::size_t oneAction = history.GetMemoryUsage();
    EXPECT_GT(oneAction, empty);
    EXPECT_GT(a->GetMemoryUsage(), sizeof(VoHistoryAction));
    run(history, object, new COpAdd(object, 1));
    EXPECT_GT(history.GetMemoryUsage(), oneAction);
}

// --- the model-based test -------------------------------------------------------

namespace {

/// Random begin, add, end, cancel, undo and redo steps over three objects; a
/// reference model keeps the objects' states after every closed action.
class CHistoryModel
{
public:
    using State = std::array<int, 3>;

    explicit CHistoryModel(unsigned seed) : m_random(seed)
    {
        // Objects 0 and 1 lock nodes of a data manager; object 2 does not lock.
        for (int i = 0; i < 2; ++i) {
            m_objects[i].manager = &m_manager;
            m_objects[i].node = BxSmartPointer<VoNode>(new VoNode((L"o" + std::to_wstring(i)).c_str(), true,
                                                                  VoNode::eTMM_Track));
            EXPECT_TRUE(m_manager.InsertNode(m_manager.GetRootNode(), m_objects[i].node));
        }
    }

    void Step()
    {
        const int choice = pick(100);
        if (!m_open) {
            if (choice < 30)
                begin();
            else if (choice < 65)
                undo();
            else
                redo();
        } else {
            if (choice < 60)
                add();
            else if (choice < 75)
                cancel();
            else if (choice < 85)
                undo();  // refused: the open action is at the end
            else
                end();
        }
    }

    /// Compares the objects and the lists with the model.
    void Check(int step) const
    {
        const State expected = m_open ? m_openState : m_done.back();
        for (int i = 0; i < 3; ++i)
            ASSERT_EQ(m_objects[i].value, expected[i]) << "object " << i << " after step " << step;
        ASSERT_EQ(m_history.GetActionDescriptionsUndoList().size(), m_done.size() - 1 + (m_open ? 1 : 0));
        ASSERT_EQ(m_history.GetActionDescriptionsRedoList().size(), m_undone.size());
        ASSERT_EQ(m_history.IsRedoApplicable(), !m_undone.empty());
        ASSERT_FALSE(m_manager.IsCurrentThreadLocking());
    }

private:
    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    State current() const { return {m_objects[0].value, m_objects[1].value, m_objects[2].value}; }

    void begin()
    {
        m_action = m_history.BeginAction(L"action " + std::to_wstring(++m_count));
        m_undone.clear();
        m_open = true;
        m_openState = m_done.back();
        m_applied.clear();
    }

    void add()
    {
        const int index = pick(3);
        CObject& object = m_objects[index];
        BxSmartPointer<VoOperation> operation;
        auto flag = VoHistoryAction::eAIF_Primary;
        if (index == 2) {
            // Relative operations only: they may go to either list.
            operation = new COpAdd(object, pick(11) - 5);
            flag = static_cast<VoHistoryAction::EActionInputFlag>(pick(2));
        } else if (pick(100) < 40) {
            operation = new COpSet(object, pick(100));
        } else {
            operation = new COpAdd(object, pick(11) - 5);
        }
        ASSERT_TRUE(operation->ApplyWithLocking());
        m_history.AddOperation(operation.get(), &object.id, flag);
        m_applied.push_back(operation);
        m_openState = current();
    }

    void end()
    {
        m_history.EndAction(m_action);
        m_open = false;
        m_done.push_back(m_openState);
    }

    void cancel()
    {
        // The application takes back what it did, then drops the action.
        for (auto operation = m_applied.rbegin(); operation != m_applied.rend(); ++operation)
            ASSERT_TRUE((*operation)->RevertWithLocking());
        m_history.CancelAction(m_action);
        m_open = false;
    }

    void undo()
    {
        const int n = pick(4);
        const bool all = pick(10) == 0;
        ASSERT_TRUE(all ? m_history.UndoAll() : m_history.Undo(unsigned(n)));
        if (m_open)
            return;
        std::size_t k = all ? m_done.size() - 1 : std::min<std::size_t>(n, m_done.size() - 1);
        for (; k > 0; --k) {
            m_undone.push_front(m_done.back());
            m_done.pop_back();
        }
    }

    void redo()
    {
        const int n = pick(4);
        const bool all = pick(10) == 0;
        ASSERT_TRUE(all ? m_history.RedoAll() : m_history.Redo(unsigned(n)));
        std::size_t k = all ? m_undone.size() : std::min<std::size_t>(n, m_undone.size());
        for (; k > 0; --k) {
            m_done.push_back(m_undone.front());
            m_undone.pop_front();
        }
    }

    std::mt19937 m_random;
    VoDataManager m_manager;
    std::array<CObject, 3> m_objects;
    VoHistory m_history;
    VoHistoryAction* m_action = nullptr;
    bool m_open = false;
    int m_count = 0;
    State m_openState{};
    std::vector<BxSmartPointer<VoOperation>> m_applied;
    std::vector<State> m_done{State{}};  ///< the state before any action, then after each closed action
    std::deque<State> m_undone;          ///< the state after each action of the redo list
};

}  // namespace

TEST(VoHistoryModel, RandomSequencesMatchTheReferenceModel)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        CHistoryModel model(seed);
        for (int step = 0; step < 1500; ++step) {
            model.Step();
            model.Check(step);
            if (::testing::Test::HasFatalFailure())
                return;
        }
    }
}
