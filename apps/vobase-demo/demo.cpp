#include "demo.h"

#include "messenger.h"
#include "msgrequest.h"
#include "scalesamplesoperation.h"
#include "settitleoperation.h"
#include "stagerunner.h"

#include <vobase/data/vodatahandlelockonly.h>
#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/vobaseversion.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/threading/bxthreadapi.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using namespace std::chrono_literals;

constexpr std::size_t c_SampleCount = 2048;
constexpr std::int32_t c_SampleRate = 8000;
constexpr int c_PostedRequests = 8;
/// How long the main loop waits for messages of one stage.
constexpr auto c_StageLimit = 3000ms;

/// Throws BxException with `text` unless `condition` holds.
void require(bool condition, const char* function, const std::string& text)
{
    if (!condition)
        BX_THROW(BxException, function, text);
}

std::string format(const char* pattern, auto... values)
{
    char text[256];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

/// The full path of `program` in a directory of PATH, or empty.
std::string findOnPath(const std::string& program)
{
    const char* path = std::getenv("PATH");
    std::string directories = path ? path : "";
    std::size_t begin = 0;
    while (begin <= directories.size()) {
        std::size_t end = directories.find(':', begin);
        if (end == std::string::npos)
            end = directories.size();
        const std::string directory = directories.substr(begin, end - begin);
        const std::string candidate = (directory.empty() ? std::string(".") : directory) + "/" + program;
        if (::access(candidate.c_str(), X_OK) == 0 && !std::filesystem::is_directory(candidate))
            return candidate;
        begin = end + 1;
    }
    return {};
}

/// Runs `program` with `arguments` and returns its exit code (-1 when it could not run).
int runProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
        return -1;
    int status = 0;
    if (::waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Removes a file when it goes out of scope.
class CTemporaryFile
{
public:
    explicit CTemporaryFile(std::filesystem::path path) : m_path(std::move(path)) {}
    ~CTemporaryFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    const std::filesystem::path& GetPath() const noexcept { return m_path; }

private:
    std::filesystem::path m_path;
};

}  // namespace

CDemo::CDemo(CDemoOptions options) : m_options(std::move(options)) {}

CDemo::~CDemo()
{
    try {
        shutdown();
    } catch (...) {
        // Nothing may leave a destructor; the report has been printed already.
    }
}

int CDemo::Run()
{
    CStageRunner runner(stdout, stderr);
    runner.Add("dispatcher", [this] { return stageDispatcher(); });
    runner.Add("data", [this] { return stageData(); });
    runner.Add("tasks", [this] { return stageTasks(); });
    runner.Add("workflow", [this] { return stageWorkflow(); });
    runner.Add("history", [this] { return stageHistory(); });
    runner.Add("archive", [this] { return stageArchive(); });
    runner.Add("graph", [this] { return stageGraph(); });
    runner.Add("shutdown", [this] { return stageShutdown(); });
    if (!m_options.GetFailStage().empty() && !runner.Has(m_options.GetFailStage())) {
        std::fprintf(stderr, "vobase-demo: --fail-stage: no stage is named %s\n", m_options.GetFailStage().c_str());
        return 2;
    }

    std::printf("VoBase %s demo: a vibration log of %zu samples through the runtime\n", VoBaseGetVersionString(),
                c_SampleCount);
    const bool passed = runner.Run(m_options.GetFailStage());
    if (passed) {
        const double ratio = m_archive.fileBytes ? double(m_archive.payloadBytes) / double(m_archive.fileBytes) : 0;
        std::printf("all %zu stages ok in %.1f ms: %llu messages routed, %zu tasks run, archive %llu bytes (%.1f:1)\n",
                    runner.GetCount(), runner.GetTotalMs(), static_cast<unsigned long long>(CMessenger::GetRoutedCount()),
                    m_tasksRun, static_cast<unsigned long long>(m_archive.fileBytes), ratio);
    } else {
        std::printf("FAILED: %zu of %zu stages ok\n", runner.GetPassedCount(), runner.GetCount());
    }
    std::fflush(stdout);
    return passed ? 0 : 1;
}

std::string CDemo::stageDispatcher()
{
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    require(dispatcher.IsRunning() || dispatcher.StartAndWait(), "CDemo::stageDispatcher", "the dispatcher did not start");
    m_ui = std::make_unique<CUiHandler>();
    m_ui->Open();
    m_worker = std::make_unique<CWorkerHandler>();
    require(m_worker->StartAndWait(), "CDemo::stageDispatcher", "the worker's thread did not start");

    // A send blocks the main thread until the worker has answered.
    const LRESULT answer = CMessenger::Send(CMsgRequest(12));
    require(answer == 144, "CDemo::stageDispatcher", format("the worker answered %lld to 12", static_cast<long long>(answer)));

    // Posts return at once; the answers come back as messages to the main loop.
    for (int value = 1; value <= c_PostedRequests; ++value)
        CMessenger::Post(BxSmartPointer<const VoMessage>(new CMsgRequest(value, true)));
    require(m_ui->PumpUntil([this] { return m_ui->GetAnswers().size() >= c_PostedRequests; }, c_StageLimit),
            "CDemo::stageDispatcher", format("%zu of %d posted answers arrived", m_ui->GetAnswers().size(), c_PostedRequests));
    for (const CUiHandler::SAnswer& posted : m_ui->GetAnswers()) {
        require(posted.result == std::int64_t(posted.value) * posted.value, "CDemo::stageDispatcher", "a posted answer is wrong");
        require(posted.threadID == m_worker->GetThreadID() && posted.threadID != GetCurrentThreadId(),
                "CDemo::stageDispatcher", "an answer was not computed on the worker's thread");
    }
    return format("worker thread answered 1 send and %d posts; the main loop received them", c_PostedRequests);
}

std::string CDemo::stageData()
{
    m_document.Create(L"Vibration log, pump 2", c_SampleCount, c_SampleRate);
    require(m_document.GetTitle() == L"Vibration log, pump 2" && m_document.GetStatus() == L"new",
            "CDemo::stageData", "the document's texts do not read back");
    const std::vector<double> samples = m_document.GetSamples();
    require(samples.size() == c_SampleCount && m_document.GetSampleRate() == c_SampleRate, "CDemo::stageData",
            format("the document holds %zu samples", samples.size()));

    // While this thread reads the document, a writer on another thread is refused.
    std::size_t nodes = 0;
    bool writerRefused = false;
    m_document.Read([&](const VoNode& document) {
        document.ApplyRecursive([&](BxSmartPointer<const VoNode>) { ++nodes; });
        std::thread writer([&] {
            VoDataHandleLockOnly<1> handle(m_data, m_document.GetTitleNode());
            VoDataManager::ELockStatus status = VoDataManager::eLS_Granted;
            writerRefused = !m_data.TryLockAndWait(0, status) && status == VoDataManager::eLS_Busy;
        });
        writer.join();
    });
    require(writerRefused, "CDemo::stageData", "a writer got the lock while the document was being read");
    // Once the reader is gone, the same writer gets in.
    m_document.SetTitle(L"Vibration log, pump 2");
    return format("%zu samples in %zu nodes; a writer on another thread was kept out while it was read", samples.size(), nodes);
}

std::string CDemo::stageTasks()
{
    m_ui->ClearProgress();
    m_pipeline = std::make_unique<CAnalysisPipeline>(m_document, *m_ui);
    const std::size_t items = m_pipeline->GetItemNames().size();
    m_pipeline->Start();
    // The main thread keeps its loop running while the pool works.
    m_ui->PumpUntil([&] { return m_ui->GetProgress().size() >= items && m_pipeline->IsFinished(); }, c_StageLimit);
    m_pipeline->Wait();
    m_ui->PumpUntil([&] { return m_ui->GetProgress().size() >= items; }, 100ms);

    std::set<std::uint32_t> threads;
    for (const CUiHandler::SProgress& progress : m_ui->GetProgress()) {
        require(progress.succeeded, "CDemo::stageTasks", "work item " + progress.item + " failed");
        threads.insert(progress.threadID);
    }
    m_tasksRun = m_pipeline->GetComputedCount();
    require(m_tasksRun == items, "CDemo::stageTasks", format("%zu of %zu work items computed", m_tasksRun, items));
    require(m_ui->GetProgress().size() == items, "CDemo::stageTasks",
            format("%zu of %zu progress messages arrived", m_ui->GetProgress().size(), items));
    const CDocument::SResults results = m_document.GetResults();
    require(results == CAnalysisPipeline::Analyse(m_document.GetSamples()), "CDemo::stageTasks",
            "the merged results differ from a sequential analysis");
    return format("%zu work items on %zu pool thread(s), %zu progress messages; rms %.3f, %d crossings", m_tasksRun,
                  threads.size(), m_ui->GetProgress().size(), results.rms, results.crossings);
}

std::string CDemo::stageWorkflow()
{
    m_workflow = std::make_unique<CDocumentWorkflow>(m_document);
    m_workflow->Open();
    require(m_workflow->GetCurrentStateName() == L"idle", "CDemo::stageWorkflow", "the workflow did not start in idle");

    // Both commands go out at once: Finish arrives while Process still runs
    // on the pool, waits in the manager's buffer and is replayed after it.
    CMessenger::Post(BxSmartPointer<const VoMessage>(new VoMessageCommand(CDocumentWorkflow::c_CommandProcess)));
    CMessenger::Post(BxSmartPointer<const VoMessage>(new VoMessageCommand(CDocumentWorkflow::c_CommandFinish)));
    const bool done = m_ui->PumpUntil([this] { return m_workflow->GetCurrentStateName() == L"done"; }, c_StageLimit);

    std::wstring path;
    for (const std::wstring& state : m_workflow->GetJournal())
        path += (path.empty() ? L"" : L" -> ") + state;
    const std::string journey = BxStringConvert::WideToUtf8(path);
    require(done, "CDemo::stageWorkflow", "the workflow stopped at: " + journey);
    require(path == L"idle -> processing -> done", "CDemo::stageWorkflow", "unexpected path: " + journey);
    require(m_document.GetStatus() == L"done", "CDemo::stageWorkflow", "the document's status is not done");
    require(m_workflow->GetProcessTransfer().GetLastThreadID() != GetCurrentThreadId(), "CDemo::stageWorkflow",
            "the pooled transfer function ran on the main thread");
    m_workflow->Close();
    return journey + " (Process on the pool, Finish on the main thread)";
}

std::string CDemo::stageHistory()
{
    const std::wstring title = m_document.GetTitle();
    const std::vector<double> samples = m_document.GetSamples();

    VoHistoryAction* action = m_history.BeginAction(L"Rename and amplify");
    BxSmartPointer<VoOperation> rename(new CSetTitleOperation(m_data, m_document.GetTitleNode(), L"Pump 2, amplified"));
    BxSmartPointer<VoOperation> amplify(new CScaleSamplesOperation(m_data, m_document.GetSamplesNode(), 2.0));
    require(rename->ApplyWithLocking() && amplify->ApplyWithLocking(), "CDemo::stageHistory", "the edit failed");
    m_history.AddOperation(rename.get(), action, &m_titleID, VoHistoryAction::eAIF_Primary);
    m_history.AddOperation(amplify.get(), action, &m_samplesID, VoHistoryAction::eAIF_Primary);
    m_history.EndAction(action);
    require(m_document.GetTitle() == L"Pump 2, amplified" && m_document.GetSamples()[1] == 2 * samples[1],
            "CDemo::stageHistory", "the edit did not change the document");

    require(m_history.Undo(1), "CDemo::stageHistory", "undo failed");
    require(m_document.GetTitle() == title && m_document.GetSamples() == samples, "CDemo::stageHistory",
            "undo did not restore the title and the samples");
    require(m_history.Redo(1) && m_document.GetTitle() == L"Pump 2, amplified", "CDemo::stageHistory", "redo failed");
    require(m_history.Undo(1) && m_document.GetSamples() == samples, "CDemo::stageHistory", "the second undo failed");
    return format("'Rename and amplify' undone: title and %zu samples restored exactly; redone and undone again",
                  samples.size());
}

std::string CDemo::stageArchive()
{
    const CTemporaryFile file(std::filesystem::temp_directory_path() /
                              ("vobase-demo-" + std::to_string(::getpid()) + ".vac"));
    const std::wstring path = file.GetPath().wstring();
    m_document.Read([&](const VoNode& document) { m_archive = CDocumentArchive::Save(document, path); });

    VoDataManager copyManager;
    const BxSmartPointer<VoNode> copy = CDocumentArchive::Load(path, copyManager);
    std::wstring difference;
    bool equal = false;
    m_document.Read([&](const VoNode& document) { equal = CDocumentArchive::Equal(document, *copy, difference); });
    require(equal, "CDemo::stageArchive", "the archive reads back different: " + BxStringConvert::WideToUtf8(difference));
    const double ratio = double(m_archive.payloadBytes) / double(m_archive.fileBytes);
    return format("%llu bytes compressed to %llu (%.1f:1), read back identical",
                  static_cast<unsigned long long>(m_archive.payloadBytes),
                  static_cast<unsigned long long>(m_archive.fileBytes), ratio);
}

std::string CDemo::stageGraph()
{
    require(m_pipeline != nullptr, "CDemo::stageGraph", "there is no task graph");
    const std::string graph = m_pipeline->DumpGraphviz();
    require(graph.rfind("digraph", 0) == 0, "CDemo::stageGraph", "the task manager's dump is not a digraph");
    const std::filesystem::path dotPath(m_options.GetDotPath());
    {
        std::ofstream out(dotPath, std::ios::binary);
        out << graph;
        require(out.good(), "CDemo::stageGraph", "cannot write " + dotPath.string());
    }
    const std::string dot = findOnPath("dot");
    if (dot.empty())
        return "wrote " + dotPath.string() + " (no SVG: dot is not on PATH)";
    std::filesystem::path svgPath = dotPath;
    svgPath.replace_extension(".svg");
    const int code = runProgram(dot, {"-Tsvg", dotPath.string(), "-o", svgPath.string()});
    require(code == 0, "CDemo::stageGraph", format("dot -Tsvg ended with exit code %d", code));
    return "wrote " + dotPath.string() + " and " + svgPath.string();
}

std::string CDemo::stageShutdown()
{
    require(shutdown(), "CDemo::stageShutdown", "the dispatcher's thread did not end");
    return "handlers unsubscribed, worker and dispatcher threads ended";
}

bool CDemo::shutdown()
{
    m_workflow.reset();
    m_pipeline.reset();
    if (m_ui)
        m_ui->Close();
    if (m_worker)
        m_worker->UnsubscribeAll();
    const bool ended = VoMessageDispatcher::GetInstance().ShutdownAndWait(3000);
    m_worker.reset();
    m_ui.reset();
    return ended;
}
