#include <vobase/streams/vofloatingpointquantizationuniform.h>
#include <vobase/streams/vofloatingpointquantizationuniformwithinvalid.h>
#include <vobase/streams/vostreamreadcompressedfloatingpoint.h>
#include <vobase/streams/vostreamwritecompressedfloatingpoint.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr float c_nan = std::numeric_limits<float>::quiet_NaN();
constexpr float c_infinity = std::numeric_limits<float>::infinity();

Bytes Contents(const BxStreamWriteBinaryBuffer& out)
{
    const auto* begin = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(begin, begin + out.GetCount());
}

std::vector<float> SmoothSignal(std::size_t count, float amplitude, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> noise(0.0f, amplitude / 500);
    std::vector<float> samples;
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(amplitude * 0.7f * std::sin(0.01f * i) + amplitude * 0.2f * std::sin(0.07f * i) + noise(random));
    return samples;
}

// Writes with the previous reconstructed value as prediction, reads back the same way.
std::vector<float> RoundTrip(const std::vector<float>& samples, const VoFloatingPointQuantization& quantization,
                             Bytes* block = nullptr)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWriteCompressedFloatingPoint writer(out, quantization, true, 1024);
        EXPECT_TRUE(writer.GetFlag());
        float previous = 0.0f;
        for (const float x : samples) {
            writer.WriteValue(x, previous);
            previous = quantization.Unmap(quantization.Map(x));
        }
    }
    if (block)
        *block = Contents(out);
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    VoStreamReadCompressedFloatingPoint reader(in, quantization, true);
    std::vector<float> result;
    float previous = 0.0f;
    for (std::size_t i = 0; i < samples.size(); ++i)
        result.push_back(previous = reader.ReadValue(previous));
    return result;
}

void ExpectQuantizationRefuses(float minimum, float maximum, float scale)
{
    EXPECT_THROW(VoFloatingPointQuantizationUniform(minimum, maximum, scale), BxExceptionPreconditionViolation)
        << minimum << " .. " << maximum << " at " << scale;
}

}  // namespace

TEST(VoFloatingPointQuantization, UniformCodesRoundHalvesUpAndClamp)
{
    const VoFloatingPointQuantizationUniform bytes(0.0f, 1.0f, 255.0f);
    EXPECT_EQ(bytes.GetMinValue(), 0);
    EXPECT_EQ(bytes.GetMaxValue(), 255u);
    EXPECT_EQ(bytes.GetBits(), 8u);
    EXPECT_EQ(bytes.Map(0.5f), 128u);  // round(127.5)
    EXPECT_EQ(bytes.Map(1.0f), 255u);
    EXPECT_EQ(bytes.Map(7.0f), 255u);
    EXPECT_EQ(bytes.Map(-0.2f), 0u);
    EXPECT_EQ(bytes.Map(c_infinity), 255u);
    EXPECT_EQ(bytes.Map(-c_infinity), 0u);
    EXPECT_EQ(bytes.Map(c_nan), 0u);
    EXPECT_FLOAT_EQ(bytes.Unmap(128), 128.0f / 255.0f);

    // Negative values: halves still round towards +infinity.
    const VoFloatingPointQuantizationUniform signedUnits(-1.0f, 1.0f, 1.0f);
    EXPECT_EQ(signedUnits.GetMinValue(), -1);
    EXPECT_EQ(signedUnits.GetMaxValue(), 2u);
    EXPECT_EQ(signedUnits.GetBits(), 2u);
    EXPECT_EQ(signedUnits.Map(-0.5f), 1u);  // round(-0.5) = 0
    EXPECT_EQ(signedUnits.Map(0.5f), 2u);   // round(0.5) = 1
    EXPECT_EQ(signedUnits.Map(-0.6f), 0u);
    EXPECT_EQ(signedUnits.Unmap(0), -1.0f);

    const VoFloatingPointQuantizationUniform tenths(-2.0f, 3.0f, 10.0f);
    EXPECT_EQ(tenths.GetMinValue(), -20);
    EXPECT_EQ(tenths.GetMaxValue(), 50u);
    EXPECT_EQ(tenths.GetBits(), 6u);
    EXPECT_EQ(tenths.Map(0.0f), 20u);
    EXPECT_FLOAT_EQ(tenths.Unmap(tenths.Map(1.23f)), 1.2f);

    const VoFloatingPointQuantizationUniform single(5.0f, 5.0f, 1.0f);
    EXPECT_EQ(single.GetBits(), 1u);
    EXPECT_EQ(single.Map(9.0f), 0u);
}

TEST(VoFloatingPointQuantization, UniformRefusesUnusableRanges)
{
    ExpectQuantizationRefuses(1.0f, 0.0f, 1.0f);
    ExpectQuantizationRefuses(0.0f, 1.0f, 0.0f);
    ExpectQuantizationRefuses(0.0f, 1.0f, -1.0f);
    ExpectQuantizationRefuses(c_nan, 1.0f, 1.0f);
    ExpectQuantizationRefuses(0.0f, c_infinity, 1.0f);
    ExpectQuantizationRefuses(0.0f, 1.0f, c_nan);
    ExpectQuantizationRefuses(0.0f, 3e9f, 1.0f);  // beyond a 32-bit signed bound
    // The widest range that fits: 2^31 - 128 is the largest float below 2^31.
    const VoFloatingPointQuantizationUniform widest(-2147483648.0f, 2147483520.0f, 1.0f);
    EXPECT_EQ(widest.GetBits(), 32u);
    EXPECT_EQ(widest.GetMaxValue(), 4294967168u);
    EXPECT_EQ(widest.Map(2147483520.0f), 4294967168u);
    EXPECT_EQ(widest.Unmap(0), -2147483648.0f);
}

