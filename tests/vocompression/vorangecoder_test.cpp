#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompressrangecoder.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxexceptionwrongfileversion.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using ModelPointer = BxSmartPointer<VoProbabilityModelQuasiStatic>;

Bytes Contents(const BxStreamWriteBinaryBuffer& out)
{
    const auto* begin = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(begin, begin + out.GetCount());
}

// The message that `code` writes through an encoder with an own model of `symbols` symbols.
Bytes Encode(std::uint32_t symbols, const std::function<void(VoCompressRangeCoder&)>& code)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoCompressRangeCoder encoder(out, symbols, 0);
        code(encoder);
    }
    return Contents(out);
}

// version 0, count, coded bytes.
Bytes Message(const Bytes& coded)
{
    Bytes message{0, 0, 0, 0};
    const auto count = static_cast<std::uint32_t>(coded.size());
    for (int i = 0; i < 4; ++i)
        message.push_back(std::uint8_t(count >> (8 * i)));
    message.insert(message.end(), coded.begin(), coded.end());
    return message;
}

std::string ThrowingFunction(const Bytes& message)
{
    BxStreamReadBinaryBuffer in(message.data(), message.size());
    try {
        VoDecompressRangeCoder decoder(in, 256);
    } catch (const BxExceptionStream& e) {
        return e.GetFunctionName();
    }
    return "nothing thrown";
}

// One item of a mixed sequence: a symbol of one of the models, or a raw field.
struct Item
{
    int kind;  // 0..3: model index; 4: raw field; 5: raw bytes
    std::uint32_t value;
    std::uint32_t bits;
};

std::vector<Item> RandomItems(std::mt19937& random, const std::vector<std::uint32_t>& modelSizes, int count)
{
    std::vector<Item> items;
    for (int i = 0; i < count; ++i) {
        Item item{static_cast<int>(random() % (modelSizes.size() + 2)), 0, 0};
        if (item.kind < static_cast<int>(modelSizes.size())) {
            // Skewed so that the models adapt, with the last symbol reachable.
            std::geometric_distribution<std::uint32_t> skewed(0.05);
            item.value = std::min(skewed(random), modelSizes[item.kind] - 1);
        } else if (item.kind == static_cast<int>(modelSizes.size())) {
            item.bits = 1 + random() % 32;
            item.value = static_cast<std::uint32_t>(random()) & (item.bits == 32 ? ~0u : (1u << item.bits) - 1);
        } else {
            item.value = random() & 0xFF;
        }
        items.push_back(item);
    }
    return items;
}

std::vector<ModelPointer> Models(const std::vector<std::uint32_t>& sizes)
{
    std::vector<ModelPointer> models;
    for (const std::uint32_t n : sizes)
        models.emplace_back(new VoProbabilityModelQuasiStatic(n, 16, 1024));
    return models;
}

}  // namespace

TEST(VoRangeCoderFormat, AnEmptyMessageHoldsTheFinalFourBytesOfLow)
{
    EXPECT_EQ(Encode(256, [](VoCompressRangeCoder&) {}), Message({0, 0, 0, 0}));
}

TEST(VoRangeCoderFormat, RawFieldsAreCodedAtEqualProbability)
{
    // range = 0xFFFFFFFF >> 8 = 0xFFFFFF; low = 0xAB * 0xFFFFFF = 0xAAFFFF55; nothing settles.
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0xAB, 8); }), Message({0xAA, 0xFF, 0xFF, 0x55}));
    // Only the low bits of the value count.
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0x7AB, 8); }),
              Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0xAB, 8); }));
    // A byte written raw is the 8-bit field.
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRaw("\xAB", 1); }),
              Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0xAB, 8); }));
}

TEST(VoRangeCoderFormat, UnderflowEmitsTwoBytesAndRunsTheRangeToTheEnd)
{
    // low = 0x100 * 0xFFFF = 0x00FFFF00 with range 0xFFFF: the top bytes differ
    // but the range is below 2^16, so 0x00 and 0xFF go out, low becomes
    // 0xFF000000 and range 0x01000000.
    const Bytes message = Encode(2, [](VoCompressRangeCoder& e) {
        e.WriteRawBits(0x100, 16);
        e.WriteRawBits(0x5A, 8);
    });
    // The second field: range 0x10000, low 0xFF5A0000, which settles 0xFF;
    // the flush then emits 5A 00 00 00.
    EXPECT_EQ(message, Message({0x00, 0xFF, 0xFF, 0x5A, 0x00, 0x00, 0x00}));

    BxStreamReadBinaryBuffer in(message.data(), message.size());
    VoDecompressRangeCoder decoder(in, 2);
    EXPECT_EQ(decoder.ReadRawBits(16), 0x100u);
    EXPECT_EQ(decoder.ReadRawBits(8), 0x5Au);
}

