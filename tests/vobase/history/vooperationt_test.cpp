// Operations made from two callables: the history applies, undoes and redoes
// them like hand-written ones, and a failing step reaches its result.
#include <vobase/history/vohistory.h>
#include <vobase/history/vooperationt.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

TEST(VoOperationT, TheHistoryUndoesAndRedoesCallableOperations)
{
    VoHistory history;
    VoHistoryID id;
    std::wstring text = L"draft";
    int applied = 0, reverted = 0;

    BxSmartPointer<VoOperation> rename = VoMakeOperation(
        [&] { text = L"final", ++applied; }, [&] { text = L"draft", ++reverted; });
    EXPECT_TRUE(rename->IsReversible());
    EXPECT_FALSE(rename->IsAbsolute());
    ASSERT_TRUE(rename->ApplyWithLocking());
    VoHistoryAction* action = history.BeginAction(L"Rename");
    history.AddOperation(rename.get(), &id, VoHistoryAction::eAIF_Primary);
    history.EndAction(action);
    EXPECT_EQ(text, L"final");

    EXPECT_TRUE(history.Undo(1));
    EXPECT_EQ(text, L"draft");
    EXPECT_TRUE(history.Redo(1));
    EXPECT_EQ(text, L"final");
    EXPECT_EQ(applied, 2);
    EXPECT_EQ(reverted, 1);
}

TEST(VoOperationT, AFalseResultFailsTheStepAndAbsoluteIsKept)
{
    bool allow = false;
    BxSmartPointer<VoOperation> guarded = VoMakeOperation([&] { return allow; }, [] { return false; }, true);
    EXPECT_TRUE(guarded->IsAbsolute());
    EXPECT_FALSE(guarded->Apply());
    allow = true;
    EXPECT_TRUE(guarded->Apply());
    EXPECT_FALSE(guarded->Revert());

    VoHistory history;
    VoHistoryID id;
    VoHistoryAction* action = history.BeginAction(L"Guarded");
    history.AddOperation(guarded.get(), &id, VoHistoryAction::eAIF_Primary);
    history.EndAction(action);
    EXPECT_FALSE(history.Undo(1));            // the revert failed
    EXPECT_TRUE(history.IsRedoApplicable());  // the action moved anyway
}

TEST(VoOperationT, TheCallablesLiveAsLongAsTheOperation)
{
    auto token = std::make_shared<int>(0);
    std::weak_ptr<int> watch = token;
    {
        VoHistory history;
        VoHistoryID id;
        VoHistoryAction* action = history.BeginAction(L"Count");
        history.AddOperation(VoMakeOperation([token] { ++*token; }, [token] { --*token; }).get(), &id,
                             VoHistoryAction::eAIF_Primary);
        history.EndAction(action);
        token.reset();
        EXPECT_FALSE(watch.expired());  // the history's reference keeps the callables
        EXPECT_TRUE(history.Undo(1));
        EXPECT_EQ(*watch.lock(), -1);
    }
    EXPECT_TRUE(watch.expired());
}
