// Operations on the maps of a parameter set, shared by VoParameterSet and
// VoClassParameterSet: lookups with a fallback, the limit check, sorted key
// lists and the binary form of the parameters.
//
//   BxArray<CStringW> keys;
//   VoParameterMaps::SortedKeys(parameters, keys);
//   VoParameterMaps::Write(stream, parameters);   // version 0, u32 count, (name, variant)...
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/bxtypes.h>
#include <bxbase/bxvariant.h>

#include <algorithm>

class BxStreamReadBinary;
class BxStreamWriteBinary;

/// Operations on the maps of a parameter set, shared by VoParameterSet and VoClassParameterSet: lookups with a
/// fallback, the limit check, sorted key lists and the binary form of the parameters.
class VOBASE_API VoParameterMaps
{
public:
    /// Parameter (or constraint) name to value, as the parameter sets keep them.
    using Map = BxMap<CStringW, BxVariant>;

    /// Copies the value of `name` to `out`; nonzero when present.
    static int GetParameter(const Map& parameters, const CStringW& name, BxVariant& out);
    /// `out` receives the value of `name` or `fallback`; nonzero when present.
    static int GetParameter(const Map& parameters, const CStringW& name, const BxVariant& fallback, BxVariant& out);
    /// False when value < minimum[name] or value > maximum[name].
    static bool IsInLimits(const Map& minimum, const Map& maximum, const CStringW& name, const BxVariant& value);

    /// Empties `keys`, appends every key of `map` and sorts them.
    template <class M>
    static void SortedKeys(const M& map, BxArray<CStringW>& keys)
    {
        keys.clear();
        keys.reserve(map.size());
        for (const auto& entry : map)
            keys.push_back(entry.first);
        if (keys.size() > 1)
            std::sort(keys.begin(), keys.end());
    }

    /// Writes version 0 twice (set and map), the u32 count and every (name, variant).
    static void Write(BxStreamWriteBinary& stream, const Map& parameters);
    /// Reads what Write wrote into a new map and swaps it into `parameters` on success.
    static void Read(BxStreamReadBinary& stream, Map& parameters);
};
