#include <vocompression/voprobabilitymodelquasistatic.h>

#include <bxbase/bxexceptionpreconditionviolation.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

using Table = std::vector<std::uint32_t>;

void ExpectConstructorRefuses(std::uint32_t n, std::uint32_t bits, std::uint32_t target)
{
    try {
        VoProbabilityModelQuasiStatic model(n, bits, target);
        ADD_FAILURE() << "accepted n=" << n << " bits=" << bits << " target=" << target;
    } catch (const BxExceptionPreconditionViolation& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoProbabilityModelQuasiStatic::VoProbabilityModelQuasiStatic");
    }
}

// Checks that the table is a valid model: starts at 0, ends at 2^b, every symbol has a frequency.
void ExpectConsistent(const VoProbabilityModelQuasiStatic& model)
{
    const Table& table = model.GetCumulativeFrequencies();
    ASSERT_EQ(table.size(), model.GetNumberOfSymbols() + 1);
    EXPECT_EQ(table.front(), 0u);
    EXPECT_EQ(table.back(), 1u << model.GetTotalBits());
    for (std::size_t s = 0; s + 1 < table.size(); ++s)
        ASSERT_LT(table[s], table[s + 1]) << "symbol " << s << " has no interval";
}

}  // namespace

TEST(VoProbabilityModelQuasiStatic, ConstructorChecksItsPreconditions)
{
    ExpectConstructorRefuses(1, 16, 1024);              // fewer than 2 symbols
    ExpectConstructorRefuses(0, 16, 1024);
    ExpectConstructorRefuses(2, 17, 1024);              // more than 16 bits
    ExpectConstructorRefuses((1 << 14) + 1, 16, 1024);  // 2^16 < 4n
    ExpectConstructorRefuses(3, 3, 4);                  // 8 < 12
    ExpectConstructorRefuses(2, 16, 1 << 17);           // target must stay below 2^(b+1)
    ExpectConstructorRefuses(2, 16, 0);                 // an empty interval cannot spread counts

    // The extremes that are legal.
    EXPECT_NO_THROW(VoProbabilityModelQuasiStatic(2, 16, 1024));
    EXPECT_NO_THROW(VoProbabilityModelQuasiStatic(1 << 14, 16, 1024));
    EXPECT_NO_THROW(VoProbabilityModelQuasiStatic(2, 3, 15));
    EXPECT_NO_THROW(VoProbabilityModelQuasiStatic(2, 16, (1 << 17) - 1));
}

TEST(VoProbabilityModelQuasiStatic, ResetSpreadsTheTotalAsEvenlyAsPossible)
{
    VoProbabilityModelQuasiStatic three(3, 16, 1024);
    EXPECT_EQ(three.GetCumulativeFrequencies(), (Table{0, 21846, 43691, 65536}));

    VoProbabilityModelQuasiStatic five(5, 5, 8);  // 32 = 7 + 7 + 6 + 6 + 6
    EXPECT_EQ(five.GetCumulativeFrequencies(), (Table{0, 7, 14, 20, 26, 32}));
}

TEST(VoProbabilityModelQuasiStatic, RebuildFoldsTheCountsOfOneInterval)
{
    // n = 3: the interval is min(1024, 2 * max(0, 2)) = 4. The halved reset
    // counts are 10923, 10922, 10922; the missing 32769 come as increments
    // 8192, 8192, 8192, 8193 over the next four updates.
    VoProbabilityModelQuasiStatic model(3, 16, 1024);
    std::uint32_t cumulative = 0;
    std::uint32_t frequency = 0;
    for (int i = 0; i < 3; ++i) {
        model.GetFrequencies(0, cumulative, frequency);
        EXPECT_EQ(cumulative, 0u);
        EXPECT_EQ(frequency, 21846u);  // unchanged until the rebuild
    }
    model.GetFrequencies(0, cumulative, frequency);
    EXPECT_EQ(model.GetCumulativeFrequencies(), (Table{0, 10923 + 3 * 8192 + 8193, 10923 + 3 * 8192 + 8193 + 10922,
                                                       65536}));

    // The second interval is twice as long: 8 updates leave the table alone until the last.
    const Table after = model.GetCumulativeFrequencies();
    for (int i = 0; i < 7; ++i)
        model.GetFrequencies(2, cumulative, frequency);
    EXPECT_EQ(model.GetCumulativeFrequencies(), after);
    model.GetFrequencies(2, cumulative, frequency);
    EXPECT_NE(model.GetCumulativeFrequencies(), after);
    ExpectConsistent(model);

    model.Reset();
    EXPECT_EQ(model.GetCumulativeFrequencies(), (Table{0, 21846, 43691, 65536}));
}

