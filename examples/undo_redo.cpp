// Undo and redo: two edits of a small document recorded in a history, the
// second made of two operations, undone and redone action by action.
#include <vobase/history/vohistory.h>
#include <vobase/history/vooperationt.h>

#include <cstdio>
#include <string>

namespace {

struct SDocument
{
    std::string title = "draft";
    int width = 100;
    VoHistoryID titleId, widthId;  // name the edited objects for the history

    void print(const char* when) const { std::printf("%-14s title \"%s\", width %d\n", when, title.c_str(), width); }
};

/// Sets a value and remembers the old one for the revert.
template <class T>
BxSmartPointer<VoOperation> assign(T& field, T value)
{
    return VoMakeOperation([&field, value] { field = value; }, [&field, old = field] { field = old; });
}

}  // namespace

int main()
{
    SDocument doc;
    VoHistory history;
    doc.print("start:");

    VoHistoryAction* rename = history.BeginAction(L"Rename");
    BxSmartPointer<VoOperation> setTitle = assign(doc.title, std::string("report"));
    setTitle->ApplyWithLocking();
    history.AddOperation(setTitle.get(), &doc.titleId, VoHistoryAction::eAIF_Primary);
    history.EndAction(rename);

    VoHistoryAction* resize = history.BeginAction(L"Resize twice");
    for (int width : {150, 200}) {
        BxSmartPointer<VoOperation> setWidth = assign(doc.width, width);
        setWidth->ApplyWithLocking();
        history.AddOperation(setWidth.get(), &doc.widthId, VoHistoryAction::eAIF_Primary);
    }
    history.EndAction(resize);
    doc.print("edited:");

    bool ok = history.Undo(1);
    doc.print("undo 1:");
    ok = history.Undo(1) && ok;
    doc.print("undo 2:");
    ok = history.Redo(2) && ok;
    doc.print("redo 2:");

    std::printf("undo list: %zu actions, redo list: %zu\n", history.GetActionDescriptionsUndoList().size(),
                history.GetActionDescriptionsRedoList().size());
    return ok && doc.title == "report" && doc.width == 200 ? 0 : 1;
}
