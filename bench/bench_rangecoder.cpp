// Range coder, predictive coder and floating-point stream against zstd and xz.
//
// Speeds are symbols (or bytes) per second; sizes are reported as counters
// that are ratios to the peer measured on the same data in the same run:
//   ratio_entropy  coded size / empirical order-0 entropy of the symbols
//   ratio_zstd19   coded size / zstd level 19 on the same bytes
//   ratio_xz6      coded size / xz preset 6 on the same bytes
#include <vobase/streams/vofloatingpointquantizationuniform.h>
#include <vobase/streams/vostreamreadcompressedfloatingpoint.h>
#include <vobase/streams/vostreamreadpredictivecoder.h>
#include <vobase/streams/vostreamwritecompressedfloatingpoint.h>
#include <vobase/streams/vostreamwritepredictivecoder.h>

#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompressrangecoder.h>

#include <benchmark/benchmark.h>
#include <lzma.h>
#ifdef VOBASE_HAVE_ZSTD
#include <zstd.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t c_speedSymbols = 1 << 20;
constexpr std::size_t c_sizeSymbols = 10'000'000;
constexpr std::size_t c_signalSamples = 1 << 20;

// Geometric symbols over n, with a mean that suits the alphabet: a coin with
// P(1) = 0.2 for n = 2, mean 19 for 256 (5.7 bits), mean 500 for 16,384 (10.4 bits).
std::vector<std::uint32_t> GeometricSymbols(std::size_t count, std::uint32_t n, unsigned seed = 1)
{
    const double p = n == 2 ? 0.8 : n <= 256 ? 0.05 : 0.002;
    std::mt19937 random(seed);
    std::geometric_distribution<std::uint32_t> geometric(p);
    std::vector<std::uint32_t> symbols(count);
    for (std::uint32_t& s : symbols)
        s = std::min(geometric(random), n - 1);
    return symbols;
}

const std::vector<std::uint32_t>& SpeedSymbols(std::uint32_t n)
{
    static std::map<std::uint32_t, std::vector<std::uint32_t>> cache;
    auto [it, added] = cache.try_emplace(n);
    if (added)
        it->second = GeometricSymbols(c_speedSymbols, n);
    return it->second;
}

Bytes Contents(const BxStreamWriteBinaryBuffer& out)
{
    const auto* begin = reinterpret_cast<const std::uint8_t*>(out.GetData());
    return Bytes(begin, begin + out.GetCount());
}

Bytes EncodeSymbols(const std::vector<std::uint32_t>& symbols, std::uint32_t n)
{
    BxStreamWriteBinaryBuffer out(symbols.size() * 2);
    {
        VoCompressRangeCoder encoder(out, n, static_cast<std::uint32_t>(symbols.size() * 2));
        for (const std::uint32_t s : symbols)
            encoder << s;
    }
    return Contents(out);
}

double EntropyBytes(const std::vector<std::uint32_t>& symbols, std::uint32_t n)
{
    std::vector<double> counts(n);
    for (const std::uint32_t s : symbols)
        ++counts[s];
    double bits = 0;
    for (const double c : counts)
        if (c > 0)
            bits -= c * std::log2(c / symbols.size());
    return bits / 8;
}

std::size_t XzSize(const void* data, std::size_t size, std::uint32_t preset = 6)
{
    Bytes out(lzma_stream_buffer_bound(size));
    std::size_t position = 0;
    if (lzma_easy_buffer_encode(preset, LZMA_CHECK_CRC64, nullptr, static_cast<const std::uint8_t*>(data), size,
                                out.data(), &position, out.size()) != LZMA_OK)
        throw std::runtime_error("xz failed");
    return position;
}

Bytes Xz(const void* data, std::size_t size, std::uint32_t preset = 6)
{
    Bytes out(lzma_stream_buffer_bound(size));
    std::size_t position = 0;
    if (lzma_easy_buffer_encode(preset, LZMA_CHECK_CRC64, nullptr, static_cast<const std::uint8_t*>(data), size,
                                out.data(), &position, out.size()) != LZMA_OK)
        throw std::runtime_error("xz failed");
    out.resize(position);
    return out;
}

#ifdef VOBASE_HAVE_ZSTD
Bytes Zstd(const void* data, std::size_t size, int level)
{
    Bytes out(ZSTD_compressBound(size));
    const std::size_t written = ZSTD_compress(out.data(), out.size(), data, size, level);
    if (ZSTD_isError(written))
        throw std::runtime_error("zstd failed");
    out.resize(written);
    return out;
}
#endif

double ZstdSize(const void* data, std::size_t size)
{
#ifdef VOBASE_HAVE_ZSTD
    return static_cast<double>(Zstd(data, size, 19).size());
#else
    return std::nan("");
#endif
}

