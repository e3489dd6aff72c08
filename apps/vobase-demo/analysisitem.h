// A work item of the analysis task graph: runs a function on a pool thread
// and posts a CMsgProgress (succeeded or failed) to the user-interface
// handler when it ends. An exception of the function is reported and then
// passed on, so that the task manager marks the item failed.
//
//   manager.Add("mean", BxSmartPointer<IWorkItem>(new CAnalysisItem("mean", [&] { mean = average(samples); }, ui)));
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/tasks/iworkitem.h>

#include <bxbase/bxreferencecounter.h>

#include <functional>
#include <string>

class CAnalysisItem : public IWorkItem
{
public:
    /// The item `name`, doing `work`, reporting to `progressTarget` (which
    /// must outlive the item's runs).
    CAnalysisItem(std::string name, std::function<void()> work, const VoMessageHandlerBase& progressTarget);

    /// Nothing to prepare: the graph's order hands each item its input.
    void Prepare(VoGraphNode&) override {}
    /// Always ready.
    bool IsReady() const override { return true; }
    /// Does the work unless a stop was asked for, then reports.
    void Run(TaskManager::SWorkItemStatus& status) override;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

private:
    void report(bool succeeded) const;

    std::string m_name;
    std::function<void()> m_work;
    const VoMessageHandlerBase& m_progressTarget;
    mutable BxReferenceCounter<unsigned int> m_counter;
};
