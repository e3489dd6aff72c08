#include <bxbase/threading/bxtasktrace.h>

#include <bxbase/threading/bxtask.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <typeindex>
#include <unordered_map>

namespace {

/// The readable name of a class, made once per class and thread.
const std::string& className(const std::type_info& type)
{
    thread_local std::unordered_map<std::type_index, std::string> names;
    auto [it, made] = names.try_emplace(std::type_index(type));
    if (made)
    {
        int status = 0;
        std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                         std::free);
        it->second = status == 0 && demangled ? demangled.get() : type.name();
    }
    return it->second;
}

} // namespace

void BxTaskTrace::Record(const BxTask& task, std::uint64_t start) noexcept
{
    try
    {
        BxTraceRecorder::Complete(kCategory, className(typeid(task)), start);
    }
    catch (...)
    {
        // no memory for the name: the span is lost, the task is not
    }
}