TEST(VoProbabilityModelQuasiStatic, StaysConsistentUnderSkewedTraffic)
{
    std::mt19937 random(7);
    for (const std::uint32_t n : {2u, 3u, 256u, 16384u}) {
        VoProbabilityModelQuasiStatic model(n, 16, 1024);
        std::geometric_distribution<std::uint32_t> skewed(0.3);
        std::uint32_t cumulative = 0;
        std::uint32_t frequency = 0;
        for (int i = 0; i < 20000; ++i) {
            model.GetFrequencies(std::min(skewed(random), n - 1), cumulative, frequency);
            ASSERT_GE(frequency, 1u);
            ASSERT_LE(cumulative + frequency, 65536u);
        }
        ExpectConsistent(model);
        // The frequent symbol 0 has gained most of the total.
        EXPECT_GT(model.GetCumulativeFrequencies()[1], 65536u / 8) << "n = " << n;
    }
}

TEST(VoProbabilityModelQuasiStatic, SymbolSearchMirrorsTheEncoderSide)
{
    // A copy made before any traffic stays in step with the original when one
    // side encodes and the other decodes the same sequence.
    std::mt19937 random(11);
    for (const std::uint32_t n : {2u, 3u, 17u, 256u}) {
        VoProbabilityModelQuasiStatic encoder(n, 12, 64);
        VoProbabilityModelQuasiStatic decoder(encoder);
        for (int i = 0; i < 5000; ++i) {
            const std::uint32_t symbol = random() % n;
            std::uint32_t cumulative = 0;
            std::uint32_t frequency = 0;
            encoder.GetFrequencies(symbol, cumulative, frequency);
            // Any value inside the interval finds the symbol.
            std::uint32_t value = cumulative + random() % frequency;
            std::uint32_t decodedFrequency = 0;
            ASSERT_EQ(decoder.GetSymbol(value, decodedFrequency), symbol);
            ASSERT_EQ(value, cumulative);
            ASSERT_EQ(decodedFrequency, frequency);
        }
        EXPECT_EQ(encoder.GetCumulativeFrequencies(), decoder.GetCumulativeFrequencies());
    }
}

TEST(VoProbabilityModelQuasiStatic, ValuesBeyondTheTotalFindTheLastSymbol)
{
    VoProbabilityModelQuasiStatic model(5, 8, 16);
    for (const std::uint32_t beyond : {256u, 1000u, 0xFFFFFFFFu}) {
        std::uint32_t value = beyond;
        std::uint32_t frequency = 0;
        EXPECT_EQ(model.GetSymbol(value, frequency), 4u);
    }
}

TEST(VoProbabilityModelQuasiStatic, RefusesASymbolOutsideTheAlphabet)
{
    VoProbabilityModelQuasiStatic model(4, 16, 1024);
    std::uint32_t cumulative = 0;
    std::uint32_t frequency = 0;
    EXPECT_THROW(model.GetFrequencies(4, cumulative, frequency), BxExceptionPreconditionViolation);
    EXPECT_THROW(model.GetFrequencies(0xFFFFFFFF, cumulative, frequency), BxExceptionPreconditionViolation);
}

TEST(VoProbabilityModelQuasiStatic, EveryValueFindsTheIntervalThatHoldsIt)
{
    std::mt19937 random(13);
    for (const auto& [n, bits] : {std::pair{3u, 16u}, {256u, 16u}, {16384u, 16u}, {2u, 3u}, {1000u, 12u}}) {
        VoProbabilityModelQuasiStatic model(n, bits, std::min(1024u, (2u << bits) - 1));
        std::geometric_distribution<std::uint32_t> skewed(0.01);
        std::uint32_t cumulative = 0;
        std::uint32_t frequency = 0;
        for (int i = 0; i < 5000; ++i)
            model.GetFrequencies(std::min(skewed(random), n - 1), cumulative, frequency);
        // The model keeps updating while it is searched; each answer is checked
        // against the interval the search reports.
        for (std::uint32_t value = 0; value < (1u << bits); ++value) {
            std::uint32_t found = value;
            model.GetSymbol(found, frequency);
            ASSERT_LE(found, value) << n << " symbols";
            ASSERT_LT(value, found + frequency) << n << " symbols";
        }
    }
}