TEST(VoRangeCoderFormat, WideFieldsAreCodedHighPartFirst)
{
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0x1ABCD, 17); }),
              Encode(2, [](VoCompressRangeCoder& e) {
                  e.WriteRawBits(1, 1);
                  e.WriteRawBits(0xABCD, 16);
              }));
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(0xDEADBEEF, 32); }),
              Encode(2, [](VoCompressRangeCoder& e) {
                  e.WriteRawBits(0xDEAD, 16);
                  e.WriteRawBits(0xBEEF, 16);
              }));
    // Zero bits code nothing at all.
    EXPECT_EQ(Encode(2, [](VoCompressRangeCoder& e) { e.WriteRawBits(5, 0); }), Encode(2, [](VoCompressRangeCoder&) {}));
}

TEST(VoRangeCoderFormat, TypedOperatorsAreSymbolsOfTheOwnModel)
{
    const Bytes bySymbol = Encode(300, [](VoCompressRangeCoder& e) {
        for (std::uint32_t s : {7u, 97u, 5u, 299u, 200u, 1u})
            e.WriteSymbol(s, *e.GetModel());
    });
    const Bytes byOperator = Encode(300, [](VoCompressRangeCoder& e) {
        e << 7 << 'a' << (std::uint64_t(1) << 32 | 5) << 299ul << static_cast<unsigned char>(200)
          << static_cast<unsigned short>(1);
    });
    EXPECT_EQ(byOperator, bySymbol);

    BxStreamReadBinaryBuffer in(byOperator.data(), byOperator.size());
    VoDecompressRangeCoder decoder(in, 300);
    int i = 0;
    char c = 0;
    long long wide = 0;
    unsigned long ul = 0;
    unsigned char uc = 0;
    unsigned short us = 0;
    decoder >> i >> c >> wide >> ul >> uc >> us;
    EXPECT_EQ(i, 7);
    EXPECT_EQ(c, 'a');
    EXPECT_EQ(wide, 5);
    EXPECT_EQ(ul, 299u);
    EXPECT_EQ(uc, 200);
    EXPECT_EQ(us, 1);

    // A negative char is sign-extended into a symbol no model has.
    BxStreamWriteBinaryBuffer out;
    VoCompressRangeCoder encoder(out, 256, 0);
    EXPECT_THROW(encoder << static_cast<char>(-1), BxExceptionPreconditionViolation);
}

TEST(VoRangeCoderFormat, ClosingWritesTheMessageOnce)
{
    BxStreamWriteBinaryBuffer out;
    VoCompressRangeCoder encoder(out, 16, 1);
    encoder << 3;
    EXPECT_FALSE(encoder.IsClosed());
    EXPECT_EQ(out.GetCount(), 0u);  // nothing reaches the target before the end
    encoder.Close();
    EXPECT_TRUE(encoder.IsClosed());
    const std::size_t size = out.GetCount();
    EXPECT_GE(size, 12u);
    encoder.Close();
    EXPECT_EQ(out.GetCount(), size);
    EXPECT_THROW(encoder << 3, BxExceptionPreconditionViolation);
    EXPECT_THROW(encoder.WriteRawBits(1, 1), BxExceptionPreconditionViolation);
    EXPECT_THROW(encoder.WriteRawBits(1, 33), BxExceptionPreconditionViolation);
}

TEST(VoRangeCoderFormat, DecoderRefusesMissingShortAndNewerMessages)
{
    EXPECT_EQ(ThrowingFunction({}), "VoDecompressRangeCoder::initialize");
    EXPECT_EQ(ThrowingFunction({0, 0, 0, 0}), "VoDecompressRangeCoder::initialize");
    EXPECT_EQ(ThrowingFunction(Message({1, 2, 3})), "VoDecompressRangeCoder::initialize");
    Bytes truncated = Message({1, 2, 3, 4, 5, 6});
    truncated.pop_back();
    EXPECT_EQ(ThrowingFunction(truncated), "VoDecompressRangeCoder::initialize");
    // A count near 4 GiB with nothing behind it is refused without allocating it.
    EXPECT_EQ(ThrowingFunction({0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4}), "VoDecompressRangeCoder::initialize");
    EXPECT_EQ(ThrowingFunction(Message({1, 2, 3, 4})), "nothing thrown");

    Bytes newer = Message({0, 0, 0, 0});
    newer[0] = 1;
    BxStreamReadBinaryBuffer in(newer.data(), newer.size());
    EXPECT_THROW(VoDecompressRangeCoder(in, 2), BxExceptionWrongFileVersion);
}