TEST(VoFloatingPointQuantization, InvalidMarkerTakesTheLargestCodeOfTheWidth)
{
    // Range 255 = 2^8 - 1 fills 8 bits, so the width grows to 9 and the marker gets 511.
    const VoFloatingPointQuantizationUniformWithInvalid widened(0.0f, 1.0f, 255.0f, -1.0f);
    EXPECT_EQ(widened.GetBits(), 9u);
    EXPECT_EQ(widened.GetInvalidCode(), 511u);
    EXPECT_EQ(widened.Map(-1.0f), 511u);
    EXPECT_EQ(widened.Unmap(511), -1.0f);
    EXPECT_EQ(widened.Map(-0.5f), 0u);
    EXPECT_EQ(widened.Map(0.5f), 128u);
    EXPECT_FLOAT_EQ(widened.Unmap(255), 1.0f);

    // Range 100 leaves codes 101..127 of 7 bits free: the marker gets 127 without widening.
    const VoFloatingPointQuantizationUniformWithInvalid spare(0.0f, 1.0f, 100.0f, 99.0f);
    EXPECT_EQ(spare.GetBits(), 7u);
    EXPECT_EQ(spare.GetInvalidCode(), 127u);
    EXPECT_EQ(spare.Map(99.0f), 127u);
    EXPECT_EQ(spare.Map(98.0f), 100u);

    // NaN as the marker stands for every NaN.
    const VoFloatingPointQuantizationUniformWithInvalid missing(0.0f, 10.0f, 1.0f, c_nan);
    EXPECT_EQ(missing.Map(c_nan), missing.GetInvalidCode());
    EXPECT_TRUE(std::isnan(missing.Unmap(missing.GetInvalidCode())));

    const VoFloatingPointQuantizationUniformWithInvalid widest(-2147483648.0f, 2147483520.0f, 1.0f, 0.5f);
    EXPECT_EQ(widest.GetBits(), 32u);
    EXPECT_EQ(widest.GetInvalidCode(), 0xFFFFFFFFu);
}

TEST(VoStreamCompressedFloatingPoint, RoundTripGivesTheQuantizedValues)
{
    const std::vector<float> samples = SmoothSignal(5000, 100.0f, 1);
    const VoFloatingPointQuantizationUniform quantization(-100.0f, 100.0f, 1000.0f);
    Bytes block;
    const std::vector<float> decoded = RoundTrip(samples, quantization, &block);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(decoded[i], quantization.Unmap(quantization.Map(samples[i]))) << "sample " << i;
        ASSERT_NEAR(decoded[i], samples[i], 0.0005f + 1e-5f);
    }
    // 18-bit codes whose neighbours differ by a few hundred steps: under half the raw size.
    EXPECT_LT(block.size(), samples.size() * 2);
}

TEST(VoStreamCompressedFloatingPoint, MarkersSurviveTheRoundTrip)
{
    std::vector<float> samples = SmoothSignal(3000, 1.0f, 2);
    for (std::size_t i = 0; i < samples.size(); i += 37)
        samples[i] = c_nan;
    const VoFloatingPointQuantizationUniformWithInvalid quantization(-1.0f, 1.0f, 4096.0f, c_nan);
    const std::vector<float> decoded = RoundTrip(samples, quantization);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::isnan(samples[i]))
            ASSERT_TRUE(std::isnan(decoded[i])) << "sample " << i;
        else
            ASSERT_NEAR(decoded[i], samples[i], 0.5f / 4096 + 1e-6f) << "sample " << i;
    }
}

TEST(VoStreamCompressedFloatingPoint, IsThePredictiveCoderOfTheCodes)
{
    const VoFloatingPointQuantizationUniform quantization(0.0f, 1.0f, 255.0f);
    const std::vector<float> values{0.5f, 0.25f, 0.26f, 0.9f, 2.0f};
    BxStreamWriteBinaryBuffer viaFloats;
    BxStreamWriteBinaryBuffer viaCodes;
    {
        VoStreamWriteCompressedFloatingPoint floats(viaFloats, quantization, false, 0);
        VoStreamWritePredictiveCoder codes(viaCodes, 8, 0);
        float previous = 0.3f;
        for (const float x : values) {
            floats.WriteValue(x, previous);
            codes.WriteValue(quantization.Map(x), quantization.Map(previous));
            previous = x;
        }
    }
    EXPECT_EQ(Contents(viaFloats), Contents(viaCodes));
}

TEST(VoStreamCompressedFloatingPoint, DefaultQuantizationCoversTheUnitInterval)
{
    const VoFloatingPointQuantizationUniform& quantization = VoStreamWriteCompressedFloatingPoint::GetDefaultQuantization();
    EXPECT_EQ(quantization.GetBits(), 16u);
    EXPECT_EQ(quantization.GetMinValue(), -32767);
    EXPECT_EQ(quantization.GetMaxValue(), 65534u);

    const std::vector<float> samples{0.0f, 0.5f, -0.999f, 1.0f, 3.0f, -3.0f, 0.12345f};
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWriteCompressedFloatingPoint writer(out, 0);
        EXPECT_FALSE(writer.GetFlag());
        for (const float x : samples)
            writer.WriteValue(x, 0.0f);
    }
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    VoStreamReadCompressedFloatingPoint reader(in);
    EXPECT_EQ(&reader.GetQuantization(), &quantization);
    for (const float x : samples)
        EXPECT_NEAR(reader.ReadValue(0.0f), std::clamp(x, -1.0f, 1.0f), 0.5f / 32767) << x;
}
