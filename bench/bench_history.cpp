// Undo history benchmarks: undoing and redoing every action of a history over
// three objects, beside a plain command stack (a vector of operations reverted
// and re-applied in order) as the peer. The action count varies to show how
// the cost grows; the "Locked" variants also lock each object's node in a
// data manager around every operation.
#include <vobase/data/vodatamanager.h>
#include <vobase/history/vohistory.h>
#include <vobase/objects/vonode.h>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

struct SObject
{
    long long value = 0;
    VoHistoryID id;
};

class COpAdd : public VoOperation
{
public:
    COpAdd(SObject& object, int delta) : m_object(object), m_delta(delta) {}
    bool Apply() override
    {
        m_object.value += m_delta;
        return true;
    }
    bool Revert() override
    {
        m_object.value -= m_delta;
        return true;
    }

private:
    SObject& m_object;
    int m_delta;
};

/// A history of `count` closed actions, each adding to one of three objects in turn.
struct CHistoryFixture
{
    std::array<SObject, 3> objects;
    VoHistory history;
    std::unique_ptr<VoDataManager> manager;
    std::array<BxSmartPointer<VoNode>, 3> nodes;

    CHistoryFixture(int count, bool locked)
    {
        if (locked) {
            manager = std::make_unique<VoDataManager>();
            for (int i = 0; i < 3; ++i) {
                nodes[i] = BxSmartPointer<VoNode>(new VoNode((L"o" + std::to_wstring(i)).c_str(), true,
                                                             VoNode::eTMM_Track));
                if (!manager->InsertNode(manager->GetRootNode(), nodes[i]))
                    throw std::runtime_error("tree construction failed");
            }
        }
        for (int k = 0; k < count; ++k) {
            const int i = k % 3;
            VoHistoryAction* action = history.BeginAction(L"step");
            BxSmartPointer<VoOperation> op(new COpAdd(objects[i], 1 + k % 7));
            if (locked) {
                op->SetDataManager(manager.get());
                op->AddNodePointerToLock(nodes[i]);
            }
            op->Apply();
            history.AddOperation(op.get(), &objects[i].id, VoHistoryAction::eAIF_Primary);
            history.EndAction(action);
        }
    }
};

void historyUndoAll(benchmark::State& state, bool locked)
{
    CHistoryFixture fixture(static_cast<int>(state.range(0)), locked);
    for (auto _ : state) {
        if (!fixture.history.UndoAll())
            state.SkipWithError("undo failed");
        state.PauseTiming();
        if (!fixture.history.RedoAll())
            state.SkipWithError("redo failed");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void historyRedoAll(benchmark::State& state, bool locked)
{
    CHistoryFixture fixture(static_cast<int>(state.range(0)), locked);
    for (auto _ : state) {
        state.PauseTiming();
        if (!fixture.history.UndoAll())
            state.SkipWithError("undo failed");
        state.ResumeTiming();
        if (!fixture.history.RedoAll())
            state.SkipWithError("redo failed");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_HistoryUndoAll(benchmark::State& state) { historyUndoAll(state, false); }
void BM_HistoryRedoAll(benchmark::State& state) { historyRedoAll(state, false); }
void BM_HistoryUndoAllLocked(benchmark::State& state) { historyUndoAll(state, true); }
void BM_HistoryRedoAllLocked(benchmark::State& state) { historyRedoAll(state, true); }
BENCHMARK(BM_HistoryUndoAll)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HistoryRedoAll)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HistoryUndoAllLocked)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HistoryRedoAllLocked)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// The peer: a command stack that reverts everything newest first and
/// re-applies it oldest first, with the same operation objects.
void BM_CommandStackUndoRedo(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    std::array<SObject, 3> objects;
    std::vector<BxSmartPointer<VoOperation>> stack;
    for (int k = 0; k < count; ++k) {
        stack.emplace_back(new COpAdd(objects[k % 3], 1 + k % 7));
        stack.back()->Apply();
    }
    for (auto _ : state) {
        for (auto op = stack.rbegin(); op != stack.rend(); ++op)
            (*op)->Revert();
        for (const auto& op : stack)
            op->Apply();
        benchmark::DoNotOptimize(objects);
    }
    state.SetItemsProcessed(state.iterations() * count * 2);  // both directions
}
BENCHMARK(BM_CommandStackUndoRedo)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
