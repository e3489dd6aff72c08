// The document's analysis as a task graph on the shared thread pool:
//
//            +--> mean ------+
//            +--> range -----+
//   load ----+--> rms -------+--> merge
//            +--> crossings -+
//
// "load" copies the samples out of the document under a read lock, the four
// analyses run in parallel on that copy, and "merge" writes their results
// into the document under a write lock. Every item posts a CMsgProgress to
// the progress target when it ends.
//
//   CAnalysisPipeline pipeline(document, ui);
//   pipeline.Start();
//   ui.PumpUntil([&] { return pipeline.IsFinished(); }, 3000ms);
//   pipeline.GetComputedCount();     // 6
//
// The graph's order is the only synchronisation the items need: an item's
// input is complete before the task manager starts it.
#pragma once

#include "document.h"

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/tasks/votaskmanager.h>

#include <cstddef>
#include <string>
#include <vector>

class CAnalysisPipeline
{
public:
    /// The graph for `document`, reporting to `progressTarget`; both must outlive the pipeline.
    CAnalysisPipeline(CDocument& document, const VoMessageHandlerBase& progressTarget);
    /// Stops and waits for a run still going (the task manager's reset).
    ~CAnalysisPipeline() = default;

    /// Starts a run at "load".
    void Start();
    /// True when no item is scheduled or running any more.
    bool IsFinished();
    /// Waits until the run has ended.
    void Wait() { m_manager.WaitUntilTerminate(); }
    /// The items that ended computed in the latest run.
    std::size_t GetComputedCount();
    /// The names of the graph's items, in the order they were added.
    const std::vector<std::string>& GetItemNames() const noexcept { return m_names; }
    /// The task graph in Graphviz form (the task manager's dump).
    std::string DumpGraphviz();

    // The analyses themselves (also usable without the graph).
    static double Mean(const std::vector<double>& samples);
    static void Range(const std::vector<double>& samples, double& min, double& max);
    static double Rms(const std::vector<double>& samples);
    /// Sign changes between neighbouring samples.
    static std::int32_t Crossings(const std::vector<double>& samples);
    /// All of them, one after the other.
    static CDocument::SResults Analyse(const std::vector<double>& samples);

private:
    void add(const std::string& name, std::function<void()> work);

    CDocument& m_document;
    const VoMessageHandlerBase& m_progressTarget;
    std::vector<std::string> m_names;
    std::vector<double> m_samples;     ///< written by load, read by the analyses
    CDocument::SResults m_results;     ///< each field written by one analysis, read by merge
    VoTaskManager m_manager;           ///< last: its reset in the destructor runs before the fields above go
};
