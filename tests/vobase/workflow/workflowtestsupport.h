// Helpers of the workflow tests: a capturing logger, a journal of callbacks,
// states and transfer functions that write to it, a condition driven by a
// flag, a manager that counts its error hook, and a message pump.
#pragma once

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/voworkflowmanager.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/windows/bxmessageloop.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace WorkflowTests {

constexpr std::int64_t kFail = static_cast<std::int32_t>(0x80004005);

/// Keeps every line with its level; the pool threads log too, so all access is locked.
class CCapturingLogger : public Logging::ILogger
{
public:
    struct SLine
    {
        Logging::ELogLevel level;
        std::wstring message;
    };

    bool IsEnabled(Logging::ELogLevel) const override { return true; }
    void Log(Logging::ELogLevel level, const char*, int, const char*, const std::wstring& message) override
    {
        std::lock_guard lock(m_mutex);
        m_lines.push_back({level, message});
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_counter; }

    /// The texts of the lines kept at `level` or above (all by default).
    std::vector<std::wstring> Messages(Logging::ELogLevel level = Logging::eLL_Trace) const
    {
        std::lock_guard lock(m_mutex);
        std::vector<std::wstring> texts;
        for (const SLine& line : m_lines)
            if (line.level <= level)
                texts.push_back(line.message);
        return texts;
    }
    /// The texts logged at exactly `level`.
    std::vector<std::wstring> MessagesAt(Logging::ELogLevel level) const
    {
        std::lock_guard lock(m_mutex);
        std::vector<std::wstring> texts;
        for (const SLine& line : m_lines)
            if (line.level == level)
                texts.push_back(line.message);
        return texts;
    }
    bool Has(const std::wstring& message) const
    {
        const std::vector<std::wstring> texts = Messages();
        return std::find(texts.begin(), texts.end(), message) != texts.end();
    }
    void Clear()
    {
        std::lock_guard lock(m_mutex);
        m_lines.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<SLine> m_lines;
    mutable BxReferenceCounter<unsigned int> m_counter;
};

/// The callbacks that states and transfer functions received, in order ("CImportStep::onSleep").
class CJournal
{
public:
    void Add(std::wstring entry)
    {
        std::lock_guard lock(m_mutex);
        m_entries.push_back(std::move(entry));
    }
    std::vector<std::wstring> Entries() const
    {
        std::lock_guard lock(m_mutex);
        return m_entries;
    }
    void Clear()
    {
        std::lock_guard lock(m_mutex);
        m_entries.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_entries;
};

/// A state that writes each callback to a journal; its class name comes from
/// the subclass. The callback named `throwFrom` ("onSleep") throws after its
/// entry: a BxException, or a std::exception when `throwForeign` is set.
class CJournalState : public VoWorkflowState
{
public:
    CJournal* journal = nullptr;
    std::wstring throwFrom;
    bool throwForeign = false;

    void onInit(bool sleeping) override { note(sleeping ? L"onInit(sleeping)" : L"onInit(active)"); }
    void onAfterEnter() override { note(L"onAfterEnter"); }
    void onBeforeDifferentWFSReached() override { note(L"onBeforeDifferentWFSReached"); }
    void onAfterDifferentWFSLeft(bool) override { note(L"onAfterDifferentWFSLeft"); }
    void onContinue() override { note(L"onContinue"); }
    void onSleep() override { note(L"onSleep"); }
    void onExit() override { note(L"onExit"); }
    void onReevaluate(bool changed) override { note(changed ? L"onReevaluate(changed)" : L"onReevaluate(same)"); }
    void onException(const BxException* exception) override
    {
        if (journal)
            journal->Add(std::wstring(GetClassNameW()) + (exception ? L"::onException(BxException)"
                                                                    : L"::onException(foreign)"));
    }

private:
    void note(const wchar_t* callback)
    {
        if (journal)
            journal->Add(std::wstring(GetClassNameW()) + L"::" + callback);
        const std::wstring name(callback);
        if (throwFrom.empty() || name.compare(0, throwFrom.size(), throwFrom) != 0)
            return;
        if (throwForeign)
            throw std::runtime_error("CJournalState");
        throw BxException(__FILE__, __LINE__, "CJournalState::callback");
    }
};

class CImportStep : public CJournalState
{
    BX_DECLARE_RTTI();
};
class CProcessStep : public CJournalState
{
    BX_DECLARE_RTTI();
};
class CReviewStep : public CJournalState
{
    BX_DECLARE_RTTI();
};

/// An action message carrying a number; any two of them are equal (one
/// transfer function takes them all). Its text form is "CMsgStep #<value>".
class CMsgStep : public VoMessageWorkflowAction
{
    BX_DECLARE_RTTI();

public:
    explicit CMsgStep(int value = 0) : value(value) {}
    bool operator==(const VoMessage& other) const override { return other.IsKindOf(CMsgStep::RTTI); }
    void Dump(BxStreamWriteASCIIT<CStringW>& stream) const override
    {
        VoMessage::Dump(stream);
        stream << L" #" << value;
    }
    int value;
};

/// A condition answering a flag that any thread may flip; dumps its label.
class CFlag : public VoWorkflowStateCondition
{
public:
    explicit CFlag(bool value, const wchar_t* label = L"flag") : value(value), m_label(label) {}
    std::atomic<bool> value;

protected:
    bool check() const override { return value.load(); }
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override { stream << m_label; }

private:
    std::wstring m_label;
};

/// An automatic transfer function whose body is a function; it records the
/// value of each CMsgStep it runs for (-1 for another message) and every
/// exception its body raised, and can wait for a gate before the body.
class CScriptedTF : public VoTransferFunctionAutomatic
{
public:
    using Body = std::function<void(const VoMessageWorkflowAction&)>;

    CScriptedTF(const VoMessageHandlerBase& handler, VoMessageWorkflowAction* init, bool breakSupport, bool blocking,
                const wchar_t* name, Body body = {})
        : VoTransferFunctionAutomatic(handler, BxSmartPointer<const VoMessageWorkflowAction>(init), breakSupport,
                                      blocking, name),
          m_body(std::move(body))
    {
    }
    std::vector<int> Values() const
    {
        std::lock_guard lock(m_mutex);
        return m_values;
    }
    int Exceptions() const { return m_exceptions.load(); }

    BxEvent started;     ///< set when the body begins
    BxEvent gate{true};  ///< the body waits for it (open by default)
    bool throwFromOnException = false;

protected:
    void execute(const VoMessageWorkflowAction& message) override
    {
        started.Set();
        gate.Wait();
        {
            std::lock_guard lock(m_mutex);
            m_values.push_back(message.IsKindOf(CMsgStep::RTTI) ? static_cast<const CMsgStep&>(message).value : -1);
        }
        if (m_body)
            m_body(message);
    }
    void onException(const BxException*) override
    {
        ++m_exceptions;
        if (throwFromOnException)
            throw BxException(__FILE__, __LINE__, "CScriptedTF::onException");
    }

private:
    Body m_body;
    mutable std::mutex m_mutex;  // execute may run on a pool thread
    std::vector<int> m_values;
    std::atomic<int> m_exceptions{0};
};

/// An interactive transfer function that writes its callbacks to a journal
/// and can throw from onInit or onExit.
class CJournalITF : public VoTransferFunctionInteractive
{
public:
    CJournalITF(VoMessageWorkflowAction* init, bool breakSupport, bool blockingExit, const wchar_t* name,
                CJournal& journal)
        : VoTransferFunctionInteractive(BxSmartPointer<const VoMessageWorkflowAction>(init), breakSupport,
                                        blockingExit, name),
          m_journal(journal)
    {
    }
    bool throwOnInit = false;
    bool throwOnExit = false;
    std::function<void()> exitBody;  ///< runs inside onExit (on the pool for a non-blocking exit)

    void onInit(const VoMessageWorkflowAction& message) override
    {
        m_journal.Add(GetName() + L"::onInit");
        VoTransferFunctionInteractive::onInit(message);
        if (throwOnInit)
            throw BxException(__FILE__, __LINE__, "CJournalITF::onInit");
    }
    void onExit() override
    {
        m_journal.Add(GetName() + L"::onExit");
        VoTransferFunctionInteractive::onExit();
        if (exitBody)
            exitBody();
        if (throwOnExit)
            throw BxException(__FILE__, __LINE__, "CJournalITF::onExit");
    }
    void onSleep() override
    {
        m_journal.Add(GetName() + L"::onSleep");
        VoTransferFunctionInteractive::onSleep();
    }
    void onContinue() override
    {
        m_journal.Add(GetName() + L"::onContinue");
        VoTransferFunctionInteractive::onContinue();
    }
    void onBreak() override { m_journal.Add(GetName() + L"::onBreak"); }

private:
    CJournal& m_journal;
};

/// A manager that counts what reaches its error hook and can make chosen
/// hooks throw. It lives on the test's thread.
class CProbeManager : public VoWorkflowManager
{
public:
    using VoWorkflowManager::VoWorkflowManager;

    int errors = 0;          ///< calls of the error hook with an exception of the BxException family
    int foreignErrors = 0;   ///< calls of the error hook without one
    bool throwOnBreak = false;
    bool throwOnStartTransferFunction = false;
    std::function<void(const VoMessage&, LRESULT)> delivered;  ///< each message the dispatcher delivered

protected:
    void onError(const BxException* exception) override { exception ? ++errors : ++foreignErrors; }
    void onBreak() override
    {
        if (throwOnBreak)
            throw BxException(__FILE__, __LINE__, "CProbeManager::onBreak");
    }
    void onStartTransferFunction(const STransferFunction&) override
    {
        if (throwOnStartTransferFunction)
            throw BxException(__FILE__, __LINE__, "CProbeManager::onStartTransferFunction");
    }
    LRESULT handleMessage(const VoMessage& message) override
    {
        const LRESULT result = VoWorkflowManager::handleMessage(message);
        if (delivered)
            delivered(message, result);
        return result;
    }
};

/// Starts the dispatcher once for every workflow test.
class WorkflowFixture : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (!VoMessageDispatcher::GetInstance().IsRunning()) {
            ASSERT_TRUE(VoMessageDispatcher::GetInstance().StartAndWait());
        }
    }
};

/// Pumps the calling thread's messages until `done` holds (at most about
/// 100 s, so that a fault fails the test instead of hanging it).
inline bool pumpUntil(const std::function<bool()>& done)
{
    for (int round = 0; round < 2000 && !done(); ++round)
        BxMessageLoop::ProcessPending(50);
    return done();
}

inline std::int64_t send(VoWorkflowManager& manager, VoMessageWorkflow::EMessage message)
{
    return manager.HandleMessage(VoMessageWorkflow(message)).Get();
}

/// The text of the dump of `manager`.
inline std::wstring dumpText(const VoWorkflowManager& manager)
{
    BxStreamWriteASCIIStringT<CStringW> out;
    manager.dump(out);
    return out.GetString();
}

inline std::wstring conditionText(const VoWorkflowManager& manager)
{
    BxStreamWriteASCIIStringT<CStringW> out;
    manager.dumpConditions(out);
    return out.GetString();
}

}  // namespace WorkflowTests
