// Operations on plain integer objects for the history tests: a relative
// addition and an absolute assignment, both able to log what they do.
#pragma once

#include <vobase/data/vodatamanager.h>
#include <vobase/history/vohistoryid.h>
#include <vobase/history/vooperation.h>
#include <vobase/history/vooperationabsolute.h>

#include <string>
#include <vector>

namespace HistoryTest {

/// An edited object: its value, its history identifier and, when `manager`
/// is set, the node its operations lock.
struct CObject
{
    int value = 0;
    VoHistoryID id;
    BxSmartPointer<VoNode> node;
    VoDataManager* manager = nullptr;
};

using Log = std::vector<std::string>;

/// Sets value to after() on apply and to before() on revert, logging "apply name" / "revert name".
template <class Base>
class CLoggedOperation : public Base
{
public:
    bool Apply() override { return step("apply ", after()); }
    bool Revert() override { return step("revert ", before()); }

protected:
    template <class... BaseArgs>
    CLoggedOperation(CObject& object, std::string name, Log* log, BaseArgs... args)
        : Base(args...), m_object(object), m_name(std::move(name)), m_log(log)
    {
        if (object.manager) {
            this->SetDataManager(object.manager);
            this->AddNodePointerToLock(object.node);
        }
    }
    virtual int after() const = 0;
    virtual int before() const = 0;
    CObject& m_object;

private:
    bool step(const char* what, int value)
    {
        if (m_log)
            m_log->push_back(what + m_name);
        m_object.value = value;
        return true;
    }
    std::string m_name;
    Log* m_log;
};

/// value += delta; reverted by value -= delta.
class COpAdd : public CLoggedOperation<VoOperation>
{
public:
    COpAdd(CObject& object, int delta, std::string name = {}, Log* log = nullptr, bool reversible = true)
        : CLoggedOperation(object, std::move(name), log, reversible, false), m_delta(delta)
    {
    }

private:
    int after() const override { return m_object.value + m_delta; }
    int before() const override { return m_object.value - m_delta; }
    int m_delta;
};

/// value = newValue; reverted by value = the value it had when the operation was made.
class COpSet : public CLoggedOperation<VoOperationAbsolute>
{
public:
    COpSet(CObject& object, int newValue, std::string name = {}, Log* log = nullptr)
        : CLoggedOperation(object, std::move(name), log, true), m_old(object.value), m_new(newValue)
    {
    }
    int GetNewValue() const { return m_new; }

private:
    int after() const override { return m_new; }
    int before() const override { return m_old; }
    int m_old;
    int m_new;
};

}  // namespace HistoryTest
