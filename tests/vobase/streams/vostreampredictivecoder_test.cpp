#include <vobase/streams/vostreamreadpredictivecoder.h>
#include <vobase/streams/vostreamwritepredictivecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <vocompression/vocompressrangecoder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Pair = std::pair<std::uint32_t, std::uint32_t>;  // value, prediction

Bytes Contents(const BxStreamWriteBinaryBuffer& out)
{
    const auto* begin = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(begin, begin + out.GetCount());
}

Bytes PredictiveBlock(std::uint32_t bits, const std::vector<Pair>& pairs)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWritePredictiveCoder coder(out, bits, 64);
        for (const auto& [value, prediction] : pairs)
            coder.WriteValue(value, prediction);
    }
    return Contents(out);
}

// The block the predictive coder should produce: version 0, then the range
// coder message that `code` writes with the 2B+1 symbol model.
Bytes ExpectedBlock(std::uint32_t bits, const std::function<void(VoCompressRangeCoder&)>& code)
{
    BxStreamWriteBinaryBuffer out;
    out.WriteVersion(0);
    {
        VoCompressRangeCoder coder(out, 2 * bits + 1, 0);
        code(coder);
    }
    return Contents(out);
}

std::vector<std::uint32_t> ReadAll(const Bytes& block, std::uint32_t bits, const std::vector<Pair>& pairs)
{
    BxStreamReadBinaryBuffer in(block.data(), block.size());
    VoStreamReadPredictiveCoder decoder(in, bits);
    std::vector<std::uint32_t> values;
    for (const auto& pair : pairs)
        values.push_back(decoder.ReadValue(pair.second));
    return values;
}

// Exposes the versioned constructors.
class CVersionedWriter : public VoStreamWritePredictiveCoder
{
public:
    CVersionedWriter(BxStreamWriteBinary& target, std::uint32_t version)
        : VoStreamWritePredictiveCoder(target, 8, 0, version)
    {
    }
};

class CVersionedReader : public VoStreamReadPredictiveCoder
{
public:
    CVersionedReader(BxStreamReadBinary& source, std::uint32_t version)
        : VoStreamReadPredictiveCoder(source, 8, version)
    {
        initialize();
    }
};

}  // namespace

TEST(VoStreamPredictiveCoder, CodesTheClassSymbolThenTheLowBits)
{
    // Equal: only the middle symbol B.
    EXPECT_EQ(PredictiveBlock(8, {{100, 100}}), ExpectedBlock(8, [](VoCompressRangeCoder& c) { c << 8u; }));
    // One above: class 0 has no raw bits.
    EXPECT_EQ(PredictiveBlock(8, {{101, 100}}), ExpectedBlock(8, [](VoCompressRangeCoder& c) { c << 9u; }));
    // Eight below: d = 8, k = 3, symbol 4 and the 3 raw bits of 0.
    EXPECT_EQ(PredictiveBlock(8, {{92, 100}}), ExpectedBlock(8, [](VoCompressRangeCoder& c) {
                  c << 4u;
                  c.WriteRawBits(0, 3);
              }));
    // Thirteen above: k = 3, symbol 12 and the raw bits of 5.
    EXPECT_EQ(PredictiveBlock(8, {{113, 100}}), ExpectedBlock(8, [](VoCompressRangeCoder& c) {
                  c << 12u;
                  c.WriteRawBits(5, 3);
              }));
    // The widest differences of 32-bit values: classes 31 on either side.
    EXPECT_EQ(PredictiveBlock(32, {{0, 0xFFFFFFFF}, {0xFFFFFFFF, 0}}), ExpectedBlock(32, [](VoCompressRangeCoder& c) {
                  c << 0u;
                  c.WriteRawBits(0x7FFFFFFF, 31);
                  c << 64u;
                  c.WriteRawBits(0x7FFFFFFF, 31);
              }));
}

TEST(VoStreamPredictiveCoder, RoundTripsRandomWalksOfEveryWidth)
{
    std::mt19937 random(3);
    for (std::uint32_t bits = 1; bits <= 32; ++bits) {
        // Values of B bits keep every difference below 2^B.
        const std::uint64_t limit = std::uint64_t(1) << bits;
        const auto mask = static_cast<std::uint32_t>(limit - 1);
        std::vector<Pair> pairs;
        std::uint32_t previous = 0;
        for (int i = 0; i < 500; ++i) {
            const int shape = static_cast<int>(random() % 4);
            const std::uint64_t span = shape == 0 ? limit : shape == 1 ? std::min<std::uint64_t>(limit, 16) : 1;
            std::uint32_t value = (previous + static_cast<std::uint32_t>(random() % span)) & mask;
            if (random() % 2)
                value = (previous - static_cast<std::uint32_t>(random() % span)) & mask;
            pairs.emplace_back(value, previous);
            previous = value;
        }
        std::vector<std::uint32_t> expected;
        for (const auto& pair : pairs)
            expected.push_back(pair.first);
        ASSERT_EQ(ReadAll(PredictiveBlock(bits, pairs), bits, pairs), expected) << bits << " bits";
    }
}

