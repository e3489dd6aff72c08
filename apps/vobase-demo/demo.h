// The demo application: a vibration log (a document of 2,048 samples) taken
// through the runtime, one stage at a time (see CStageRunner for the report):
//
//   dispatcher  the dispatcher's thread starts; the main thread, pumping its
//               own message loop like a user-interface thread, sends and
//               posts requests to a worker handler on its own thread
//   data        the document is built in a data manager's tree and read and
//               written under its locks; a writer on another thread is kept out
//   tasks       load -> (mean, range, rms, crossings) -> merge runs on the
//               thread pool, reporting progress to the main thread by message
//   workflow    action messages move the document idle -> processing -> done
//   history     an edit (new title, amplified samples) is undone and redone
//   archive     the document is saved as a compressed archive, read back and compared
//   graph       the task graph is written in Graphviz form (and as SVG when dot exists)
//   shutdown    handlers unsubscribe and the dispatcher's thread ends
//
//   CDemo demo(CDemoOptions::Parse(argc, argv));
//   return demo.Run();
#pragma once

#include "analysispipeline.h"
#include "demooptions.h"
#include "document.h"
#include "documentarchive.h"
#include "documentworkflow.h"
#include "uihandler.h"
#include "workerhandler.h"

#include <vobase/data/vodatamanager.h>
#include <vobase/history/vohistory.h>
#include <vobase/history/vohistoryid.h>

#include <cstddef>
#include <memory>
#include <string>

class CDemo
{
public:
    explicit CDemo(CDemoOptions options);
    /// Ends whatever the stages left running (handlers, tasks, the dispatcher).
    ~CDemo();
    CDemo(const CDemo&) = delete;
    CDemo& operator=(const CDemo&) = delete;

    /// Runs the stages and prints the report; the process exit code: 0 when
    /// every stage passed, 1 when one failed, 2 for an unknown --fail-stage.
    int Run();

private:
    std::string stageDispatcher();
    std::string stageData();
    std::string stageTasks();
    std::string stageWorkflow();
    std::string stageHistory();
    std::string stageArchive();
    std::string stageGraph();
    std::string stageShutdown();

    /// Closes the handlers, stops the tasks and ends the dispatcher's
    /// thread; true when the thread ended in time. Safe to call again.
    bool shutdown();

    CDemoOptions m_options;
    VoDataManager m_data;
    CDocument m_document{m_data};
    std::unique_ptr<CWorkerHandler> m_worker;
    std::unique_ptr<CUiHandler> m_ui;
    std::unique_ptr<CAnalysisPipeline> m_pipeline;  ///< reports to m_ui
    std::unique_ptr<CDocumentWorkflow> m_workflow;
    VoHistory m_history;
    VoHistoryID m_titleID;
    VoHistoryID m_samplesID;
    CDocumentArchive::SInfo m_archive;
    std::size_t m_tasksRun = 0;
};
