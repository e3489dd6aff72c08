// Damaged and random messages: the decoder must end every one of them in
// values or BxExceptionStream (or the version exception), never in a fault,
// a hang or an unbounded allocation. Run under AddressSanitizer too.
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompressrangecoder.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using ModelPointer = BxSmartPointer<VoProbabilityModelQuasiStatic>;

const std::vector<std::uint32_t> c_modelSizes{2, 3, 256, 16384};

// What the reader expects next: a symbol of model `kind` (0..3), or a raw field of `bits` (kind 4).
struct Step
{
    int kind;
    std::uint32_t bits;
};

std::vector<Step> Plan(std::mt19937& random, int count)
{
    std::vector<Step> plan;
    for (int i = 0; i < count; ++i) {
        const int kind = static_cast<int>(random() % 5);
        plan.push_back({kind, kind == 4 ? static_cast<std::uint32_t>(random() % 33) : 0u});
    }
    return plan;
}

// Fresh models for one message, copied from reset ones (cheaper than a reset of 16,384 symbols).
std::vector<ModelPointer> Models()
{
    static const std::vector<VoProbabilityModelQuasiStatic> pristine = [] {
        std::vector<VoProbabilityModelQuasiStatic> made;
        for (const std::uint32_t n : c_modelSizes)
            made.emplace_back(n, 16, 64);
        return made;
    }();
    std::vector<ModelPointer> models;
    for (const VoProbabilityModelQuasiStatic& model : pristine)
        models.emplace_back(new VoProbabilityModelQuasiStatic(model));
    return models;
}

Bytes EncodeRandom(std::mt19937& random, const std::vector<Step>& plan)
{
    BxStreamWriteBinaryBuffer out;
    {
        std::vector<ModelPointer> models = Models();
        VoCompressRangeCoder encoder(out, models[0], 0);
        for (const Step& step : plan) {
            if (step.kind < 4)
                encoder.WriteSymbol(random() % (random() % 4 == 0 ? c_modelSizes[step.kind] : 2), *models[step.kind]);
            else
                encoder.WriteRawBits(static_cast<std::uint32_t>(random()), step.bits);
        }
    }
    const auto* data = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(data, data + out.GetCount());
}

enum class Outcome { Decoded, StreamError, VersionError };

Outcome Decode(const Bytes& message, const std::vector<Step>& plan)
{
    try {
        BxStreamReadBinaryBuffer in(message.data(), message.size());
        std::vector<ModelPointer> models = Models();
        VoDecompressRangeCoder decoder(in, models[0]);
        std::uint32_t sink = 0;
        for (const Step& step : plan)
            sink += step.kind < 4 ? decoder.ReadSymbol(*models[step.kind]) : decoder.ReadRawBits(step.bits);
        (void)sink;
        return Outcome::Decoded;
    } catch (const BxExceptionStream&) {
        return Outcome::StreamError;
    } catch (const BxExceptionWrongFileVersion&) {
        return Outcome::VersionError;
    }
}

void Mutate(std::mt19937& random, Bytes& message)
{
    const int edits = 1 + static_cast<int>(random() % 4);
    for (int e = 0; e < edits && !message.empty(); ++e) {
        const std::size_t at = random() % message.size();
        switch (random() % 5) {
        case 0:
            message[at] ^= std::uint8_t(1u << (random() % 8));
            break;
        case 1:
            message[at] = std::uint8_t(random());
            break;
        case 2:
            message.resize(at);  // truncated
            break;
        case 3:
            message.insert(message.begin() + static_cast<std::ptrdiff_t>(at), std::uint8_t(random()));
            break;
        default:
            // Coded bytes of a short message patched to runs of 0x00 or 0xFF,
            // the patterns that drive low and range to their extremes.
            if (message.size() > 8)
                for (std::size_t i = 8 + random() % (message.size() - 8); i < message.size(); ++i)
                    message[i] = random() % 2 ? 0x00 : 0xFF;
            break;
        }
    }
}

}  // namespace

TEST(VoRangeCoderMutation, DamagedMessagesEndInValuesOrStreamErrors)
{
    std::mt19937 random(2024);
    int decoded = 0;
    int refused = 0;
    for (int round = 0; round < 2000; ++round) {
        const std::vector<Step> plan = Plan(random, 1 + static_cast<int>(random() % 120));
        Bytes message = EncodeRandom(random, plan);
        ASSERT_EQ(Decode(message, plan), Outcome::Decoded) << "round " << round;
        Mutate(random, message);
        (Decode(message, plan) == Outcome::Decoded ? decoded : refused)++;
    }
    // Both endings occur: damage inside the coded bytes mostly decodes to
    // garbage, damage to the header or the length is refused.
    EXPECT_GT(decoded, 100);
    EXPECT_GT(refused, 100);
}

TEST(VoRangeCoderMutation, RandomBytesBehindAValidHeader)
{
    std::mt19937 random(77);
    for (int round = 0; round < 2000; ++round) {
        const std::vector<Step> plan = Plan(random, 1 + static_cast<int>(random() % 200));
        const std::uint32_t count = 4 + random() % 64;
        Bytes message{0, 0, 0, 0, std::uint8_t(count), 0, 0, 0};
        const int pattern = static_cast<int>(random() % 3);
        for (std::uint32_t i = 0; i < count; ++i)
            message.push_back(pattern == 0 ? std::uint8_t(random()) : pattern == 1 ? 0x00 : 0xFF);
        const Outcome outcome = Decode(message, plan);
        EXPECT_NE(outcome, Outcome::VersionError);
    }
}

TEST(VoRangeCoderMutation, EntirelyRandomInput)
{
    std::mt19937 random(99);
    for (int round = 0; round < 1000; ++round) {
        Bytes message(random() % 40);
        for (std::uint8_t& byte : message)
            byte = std::uint8_t(random());
        if (random() % 2 && message.size() >= 8) {
            // A plausible header makes the decoder go further.
            std::fill_n(message.begin(), 4, 0);
            message[4] = std::uint8_t(message.size() - 8 + random() % 3);
            std::fill_n(message.begin() + 5, 3, 0);
        }
        Decode(message, Plan(random, 50));  // must simply return
    }
}