TEST(VoStreamPredictiveCoder, SmoothSignalsShrink)
{
    std::vector<Pair> pairs;
    std::uint32_t previous = 30000;
    std::mt19937 random(8);
    for (int i = 0; i < 20000; ++i) {
        const std::uint32_t value = previous + random() % 5 - 2;
        pairs.emplace_back(value, previous);
        previous = value;
    }
    const Bytes block = PredictiveBlock(16, pairs);
    // Five equally likely steps: log2(5) = 2.32 bits for the class, plus one raw
    // bit for the steps of 2 (2/5 of them): 2.72 bits, a sixth of the raw size.
    EXPECT_LT(block.size(), pairs.size() * 2.9 / 8);
    EXPECT_EQ(ReadAll(block, 16, pairs).back(), previous);
}

TEST(VoStreamPredictiveCoder, BlockIsTheVersionThenTheCoderMessage)
{
    BxStreamWriteBinaryBuffer out;
    {
        CVersionedWriter writer(out, 3);
        writer.WriteValue(5, 5);
        EXPECT_EQ(out.GetCount(), 0u);  // everything waits for the end of the block
        writer.Close();
        const std::size_t size = out.GetCount();
        writer.Close();
        EXPECT_EQ(out.GetCount(), size);
        EXPECT_THROW(writer.WriteValue(5, 5), BxExceptionPreconditionViolation);
    }
    const Bytes block = Contents(out);
    ASSERT_GE(block.size(), 16u);
    EXPECT_EQ(Bytes(block.begin(), block.begin() + 8), (Bytes{3, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(block[8] + 256u * block[9], block.size() - 12);

    BxStreamReadBinaryBuffer in(block.data(), block.size());
    EXPECT_THROW(VoStreamReadPredictiveCoder(in, 8), BxExceptionWrongFileVersion);
    BxStreamReadBinaryBuffer again(block.data(), block.size());
    CVersionedReader reader(again, 3);
    EXPECT_EQ(reader.ReadValue(5), 5u);
}

TEST(VoStreamPredictiveCoder, BytesTravelInTheRawChannel)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWritePredictiveCoder coder(out, 12, 0);
        coder.WriteValue(1000, 990);
        coder << 42 << std::string("header") << 2.5;
        coder.WriteValue(0, 4095);
    }
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    VoStreamReadPredictiveCoder decoder(in, 12);
    EXPECT_EQ(decoder.ReadValue(990), 1000u);
    int number = 0;
    std::string text;
    double real = 0;
    decoder >> number >> text >> real;
    EXPECT_EQ(number, 42);
    EXPECT_EQ(text, "header");
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(decoder.ReadValue(4095), 0u);
}

TEST(VoStreamPredictiveCoder, RefusesWhatItCannotCode)
{
    BxStreamWriteBinaryBuffer out;
    EXPECT_THROW(VoStreamWritePredictiveCoder(out, 0, 0), BxExceptionPreconditionViolation);
    EXPECT_THROW(VoStreamWritePredictiveCoder(out, 33, 0), BxExceptionPreconditionViolation);
    VoStreamWritePredictiveCoder coder(out, 8, 0);
    EXPECT_THROW(coder.WriteValue(356, 100), BxExceptionPreconditionViolation);  // a difference of 2^8
    EXPECT_THROW(coder.WriteValue(0, 256), BxExceptionPreconditionViolation);
    EXPECT_NO_THROW(coder.WriteValue(355, 100));
}

TEST(VoStreamPredictiveCoder, ReadingOneValueTooManyRunsDry)
{
    const std::vector<Pair> pairs{{7, 0}, {9, 7}, {9, 9}};
    const Bytes block = PredictiveBlock(4, pairs);
    BxStreamReadBinaryBuffer in(block.data(), block.size());
    VoStreamReadPredictiveCoder decoder(in, 4);
    for (const auto& pair : pairs)
        ASSERT_EQ(decoder.ReadValue(pair.second), pair.first);
    std::string thrownBy;
    for (std::size_t extra = 0; extra <= block.size() * 8 && thrownBy.empty(); ++extra) {
        try {
            decoder.ReadValue(0);
        } catch (const BxExceptionStream& e) {
            thrownBy = e.GetFunctionName();
        }
    }
    EXPECT_EQ(thrownBy, "VoDecompressRangeCoder::normalize");
}

TEST(VoStreamPredictiveCoder, DamagedBlocksEndInValuesOrStreamErrors)
{
    std::mt19937 random(17);
    int refused = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::uint32_t bits = 1 + random() % 32;
        std::vector<Pair> pairs;
        const auto mask = static_cast<std::uint32_t>((std::uint64_t(1) << bits) - 1);
        std::uint32_t previous = static_cast<std::uint32_t>(random()) & mask;
        for (int i = 0, count = 1 + static_cast<int>(random() % 60); i < count; ++i) {
            const std::uint32_t value = (previous + (static_cast<std::uint32_t>(random()) >> (random() % 32))) & mask;
            pairs.emplace_back(value, previous);
            previous = value;
        }
        Bytes block = PredictiveBlock(bits, pairs);
        for (int edits = 1 + static_cast<int>(random() % 3); edits > 0; --edits) {
            const std::size_t at = random() % block.size();
            if (random() % 4 == 0)
                block.resize(at);
            else
                block[at] ^= std::uint8_t(1 + random() % 255);
            if (block.empty())
                break;
        }
        try {
            ReadAll(block, bits, pairs);
        } catch (const BxExceptionStream&) {
            ++refused;
        } catch (const BxExceptionWrongFileVersion&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 50);
}
