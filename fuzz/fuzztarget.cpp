#include "fuzztarget.h"

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <algorithm>

namespace fuzz {

const std::vector<STarget>& Targets()
{
    static const std::vector<STarget> targets = {
        {"variant", FuzzVariant, SeedsVariant},
        {"variant_json", FuzzVariantJson, SeedsVariantJson},
        {"uniqueid", FuzzUniqueId, SeedsUniqueId},
        {"semanticversion", FuzzSemanticVersion, SeedsSemanticVersion},
        {"parameterset", FuzzParameterSet, SeedsParameterSet},
        {"graph", FuzzGraph, SeedsGraph},
        {"chunk", FuzzChunk, SeedsChunk},
        {"json", FuzzJson, SeedsJson},
        {"archive", FuzzArchive, SeedsArchive},
        {"zip", FuzzZip, SeedsZip},
        {"rangecoder", FuzzRangeCoder, SeedsRangeCoder},
        {"predictive", FuzzPredictive, SeedsPredictive},
        {"ascii", FuzzAscii, SeedsAscii},
        {"lzma", FuzzLzma, SeedsLzma},
    };
    return targets;
}

const STarget* Find(std::string_view name)
{
    const auto& targets = Targets();
    const auto found = std::find_if(targets.begin(), targets.end(), [&](const STarget& t) { return name == t.name; });
    return found == targets.end() ? nullptr : &*found;
}

void Run(const STarget& target, const std::uint8_t* data, std::size_t size)
{
    try {
        target.run(data, size);
    } catch (const BxException&) {
        // the reader's answer to bad input
    }
}

void ExpectSameBytes(const Bytes& a, const Bytes& b, const std::string& what)
{
    if (a == b)
        return;
    const auto mismatch = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    throw CFinding(what + ": re-encoding changed the bytes (sizes " + std::to_string(a.size()) + " and " +
                   std::to_string(b.size()) + ", first difference at " +
                   std::to_string(mismatch.first - a.begin()) + ")");
}

void Expect(bool condition, const std::string& what)
{
    if (!condition)
        throw CFinding(what);
}

Bytes BytesOf(const BxStreamWriteBinaryBuffer& buffer)
{
    const auto* data = reinterpret_cast<const std::uint8_t*>(buffer.GetData());
    return Bytes(data, data + buffer.GetCount());
}

Bytes BytesOf(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

}  // namespace fuzz
