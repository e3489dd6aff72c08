// Interface of objects that write a readable text dump of themselves.
//
//   BxStreamWriteASCIIStringT<CStringW> out;
//   node.dump(out);
//   std::wcout << out.GetString();
//
// The template argument numbers the dump interface's revision; revision 1
// writes the whole dump in one call.
#pragma once

#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/bxtypes.h>

template <int Revision>
class BxIDumpable;

/// Revision 1 of the dump interface: the whole readable dump is written by one call of dump(). Implemented by
/// classes whose state is worth printing for diagnostics (lock tables, trees, task graphs).
template <>
class BxIDumpable<1>
{
public:
    virtual ~BxIDumpable() = default;

    /// Writes the object's dump to `stream`.
    virtual void dump(BxStreamWriteASCIIT<CStringW>& stream) const = 0;
};
