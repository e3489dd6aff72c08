// vobase-demo, run as a process: every stage passes and is reported, the task
// graph is written for Graphviz, and failures give a non-zero exit code.
#include "apptestsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> c_Stages{"dispatcher", "data",  "tasks", "workflow",
                                        "history",    "archive", "graph", "shutdown"};

struct SResult
{
    int exitCode;
    std::string out;  // standard output
    std::string err;  // standard error
};

using AppTests::readAll;

bool hasLine(const std::string& text, const std::string& pattern)
{
    return std::regex_search(text, std::regex(pattern, std::regex::multiline));
}

bool dotOnPath()
{
    return std::system("command -v dot >/dev/null 2>&1") == 0;
}

class VoBaseDemo : public AppTests::CTempDirTest
{
protected:
    /// Runs the demo inside the test's directory.
    SResult run(const std::string& arguments) const
    {
        const fs::path err = m_dir / "stderr";
        const std::string command = "cd '" + m_dir.string() + "' && " + VOBASE_DEMO_PATH + " " + arguments + " 2>'" +
                                    err.string() + "'";
        AppTests::SCommandResult ran = AppTests::runCommand(command);
        return SResult{ran.exitCode, std::move(ran.output), readAll(err)};
    }
};

}  // namespace

TEST_F(VoBaseDemo, EveryStagePassesQuicklyAndTheGraphIsWrittenBesideIt)
{
    const auto start = std::chrono::steady_clock::now();
    const SResult result = run("");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_EQ(result.err, "");
    for (const std::string& stage : c_Stages)
        EXPECT_TRUE(hasLine(result.out, "^stage " + stage + " +ok +[0-9.]+ ms")) << stage << "\n" << result.out;
    EXPECT_FALSE(hasLine(result.out, "FAILED|skipped"));

    // The summary's figures: the six work items, some routed messages, an archive smaller than its payload.
    std::smatch summary;
    ASSERT_TRUE(std::regex_search(result.out, summary,
                                  std::regex("all 8 stages ok in [0-9.]+ ms: ([0-9]+) messages routed, ([0-9]+) tasks run, "
                                             "archive ([0-9]+) bytes \\(([0-9.]+):1\\)")))
        << result.out;
    EXPECT_GT(std::stoi(summary[1]), 0);
    EXPECT_EQ(std::stoi(summary[2]), 6);
    EXPECT_GT(std::stoi(summary[3]), 28);  // more than the archive header
    EXPECT_GT(std::stod(summary[4]), 1.0);

    // The default graph file lands in the current directory.
    const std::string graph = readAll(m_dir / "vobase-demo-tasks.dot");
    EXPECT_EQ(graph.rfind("digraph G {", 0), 0u) << graph;
    EXPECT_EQ(fs::exists(m_dir / "vobase-demo-tasks.svg"), dotOnPath());
}

TEST_F(VoBaseDemo, GraphFileShowsTheForkAndTheJoin)
{
    const SResult result = run("--dot graphs.dot");
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    const std::string graph = readAll(m_dir / "graphs.dot");
    ASSERT_EQ(graph.rfind("digraph G {", 0), 0u) << graph;
    for (const char* analysis : {"mean", "range", "rms", "crossings"}) {
        EXPECT_NE(graph.find("\"nodeload\" -> \"node" + std::string(analysis) + "\""), std::string::npos) << graph;
        EXPECT_NE(graph.find("\"node" + std::string(analysis) + "\" -> \"nodemerge\""), std::string::npos) << graph;
    }
    EXPECT_FALSE(fs::exists(m_dir / "vobase-demo-tasks.dot"));
    EXPECT_NE(result.out.find("graphs.dot"), std::string::npos);
}

TEST_F(VoBaseDemo, TraceFileHoldsASpanPerStageAndTheWorkflowSteps)
{
    const SResult result = run("--trace run.json");
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    EXPECT_TRUE(hasLine(result.out, "^trace written to run.json$")) << result.out;
    const std::string trace = readAll(m_dir / "run.json");
    ASSERT_EQ(trace.rfind("{\"traceEvents\":[", 0), 0u) << trace.substr(0, 200);
    for (const std::string& stage : c_Stages)
        EXPECT_NE(trace.find("{\"name\":\"" + stage + "\",\"cat\":\"demo\",\"ph\":\"X\""), std::string::npos) << stage;
    EXPECT_NE(trace.find("\"cat\":\"workflow\",\"ph\":\"i\""), std::string::npos);
    EXPECT_NE(trace.find("\"name\":\"thread_name\",\"ph\":\"M\""), std::string::npos);
}

TEST_F(VoBaseDemo, AFailedStageStopsTheRunWithAReason)
{
    for (std::size_t failing : {std::size_t(0), std::size_t(2), std::size_t(3), c_Stages.size() - 1}) {
        const std::string& name = c_Stages[failing];
        const SResult result = run("--fail-stage " + name);
        EXPECT_EQ(result.exitCode, 1) << name << "\n" << result.out;
        for (std::size_t i = 0; i < c_Stages.size(); ++i) {
            const char* mark = i < failing ? " +ok" : i == failing ? " +FAILED" : " +skipped";
            EXPECT_TRUE(hasLine(result.out, "^stage " + c_Stages[i] + mark)) << name << "\n" << result.out;
        }
        // Exactly one line on standard error, naming the stage.
        EXPECT_TRUE(std::regex_match(result.err, std::regex("vobase-demo: stage " + name + " failed: [^\n]+\n"))) << result.err;
    }
}

TEST_F(VoBaseDemo, AnUnwritableGraphPathFailsTheGraphStage)
{
    const SResult result = run("--dot missing-directory/tasks.dot");
    EXPECT_EQ(result.exitCode, 1) << result.out;
    EXPECT_TRUE(hasLine(result.out, "^stage graph +FAILED .*missing-directory/tasks.dot")) << result.out;
    EXPECT_TRUE(hasLine(result.out, "^stage shutdown +skipped")) << result.out;
    EXPECT_NE(result.err.find("stage graph failed"), std::string::npos) << result.err;
}

TEST_F(VoBaseDemo, CommandLine)
{
    const SResult help = run("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("usage: vobase-demo"), std::string::npos) << help.out;
    EXPECT_FALSE(fs::exists(m_dir / "vobase-demo-tasks.dot"));  // help runs nothing

    for (const char* bad : {"--frobnicate", "--dot", "--fail-stage nonsense"}) {
        const SResult result = run(bad);
        EXPECT_EQ(result.exitCode, 2) << bad;
        EXPECT_EQ(result.out, "") << bad;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << bad << ": " << result.err;
    }
}