// The sizes of the peers on one block of bytes, computed once per run.
struct PeerSizes
{
    double zstd19;
    double xz6;
};

const PeerSizes& Peers(const char* name, const void* data, std::size_t size)
{
    static std::map<std::string, PeerSizes> cache;
    auto [it, added] = cache.try_emplace(name);
    if (added)
        it->second = {ZstdSize(data, size), static_cast<double>(XzSize(data, size))};
    return it->second;
}

void ReportRatios(benchmark::State& state, double coded, const PeerSizes& peers)
{
    state.counters["ratio_zstd19"] = coded / peers.zstd19;
    state.counters["ratio_xz6"] = coded / peers.xz6;
}

std::vector<std::uint8_t> AsBytes(const std::vector<std::uint32_t>& symbols)
{
    return std::vector<std::uint8_t>(symbols.begin(), symbols.end());
}

// ---------------------------------------------------------------------------
// Symbol channel speed.

void BM_RangeCoderEncode(benchmark::State& state)
{
    const auto n = static_cast<std::uint32_t>(state.range(0));
    const std::vector<std::uint32_t>& symbols = SpeedSymbols(n);
    std::size_t coded = 0;
    for (auto _ : state) {
        BxStreamWriteBinaryBuffer out(symbols.size() * 2);
        {
            VoCompressRangeCoder encoder(out, n, static_cast<std::uint32_t>(symbols.size() * 2));
            for (const std::uint32_t s : symbols)
                encoder << s;
        }
        coded = out.GetCount();
        benchmark::DoNotOptimize(out.GetData());
    }
    state.SetItemsProcessed(state.iterations() * symbols.size());
    state.counters["bits_per_symbol"] = 8.0 * coded / symbols.size();
    state.counters["ratio_entropy"] = coded / EntropyBytes(symbols, n);
}
BENCHMARK(BM_RangeCoderEncode)->Arg(2)->Arg(256)->Arg(16384)->Unit(benchmark::kMillisecond);

void BM_RangeCoderDecode(benchmark::State& state)
{
    const auto n = static_cast<std::uint32_t>(state.range(0));
    const std::vector<std::uint32_t>& symbols = SpeedSymbols(n);
    const Bytes message = EncodeSymbols(symbols, n);
    for (auto _ : state) {
        BxStreamReadBinaryBuffer in(message.data(), message.size());
        VoDecompressRangeCoder decoder(in, n);
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < symbols.size(); ++i) {
            unsigned int s;
            decoder >> s;
            sum += s;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * symbols.size());
}
BENCHMARK(BM_RangeCoderDecode)->Arg(2)->Arg(256)->Arg(16384)->Unit(benchmark::kMillisecond);

// Peers on the same 256-symbol data, one byte per symbol.
void BM_XzCompressSymbols256(benchmark::State& state)
{
    const Bytes bytes = AsBytes(SpeedSymbols(256));
    for (auto _ : state)
        benchmark::DoNotOptimize(XzSize(bytes.data(), bytes.size()));
    state.SetItemsProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_XzCompressSymbols256)->Unit(benchmark::kMillisecond);

