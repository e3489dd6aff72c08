// Root of every input stream of the framework (binary and text).
#pragma once

#include <bxbase/bxbaseapi.h>

/// Root of every input stream of the framework (binary and text).
class BXBASE_API BxStreamRead
{
public:
    virtual ~BxStreamRead() = default;
};