TEST(VoRangeCoderRoundTrip, EveryRawWidth)
{
    std::mt19937 random(1);
    std::vector<std::uint32_t> values;
    BxStreamWriteBinaryBuffer out;
    {
        VoCompressRangeCoder encoder(out, 2, 16);
        for (int round = 0; round < 20; ++round)
            for (std::uint32_t bits = 1; bits <= 32; ++bits) {
                // Extremes first, then random values.
                std::uint32_t value = round == 0 ? 0u : static_cast<std::uint32_t>(random());
                if (round == 1)
                    value = ~0u;
                values.push_back(bits == 32 ? value : value & ((1u << bits) - 1));
                encoder.WriteRawBits(value, bits);
            }
    }
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    VoDecompressRangeCoder decoder(in, 2);
    std::size_t next = 0;
    for (int round = 0; round < 20; ++round)
        for (std::uint32_t bits = 1; bits <= 32; ++bits)
            ASSERT_EQ(decoder.ReadRawBits(bits), values[next++]) << bits << " bits, round " << round;
    EXPECT_EQ(in.GetRemaining(), 0u);
}

TEST(VoRangeCoderRoundTrip, MixedSymbolsAndRawFieldsThroughSeveralModels)
{
    const std::vector<std::uint32_t> sizes{2, 3, 256, 16384};
    for (const unsigned seed : {1u, 2u, 3u}) {
        std::mt19937 random(seed);
        const std::vector<Item> items = RandomItems(random, sizes, 30000);
        BxStreamWriteBinaryBuffer out;
        {
            std::vector<ModelPointer> models = Models(sizes);
            VoCompressRangeCoder encoder(out, models[0], 0);
            for (const Item& item : items) {
                if (item.kind < 4)
                    encoder.WriteSymbol(item.value, *models[item.kind]);
                else if (item.kind == 4)
                    encoder.WriteRawBits(item.value, item.bits);
                else
                    encoder.WriteRaw(&item.value, 1);
            }
        }
        BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
        std::vector<ModelPointer> models = Models(sizes);
        VoDecompressRangeCoder decoder(in, models[0]);
        for (std::size_t i = 0; i < items.size(); ++i) {
            const Item& item = items[i];
            std::uint32_t value = 0;
            if (item.kind < 4) {
                value = decoder.ReadSymbol(*models[item.kind]);
            } else if (item.kind == 4) {
                value = decoder.ReadRawBits(item.bits);
            } else {
                std::uint8_t byte = 0;
                decoder.ReadRaw(&byte, 1);
                value = byte;
            }
            ASSERT_EQ(value, item.value) << "item " << i << " of seed " << seed;
        }
        EXPECT_LE(decoder.GetReadPosition(), decoder.GetCodedSize());
    }
}

TEST(VoRangeCoderRoundTrip, OneModelSharedByEncoderAndDecoder)
{
    ModelPointer model(new VoProbabilityModelQuasiStatic(40, 14, 500));
    std::mt19937 random(5);
    std::vector<std::uint32_t> symbols(5000);
    for (std::uint32_t& s : symbols)
        s = random() % 7 == 0 ? random() % 40 : random() % 3;
    BxStreamWriteBinaryBuffer out;
    {
        VoCompressRangeCoder encoder(out, model, 64);
        for (const std::uint32_t s : symbols)
            encoder << s;
    }
    model->Reset();
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    VoDecompressRangeCoder decoder(in, model);
    for (const std::uint32_t s : symbols) {
        unsigned int decoded = 0;
        decoder >> decoded;
        ASSERT_EQ(decoded, s);
    }
    // The skew is learnt: far fewer than the 5.3 bits per symbol of a flat model.
    EXPECT_LT(out.GetCount(), symbols.size() * 3 / 8);
}

TEST(VoRangeCoderRoundTrip, ReadingOneItemTooManyEndsInTheNormalisation)
{
    for (const std::uint32_t count : {0u, 1u, 10u, 1000u}) {
        const Bytes message = Encode(256, [&](VoCompressRangeCoder& e) {
            for (std::uint32_t i = 0; i < count; ++i)
                e << static_cast<unsigned char>(i * 7);
        });
        BxStreamReadBinaryBuffer in(message.data(), message.size());
        VoDecompressRangeCoder decoder(in, 256);
        for (std::uint32_t i = 0; i < count; ++i) {
            unsigned char c = 0;
            decoder >> c;
            ASSERT_EQ(c, static_cast<unsigned char>(i * 7));
        }
        // No end marker: extra reads give garbage until the coded bytes run out.
        std::string thrownBy;
        for (std::size_t extra = 0; extra <= message.size() + 8 && thrownBy.empty(); ++extra) {
            try {
                decoder.ReadRawBits(8);
            } catch (const BxExceptionStream& e) {
                thrownBy = e.GetFunctionName();
            }
        }
        EXPECT_EQ(thrownBy, "VoDecompressRangeCoder::normalize") << count << " items";
    }
}
