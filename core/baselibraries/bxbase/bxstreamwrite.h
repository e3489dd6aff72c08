// Root of every output stream of the framework (binary and text).
#pragma once

#include <bxbase/bxbaseapi.h>

/// Root of every output stream of the framework (binary and text).
class BXBASE_API BxStreamWrite
{
public:
    virtual ~BxStreamWrite() = default;
};