void BM_XzDecompressSymbols256(benchmark::State& state)
{
    const Bytes bytes = AsBytes(SpeedSymbols(256));
    const Bytes packed = Xz(bytes.data(), bytes.size());
    Bytes out(bytes.size());
    for (auto _ : state) {
        std::uint64_t memlimit = UINT64_MAX;
        std::size_t in = 0;
        std::size_t position = 0;
        if (lzma_stream_buffer_decode(&memlimit, 0, nullptr, packed.data(), &in, packed.size(), out.data(), &position,
                                      out.size()) != LZMA_OK)
            state.SkipWithError("xz could not decode its own stream");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_XzDecompressSymbols256)->Unit(benchmark::kMillisecond);

#ifdef VOBASE_HAVE_ZSTD
void BM_ZstdCompressSymbols256(benchmark::State& state)
{
    const Bytes bytes = AsBytes(SpeedSymbols(256));
    const int level = static_cast<int>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(Zstd(bytes.data(), bytes.size(), level));
    state.SetItemsProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_ZstdCompressSymbols256)->Arg(1)->Arg(19)->Unit(benchmark::kMillisecond);

void BM_ZstdDecompressSymbols256(benchmark::State& state)
{
    const Bytes bytes = AsBytes(SpeedSymbols(256));
    const Bytes packed = Zstd(bytes.data(), bytes.size(), 19);
    Bytes out(bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(ZSTD_decompress(out.data(), out.size(), packed.data(), packed.size()));
    state.SetItemsProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_ZstdDecompressSymbols256)->Unit(benchmark::kMillisecond);
#endif

// ---------------------------------------------------------------------------
// Raw channel speed, with a plain memory stream as the peer.

const Bytes& RandomBytes()
{
    static const Bytes bytes = [] {
        std::mt19937 random(4);
        Bytes made(c_speedSymbols);
        for (std::uint8_t& b : made)
            b = std::uint8_t(random());
        return made;
    }();
    return bytes;
}

void BM_RangeCoderWriteRaw(benchmark::State& state)
{
    const Bytes& bytes = RandomBytes();
    for (auto _ : state) {
        BxStreamWriteBinaryBuffer out(bytes.size() + 64);
        {
            VoCompressRangeCoder encoder(out, 2, static_cast<std::uint32_t>(bytes.size() + 64));
            encoder.WriteRaw(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        }
        benchmark::DoNotOptimize(out.GetData());
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_RangeCoderWriteRaw)->Unit(benchmark::kMillisecond);

void BM_RangeCoderReadRaw(benchmark::State& state)
{
    const Bytes& bytes = RandomBytes();
    BxStreamWriteBinaryBuffer message;
    {
        VoCompressRangeCoder encoder(message, 2, 0);
        encoder.WriteRaw(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
    Bytes out(bytes.size());
    for (auto _ : state) {
        BxStreamReadBinaryBuffer in(message.GetData(), message.GetCount());
        VoDecompressRangeCoder decoder(in, 2);
        decoder.ReadRaw(out.data(), out.size());
        benchmark::DoNotOptimize(out.data());
    }
    if (out != bytes)
        state.SkipWithError("raw bytes did not round-trip");
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_RangeCoderReadRaw)->Unit(benchmark::kMillisecond);

void BM_MemoryStreamWriteRaw(benchmark::State& state)
{
    const Bytes& bytes = RandomBytes();
    for (auto _ : state) {
        BxStreamWriteBinaryBuffer out(bytes.size() + 64);
        out.WriteBuffer(bytes.data(), bytes.size());
        benchmark::DoNotOptimize(out.GetData());
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_MemoryStreamWriteRaw)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Coded size of 10 million geometric symbols over 256.

const std::vector<std::uint32_t>& SizeSymbols()
{
    static const std::vector<std::uint32_t> symbols = GeometricSymbols(c_sizeSymbols, 256, 9);
    return symbols;
}

void BM_CodedSizeGeometric256(benchmark::State& state)
{
    const std::vector<std::uint32_t>& symbols = SizeSymbols();
    std::size_t coded = 0;
    for (auto _ : state)
        coded = EncodeSymbols(symbols, 256).size();
    const Bytes bytes = AsBytes(symbols);
    ReportRatios(state, static_cast<double>(coded), Peers("geometric256", bytes.data(), bytes.size()));
    state.counters["ratio_entropy"] = coded / EntropyBytes(symbols, 256);
    state.counters["bits_per_symbol"] = 8.0 * coded / symbols.size();
    state.SetItemsProcessed(state.iterations() * symbols.size());
}
BENCHMARK(BM_CodedSizeGeometric256)->Iterations(1)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Predictive coder on a smooth 16-bit signal: three sines of incommensurate
// periods plus Gaussian noise (sigma 3), predicted by linear extrapolation
// from the two previous samples. (With whole-number periods the signal
// repeats exactly every lcm of the periods, and xz's matches exploit that.)

const std::vector<std::uint16_t>& Signal16()
{
    static const std::vector<std::uint16_t> samples = [] {
        std::mt19937 random(5);
        std::normal_distribution<double> noise(0.0, 3.0);
        std::vector<std::uint16_t> made(c_signalSamples);
        for (std::size_t i = 0; i < made.size(); ++i) {
            const double x = 32768 + 10000 * std::sin(2 * M_PI * i / 5000.3) + 5000 * std::sin(2 * M_PI * i / 1371.1 + 1) +
                             2000 * std::sin(2 * M_PI * i / 313.7 + 2) + noise(random);
            made[i] = static_cast<std::uint16_t>(std::clamp(std::lround(x), 0L, 65535L));
        }
        return made;
    }();
    return samples;
}

std::uint32_t Extrapolate(std::uint32_t last, std::uint32_t beforeLast)
{
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(2 * std::int64_t(last) - beforeLast, 0, 65535));
}

Bytes EncodeSignal16(const std::vector<std::uint16_t>& samples)
{
    BxStreamWriteBinaryBuffer out(samples.size());
    {
        VoStreamWritePredictiveCoder coder(out, 16, static_cast<std::uint32_t>(samples.size() * 2));
        std::uint32_t last = 0;
        std::uint32_t beforeLast = 0;
        for (const std::uint16_t x : samples) {
            coder.WriteValue(x, Extrapolate(last, beforeLast));
            beforeLast = last;
            last = x;
        }
    }
    return Contents(out);
}

void BM_PredictiveEncodeSignal16(benchmark::State& state)
{
    const std::vector<std::uint16_t>& samples = Signal16();
    std::size_t coded = 0;
    for (auto _ : state)
        coded = EncodeSignal16(samples).size();
    ReportRatios(state, static_cast<double>(coded),
                 Peers("signal16", samples.data(), samples.size() * sizeof(std::uint16_t)));
    state.counters["ratio_raw"] = coded / (2.0 * samples.size());
    state.SetItemsProcessed(state.iterations() * samples.size());
}
BENCHMARK(BM_PredictiveEncodeSignal16)->Unit(benchmark::kMillisecond);

void BM_PredictiveDecodeSignal16(benchmark::State& state)
{
    const std::vector<std::uint16_t>& samples = Signal16();
    const Bytes block = EncodeSignal16(samples);
    std::vector<std::uint16_t> decoded(samples.size());
    for (auto _ : state) {
        BxStreamReadBinaryBuffer in(block.data(), block.size());
        VoStreamReadPredictiveCoder decoder(in, 16);
        std::uint32_t last = 0;
        std::uint32_t beforeLast = 0;
        for (std::uint16_t& x : decoded) {
            x = static_cast<std::uint16_t>(decoder.ReadValue(Extrapolate(last, beforeLast)));
            beforeLast = last;
            last = x;
        }
    }
    if (decoded != samples)
        state.SkipWithError("the signal did not round-trip");
    state.SetItemsProcessed(state.iterations() * samples.size());
}
BENCHMARK(BM_PredictiveDecodeSignal16)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Floating-point stream on smooth float32 data (two sines in [-1, 1] of
// incommensurate periods with
// noise of sigma 1e-3), quantized in steps of 1e-4 and predicted from the
// previous reconstructed value. The peers compress the raw float samples
// losslessly; the stream keeps every value within half a step (5e-5).

const std::vector<float>& SignalFloat()
{
    static const std::vector<float> samples = [] {
        std::mt19937 random(6);
        std::normal_distribution<float> noise(0.0f, 1e-3f);
        std::vector<float> made(c_signalSamples);
        for (std::size_t i = 0; i < made.size(); ++i)
            made[i] = static_cast<float>(0.6 * std::sin(2 * M_PI * i / 2000.3) + 0.3 * std::sin(2 * M_PI * i / 301.7)) +
                      noise(random);
        return made;
    }();
    return samples;
}

const VoFloatingPointQuantizationUniform& FloatQuantization()
{
    static const VoFloatingPointQuantizationUniform quantization(-1.0f, 1.0f, 10000.0f);
    return quantization;
}

Bytes EncodeFloats(const std::vector<float>& samples)
{
    const VoFloatingPointQuantizationUniform& quantization = FloatQuantization();
    BxStreamWriteBinaryBuffer out(samples.size());
    {
        VoStreamWriteCompressedFloatingPoint coder(out, quantization, false,
                                                   static_cast<std::uint32_t>(samples.size() * 2));
        float previous = 0.0f;
        for (const float x : samples) {
            coder.WriteValue(x, previous);
            previous = quantization.Unmap(quantization.Map(x));
        }
    }
    return Contents(out);
}

void BM_FloatStreamEncode(benchmark::State& state)
{
    const std::vector<float>& samples = SignalFloat();
    std::size_t coded = 0;
    for (auto _ : state)
        coded = EncodeFloats(samples).size();
    ReportRatios(state, static_cast<double>(coded), Peers("float32", samples.data(), samples.size() * sizeof(float)));
    state.counters["ratio_raw"] = coded / (4.0 * samples.size());
    state.SetItemsProcessed(state.iterations() * samples.size());
}
BENCHMARK(BM_FloatStreamEncode)->Unit(benchmark::kMillisecond);

void BM_FloatStreamDecode(benchmark::State& state)
{
    const std::vector<float>& samples = SignalFloat();
    const Bytes block = EncodeFloats(samples);
    std::vector<float> decoded(samples.size());
    for (auto _ : state) {
        BxStreamReadBinaryBuffer in(block.data(), block.size());
        VoStreamReadCompressedFloatingPoint decoder(in, FloatQuantization(), false);
        float previous = 0.0f;
        for (float& x : decoded)
            previous = x = decoder.ReadValue(previous);
    }
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (std::fabs(decoded[i] - samples[i]) > 0.6e-4f) {
            state.SkipWithError("a float came back outside the quantization step");
            break;
        }
    state.SetItemsProcessed(state.iterations() * samples.size());
}
BENCHMARK(BM_FloatStreamDecode)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
