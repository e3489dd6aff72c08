#include <vobase/algorithms/voalgorithm.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionunknownextension.h>
#include <bxbase/diagnostics/bxconditionhandler.h>
#include <bxbase/threading/bxevent.h>

#include <exception>
#include <string>

BX_IMPLEMENT_RTTI_ABSTRACT(VoAlgorithm)
BX_IMPLEMENT_RTTI_EX(VoAlgorithm::VoExceptionNoOutputData, L"VoAlgorithm::VoExceptionNoOutputData", return nullptr,
                     false, nullptr)

namespace {

constexpr bool throwsOn(VoAlgorithm::EComputeFlags flags)
{
    return (flags & VoAlgorithm::eCF_ThrowExceptions) != 0;
}

}  // namespace

// Runs `body` and handles what it throws: with eCF_ThrowExceptions the failure
// goes on to the caller (a standard exception wrapped in BxExceptionStd),
// otherwise it is stored and the result is false.
template <class Body>
bool VoAlgorithm::guarded(EComputeFlags flags, const char* functionName, Body&& body)
{
    try {
        return body();
    } catch (const IException& e) {
        if (throwsOn(flags))
            throw;
        m_exception = std::shared_ptr<const IException>(e.Clone());
    } catch (const std::exception& e) {
        if (throwsOn(flags))
            throw BxExceptionStd(__FILE__, __LINE__, functionName, e);
        m_exception = std::make_shared<BxExceptionStd>(__FILE__, __LINE__, functionName, e);
    } catch (...) {
        if (throwsOn(flags))
            throw;
        m_exception = std::make_shared<BxException>(__FILE__, __LINE__, functionName, "unknown exception");
    }
    return false;
}

bool VoAlgorithm::Init(EComputeFlags flags)
{
    m_exception.reset();
    if (m_initialized)
        return true;
    return guarded(flags, "VoAlgorithm::Init", [this] {
        if (!checkPreConditionsInit())
            conditionNotFulfilled(__LINE__, "VoAlgorithm::Init", "pre-conditions of the initialisation");
        init();
        if (!checkPostConditionsInit())
            conditionNotFulfilled(__LINE__, "VoAlgorithm::Init", "post-conditions of the initialisation");
        m_initialized = true;
        return true;
    });
}

bool VoAlgorithm::Compute(EComputeFlags flags)
{
    m_exception.reset();
    const bool calculated = guarded(flags, "VoAlgorithm::Compute", [this] {
        if (m_calculated)
            conditionNotFulfilled(__LINE__, "VoAlgorithm::Compute", "the algorithm is already calculated");
        Init(static_cast<EComputeFlags>(eCF_ThrowExceptions | eCF_FromCompute));
        if (!checkPreConditions())
            conditionNotFulfilled(__LINE__, "VoAlgorithm::Compute", "pre-conditions of the computation");
        if (!compute())
            return false;
        if (!checkPostConditions())
            conditionNotFulfilled(__LINE__, "VoAlgorithm::Compute", "post-conditions of the computation");
        return true;
    });
    m_calculated = calculated;
    return calculated;
}

IExtensionInterface* VoAlgorithm::GetExtension(const char* name, bool throwIfUnknown)
{
    if (throwIfUnknown)
        BX_THROW(BxExceptionUnknownExtension, "VoAlgorithm::GetExtension",
                 std::string("unknown extension '") + (name ? name : "") + "'");
    return nullptr;
}

const IExtensionInterface* VoAlgorithm::GetExtension(const char* name, bool throwIfUnknown) const
{
    return const_cast<VoAlgorithm*>(this)->GetExtension(name, throwIfUnknown);
}

void VoAlgorithm::checkOutputData() const
{
    if (!m_calculated)
        BX_THROW(VoExceptionNoOutputData, "VoAlgorithm::checkOutputData", "the algorithm is not calculated");
}

bool VoAlgorithm::isBreak() const
{
    return m_breakEvent && m_breakEvent->IsSet();
}

void VoAlgorithm::conditionNotFulfilled(int line, const char* functionName, const char* what) const
{
    BxConditionHandler::Report(__FILE__, line, functionName, BxConditionHandler::eSeverityError);
    throw BxExceptionPreconditionViolation(__FILE__, line, functionName, std::string("condition not fulfilled: ") + what);
}
