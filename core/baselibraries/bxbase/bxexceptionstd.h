// BxExceptionStd: a standard exception (std::bad_alloc, std::out_of_range...)
// carried into the framework's family; it keeps the original what() text as
// its message.
//
//   try { ... } catch (const std::exception& e) {
//       throw BxExceptionStd(__FILE__, __LINE__, "CFoo::Run", e);
//   }
#pragma once

#include <bxbase/bxexception.h>

/// BxExceptionStd: a standard exception (std::bad_alloc, std::out_of_range...) carried into the framework's
/// family; it keeps the original what() text as its message.
class BXBASE_API BxExceptionStd : public BxException
{
public:
    /// Records the throwing place and copies `inner.what()` as the message; `inner` itself is not kept.
    BxExceptionStd(const char* sourceFile, int line, const char* functionName, const std::exception& inner)
        : BxException(sourceFile, line, functionName, std::string(inner.what()))
    {
    }

    std::unique_ptr<IException> Clone() const override { return std::make_unique<BxExceptionStd>(*this); }
    [[noreturn]] void Rethrow() const override { throw *this; }
};
