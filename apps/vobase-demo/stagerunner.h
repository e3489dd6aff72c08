// Runs the demo's stages in order and reports each on one line:
//
//   stage dispatcher ok        0.9 ms  worker answered 1 send and 8 posts
//   stage tasks      FAILED    3.1 ms  merge did not run
//   stage workflow   skipped
//
// A stage is a function that returns a short result text and throws on
// failure. The stages build on each other, so after a failure the rest are
// skipped; the reason is also written to standard error as one line.
//
//   CStageRunner runner(stdout, stderr);
//   runner.Add("data", [&] { return buildDocument(); });
//   bool ok = runner.Run("");
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

class CStageRunner
{
public:
    /// Returns the stage's result text; throws when the stage fails.
    using Body = std::function<std::string()>;

    /// A runner that reports to `out` and writes failure reasons to `err`.
    CStageRunner(std::FILE* out, std::FILE* err) : m_out(out), m_err(err) {}

    /// Appends a stage.
    void Add(std::string name, Body body);
    /// True when a stage of that name was added.
    bool Has(const std::string& name) const;

    /// Runs the stages in order; the stage named `failStage` (if any) fails
    /// at its start. True when every stage passed.
    bool Run(const std::string& failStage);

    /// Stages that passed in the latest run.
    std::size_t GetPassedCount() const noexcept { return m_passed; }
    std::size_t GetCount() const noexcept { return m_stages.size(); }
    /// Time spent in the stages of the latest run, in milliseconds.
    double GetTotalMs() const noexcept { return m_totalMs; }

private:
    struct SStage
    {
        std::string name;
        Body body;
    };

    /// Runs one stage; false (after reporting) when it failed.
    bool runStage(const SStage& stage, bool failOnPurpose);
    void report(const std::string& name, const char* mark, double ms, const std::string& text) const;

    std::FILE* m_out;
    std::FILE* m_err;
    std::vector<SStage> m_stages;
    std::size_t m_passed = 0;
    double m_totalMs = 0;
};
