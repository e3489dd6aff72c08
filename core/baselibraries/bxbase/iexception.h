// Interface of the framework's exceptions: they can be copied polymorphically
// and rethrown with their dynamic type, which lets an exception caught on one
// thread be carried to and thrown again on another.
#pragma once

#include <bxbase/bxbaseapi.h>

#include <memory>

/// Interface of the framework's exceptions: they can be copied polymorphically and rethrown with their dynamic
/// type, which lets an exception caught on one thread be carried to and thrown again on another.
class BXBASE_API IException
{
public:
    virtual ~IException() = default;

    /// A copy of the exception with its dynamic type.
    virtual std::unique_ptr<IException> Clone() const = 0;

    /// Throws a copy of the exception with its dynamic type.
    [[noreturn]] virtual void Rethrow() const = 0;
};
