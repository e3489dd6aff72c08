// Operations on plain integer objects for the history tests: a relative
// addition and an absolute assignment, both logging what they do.
#pragma once

#include <vobase/data/vodatamanager.h>
#include <vobase/history/vohistoryid.h>
#include <vobase/history/vooperation.h>
#include <vobase/history/vooperationabsolute.h>

#include <string>
#include <vector>

namespace HistoryTest {

/// An edited object: its value, its history identifier and (optionally) the
/// node its operations lock.
struct CObject
{
    int value = 0;
    VoHistoryID id;
    BxSmartPointer<VoNode> node;
    VoDataManager* manager = nullptr;
};

using Log = std::vector<std::string>;

inline void prepare(VoOperation& operation, CObject& object)
{
    if (object.manager) {
        operation.SetDataManager(object.manager);
        operation.AddNodePointerToLock(object.node);
    }
}

/// value += delta; reverted by value -= delta.
class COpAdd : public VoOperation
{
public:
    COpAdd(CObject& object, int delta, std::string name = {}, Log* log = nullptr, bool reversible = true)
        : VoOperation(reversible, false), m_object(object), m_delta(delta), m_name(std::move(name)), m_log(log)
    {
        prepare(*this, object);
    }
    bool Apply() override
    {
        note("apply ");
        m_object.value += m_delta;
        return true;
    }
    bool Revert() override
    {
        note("revert ");
        m_object.value -= m_delta;
        return true;
    }

private:
    void note(const char* what)
    {
        if (m_log)
            m_log->push_back(what + m_name);
    }
    CObject& m_object;
    int m_delta;
    std::string m_name;
    Log* m_log;
};

/// value = newValue; reverted by value = the value it had when the operation was made.
class COpSet : public VoOperationAbsolute
{
public:
    COpSet(CObject& object, int newValue, std::string name = {}, Log* log = nullptr, bool reversible = true)
        : VoOperationAbsolute(reversible), m_object(object), m_old(object.value), m_new(newValue),
          m_name(std::move(name)), m_log(log)
    {
        prepare(*this, object);
    }
    bool Apply() override
    {
        note("apply ");
        m_object.value = m_new;
        return true;
    }
    bool Revert() override
    {
        note("revert ");
        m_object.value = m_old;
        return true;
    }
    int GetNewValue() const { return m_new; }

private:
    void note(const char* what)
    {
        if (m_log)
            m_log->push_back(what + m_name);
    }
    CObject& m_object;
    int m_old;
    int m_new;
    std::string m_name;
    Log* m_log;
};

}  // namespace HistoryTest
