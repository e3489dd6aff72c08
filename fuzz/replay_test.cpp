// Replays every fuzz target, built without libFuzzer, on its seeds, on every
// prefix of each seed, and on every input in regressions/<target>/ (each one
// once made a target fail), so that a fixed fault stays fixed in every build.
#include "fuzztarget.h"

#include <vobase/objects/vovariant.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/persistence/cexception.h>
#include <bxbase/persistence/cjsondatareader.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::vector<const fuzz::STarget*> allTargets()
{
    std::vector<const fuzz::STarget*> targets;
    for (const fuzz::STarget& target : fuzz::Targets())
        targets.push_back(&target);
    return targets;
}

std::vector<fuzz::Bytes> seedsOf(const fuzz::STarget& target)
{
    std::vector<fuzz::Bytes> seeds;
    target.seeds(seeds);
    return seeds;
}

class FuzzReplay : public ::testing::TestWithParam<const fuzz::STarget*>
{
};

// The seeds are valid inputs: at least one decodes without any exception, so
// that the target's round trip is exercised, and none makes anything escape.
// Then every input that once made the target fail (regressions/<target>/).
TEST_P(FuzzReplay, SeedsAndRegressionsStayFixed)
{
    const fuzz::STarget& target = *GetParam();
    const auto seeds = seedsOf(target);
    ASSERT_FALSE(seeds.empty());
    int decoded = 0;
    for (const fuzz::Bytes& seed : seeds) {
        try {
            target.run(seed.data(), seed.size());
            ++decoded;
        } catch (const BxException&) {
        }
    }
    EXPECT_GT(decoded, 0) << "no seed of " << target.name << " decodes";

    const std::filesystem::path folder = std::filesystem::path(VOBASE_FUZZ_REGRESSIONS) / target.name;
    if (!std::filesystem::is_directory(folder))
        return;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file() || entry.path().filename().string().front() == '.')
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const fuzz::Bytes input((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_NO_THROW(fuzz::Run(target, input.data(), input.size())) << entry.path();
    }
}

// A valid input cut at any byte position makes the reader throw the library's
// exception or succeed (where a short read is fine), never anything else.
TEST_P(FuzzReplay, SeedsCutAtEveryByteThrowOnlyTheLibrarysException)
{
    const fuzz::STarget& target = *GetParam();
    for (const fuzz::Bytes& seed : seedsOf(target))
        for (std::size_t cut = 0; cut < seed.size(); ++cut) {
            const fuzz::Bytes prefix(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(cut));
            EXPECT_NO_THROW(fuzz::Run(target, prefix.data(), prefix.size()))
                << target.name << " cut at " << cut << " of " << seed.size();
        }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay, ::testing::ValuesIn(allTargets()),
                         [](const auto& info) { return std::string(info.param->name); });

// Once a fault: a decoded variant holding 1e30f converted to int was a plain
// cast, undefined behaviour.
TEST(FuzzRegressions, AVariantHolding1e30fReadAsInt)
{
    BxStreamWriteBinaryBuffer out;
    VoVariant(BxVariant(1e30f)).Serialize(out);
    const fuzz::Bytes input = fuzz::BytesOf(out);
    EXPECT_NO_THROW(fuzz::Run(*fuzz::Find("variant"), input.data(), input.size()));
    EXPECT_THROW(BxVariant(1e30f).GetAs<int>(), BxExceptionPreconditionViolation);
}

// Once a fault: a JSON document 100,000 levels deep parsed, and the nested
// read then overflowed the stack.
TEST(FuzzRegressions, JsonAHundredThousandLevelsDeep)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "{\"Value\":";
    deep += "{}" + std::string(100000, '}');
    const fuzz::Bytes input = fuzz::BytesOf(deep);
    for (const char* name : {"json", "variant_json"})
        EXPECT_NO_THROW(fuzz::Run(*fuzz::Find(name), input.data(), input.size())) << name;
    EXPECT_THROW(Persistence::CJsonDataReader reader(deep), Persistence::CException);
}

}  // namespace
