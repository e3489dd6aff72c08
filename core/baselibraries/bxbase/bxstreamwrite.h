// Root of every output stream of the framework (binary and text).
#pragma once

#include <bxbase/bxbaseapi.h>

class BXBASE_API BxStreamWrite
{
public:
    virtual ~BxStreamWrite() = default;
};
