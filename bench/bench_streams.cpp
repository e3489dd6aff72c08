// Binary file streams against their peers in the same binary:
//  - compressed writing and reading (VoStreamWriteBinaryFile / VoStreamReadBinaryFile
//    with ZIP) against zlib's own deflate and inflate at the same level over stdio;
//    reading also against zlib fed its input in pieces of 1,024 bytes, as our
//    reader feeds it, which shows what that piece size costs zlib itself;
//  - uncompressed writing and reading against fwrite and fread.
// Data: 64 MiB of text-like bytes and of float32 sensor-like samples. The
// compression ratio (compressed / original) is reported beside zlib's.
// Files go to /tmp.
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritecompressedzip.h>

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <tuple>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t c_dataSize = 64u << 20;
constexpr std::size_t c_block = 64u << 10;  // what callers hand over at once
using Bytes = std::vector<unsigned char>;

const Bytes& textData()
{
    static const Bytes data = [] {
        static const char* words[] = {"timestamp=", "sensor ", "value ", "frame ", "temperature ", "ok ", "\n",
                                      "node-", "warning: ", "pressure ", "; ", "id "};
        std::mt19937 random(1);
        std::string text;
        text.reserve(c_dataSize + 64);
        while (text.size() < c_dataSize) {
            text += words[random() % std::size(words)];
            if (random() % 3 == 0)
                text += std::to_string(random() % 100000);
        }
        return Bytes(text.begin(), text.begin() + c_dataSize);
    }();
    return data;
}

const Bytes& floatData()
{
    static const Bytes data = [] {
        // 16 channels of slow signals with measurement noise, interleaved.
        std::mt19937 random(2);
        std::normal_distribution<float> noise(0.0f, 0.02f);
        std::vector<float> samples(c_dataSize / sizeof(float));
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::size_t channel = i % 16, t = i / 16;
            samples[i] = 20.0f + 5.0f * std::sin(0.001f * float(t) * float(channel + 1)) + noise(random);
        }
        const auto* p = reinterpret_cast<const unsigned char*>(samples.data());
        return Bytes(p, p + c_dataSize);
    }();
    return data;
}

const Bytes& dataset(int which) { return which == 0 ? textData() : floatData(); }
const char* datasetName(int which) { return which == 0 ? "text" : "float"; }

std::string tempPath(const std::string& name)
{
    return "/tmp/vobase-bench-streams-" + std::to_string(getpid()) + "-" + name;
}

std::wstring wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

int zlibLevel(int level)
{
    return VoStreamWriteCompressedZIP::TranslateCompressionLevel(VoStreamWriteBinaryFile::ECompressionLevel(level));
}

double fileSize(const std::string& path) { return double(std::filesystem::file_size(path)); }

// zlib peer: a 28-byte header, then deflate over 64 KiB blocks into 64 KiB of output, fwrite.
void zlibWrite(const std::string& path, const Bytes& data, int level)
{
    std::FILE* f = std::fopen(path.c_str(), "wb");
    const unsigned char header[28] = {};
    std::fwrite(header, 1, sizeof header, f);
    z_stream z{};
    deflateInit(&z, level);
    Bytes out(c_block);
    for (std::size_t at = 0; at < data.size(); at += c_block) {
        const bool last = at + c_block >= data.size();
        z.next_in = const_cast<Bytef*>(data.data() + at);
        z.avail_in = static_cast<uInt>(std::min(c_block, data.size() - at));
        do {
            z.next_out = out.data();
            z.avail_out = static_cast<uInt>(out.size());
            deflate(&z, last ? Z_FINISH : Z_NO_FLUSH);
            std::fwrite(out.data(), 1, out.size() - z.avail_out, f);
        } while (z.avail_out == 0);
    }
    deflateEnd(&z);
    std::fclose(f);
}

// zlib peer: fread of 64 KiB blocks, each handed to inflate in slices of at
// most `piece` bytes, output into the caller's 64 KiB block.
std::size_t zlibRead(const std::string& path, Bytes& out, std::size_t piece = c_block)
{
    std::FILE* f = std::fopen(path.c_str(), "rb");
    std::fseek(f, 28, SEEK_SET);
    z_stream z{};
    inflateInit(&z);
    Bytes in(c_block);
    std::size_t total = 0, filled = 0, used = 0;
    int ret = Z_OK;
    while (ret != Z_STREAM_END) {
        if (z.avail_in == 0) {
            if (used == filled) {
                filled = std::fread(in.data(), 1, in.size(), f);
                used = 0;
                if (filled == 0)
                    break;
            }
            z.next_in = in.data() + used;
            z.avail_in = static_cast<uInt>(std::min(piece, filled - used));
            used += z.avail_in;
        }
        z.next_out = out.data();
        z.avail_out = static_cast<uInt>(out.size());
        ret = inflate(&z, Z_NO_FLUSH);
        total += out.size() - z.avail_out;
        if (ret != Z_OK && ret != Z_STREAM_END)
            break;
    }
    inflateEnd(&z);
    std::fclose(f);
    return total;
}

void oursWrite(const std::string& path, const Bytes& data, int level)
{
    VoStreamWriteBinaryFile out(wide(path), VoStreamWriteBinaryFile::eAM_Create, VoStreamWriteBinaryFile::eCM_ZIP,
                                VoStreamWriteBinaryFile::ECompressionLevel(level));
    for (std::size_t at = 0; at < data.size(); at += c_block)
        out.WriteBuffer(data.data() + at, std::min(c_block, data.size() - at));
    out.Flush();
}

std::map<std::tuple<int, int, bool>, std::string>& compressedFiles()
{
    static std::map<std::tuple<int, int, bool>, std::string> files;
    return files;
}

// A compressed file of each kind, made once for the read benchmarks.
const std::string& compressedFile(int which, int level, bool ours)
{
    auto& path = compressedFiles()[{which, level, ours}];
    if (path.empty()) {
        path = tempPath(std::string(datasetName(which)) + "-" + std::to_string(level) + (ours ? "-ours" : "-zlib"));
        ours ? oursWrite(path, dataset(which), level) : zlibWrite(path, dataset(which), zlibLevel(level));
    }
    return path;
}

// ---- compressed ----

void BM_ZipWrite_Ours(benchmark::State& state)
{
    const int which = int(state.range(0)), level = int(state.range(1));
    const Bytes& data = dataset(which);
    const std::string path = tempPath("w-ours");
    for (auto _ : state)
        oursWrite(path, data, level);
    state.SetBytesProcessed(std::int64_t(state.iterations() * data.size()));
    state.counters["ratio"] = fileSize(path) / double(data.size());
    state.SetLabel(datasetName(which));
    std::filesystem::remove(path);
}

void BM_ZipWrite_Zlib(benchmark::State& state)
{
    const int which = int(state.range(0)), level = int(state.range(1));
    const Bytes& data = dataset(which);
    const std::string path = tempPath("w-zlib");
    for (auto _ : state)
        zlibWrite(path, data, zlibLevel(level));
    state.SetBytesProcessed(std::int64_t(state.iterations() * data.size()));
    state.counters["ratio"] = fileSize(path) / double(data.size());
    state.SetLabel(datasetName(which));
    std::filesystem::remove(path);
}

void BM_ZipRead_Ours(benchmark::State& state)
{
    const int which = int(state.range(0)), level = int(state.range(1));
    const std::string& path = compressedFile(which, level, true);
    Bytes block(c_block);
    std::size_t total = 0;
    for (auto _ : state) {
        VoStreamReadBinaryFile in(wide(path));
        total = 0;
        while (std::size_t n = in.ReadBuffer(block.data(), block.size()))
            total += n;
    }
    if (total != dataset(which).size())
        state.SkipWithError("wrong size");
    state.SetBytesProcessed(std::int64_t(state.iterations() * total));
    state.SetLabel(datasetName(which));
}

void BM_ZipRead_Zlib(benchmark::State& state)
{
    const int which = int(state.range(0)), level = int(state.range(1));
    const std::string& path = compressedFile(which, level, false);
    Bytes block(c_block);
    std::size_t total = 0;
    for (auto _ : state)
        total = zlibRead(path, block);
    if (total != dataset(which).size())
        state.SkipWithError("wrong size");
    state.SetBytesProcessed(std::int64_t(state.iterations() * total));
    state.SetLabel(datasetName(which));
}

// The same, with inflate fed 1,024 bytes at a time.
void BM_ZipRead_Zlib1K(benchmark::State& state)
{
    const int which = int(state.range(0)), level = int(state.range(1));
    const std::string& path = compressedFile(which, level, false);
    Bytes block(c_block);
    std::size_t total = 0;
    for (auto _ : state)
        total = zlibRead(path, block, 1024);
    if (total != dataset(which).size())
        state.SkipWithError("wrong size");
    state.SetBytesProcessed(std::int64_t(state.iterations() * total));
    state.SetLabel(datasetName(which));
}

// ---- uncompressed ----

void BM_FileWrite_Ours(benchmark::State& state)
{
    const std::size_t record = std::size_t(state.range(0));
    const Bytes& data = textData();
    const std::string path = tempPath("raw-ours");
    for (auto _ : state) {
        VoStreamWriteBinaryFile out(wide(path));
        for (std::size_t at = 0; at < data.size(); at += record)
            out.WriteBuffer(data.data() + at, record);
        out.Flush();
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * data.size()));
    std::filesystem::remove(path);
}

void BM_FileWrite_Fwrite(benchmark::State& state)
{
    const std::size_t record = std::size_t(state.range(0));
    const Bytes& data = textData();
    const std::string path = tempPath("raw-fwrite");
    for (auto _ : state) {
        std::FILE* f = std::fopen(path.c_str(), "wb");
        std::setvbuf(f, nullptr, _IOFBF, 65536);
        for (std::size_t at = 0; at < data.size(); at += record)
            std::fwrite(data.data() + at, record, 1, f);
        std::fclose(f);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * data.size()));
    std::filesystem::remove(path);
}

const std::string& plainFile()
{
    static const std::string path = [] {
        const std::string p = tempPath("plain");
        std::FILE* f = std::fopen(p.c_str(), "wb");
        std::fwrite(textData().data(), 1, textData().size(), f);
        std::fclose(f);
        return p;
    }();
    return path;
}

void BM_FileRead_Ours(benchmark::State& state)
{
    const std::size_t record = std::size_t(state.range(0));
    Bytes block(record);
    std::size_t total = 0;
    for (auto _ : state) {
        VoStreamReadBinaryFile in(wide(plainFile()));
        total = 0;
        while (std::size_t n = in.ReadBuffer(block.data(), record))
            total += n;
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * total));
}

void BM_FileRead_Fread(benchmark::State& state)
{
    const std::size_t record = std::size_t(state.range(0));
    Bytes block(record);
    std::size_t total = 0;
    for (auto _ : state) {
        std::FILE* f = std::fopen(plainFile().c_str(), "rb");
        std::setvbuf(f, nullptr, _IOFBF, 65536);
        total = 0;
        while (std::size_t n = std::fread(block.data(), 1, record, f))
            total += n;
        std::fclose(f);
    }
    state.SetBytesProcessed(std::int64_t(state.iterations() * total));
}

void zipArgs(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"data", "level"});
    for (int which : {0, 1})
        for (int level : {0, 1, 2})
            b->Args({which, level});
    b->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK(BM_ZipWrite_Ours)->Apply(zipArgs)->Iterations(1);
BENCHMARK(BM_ZipWrite_Zlib)->Apply(zipArgs)->Iterations(1);
BENCHMARK(BM_ZipRead_Ours)->Apply(zipArgs)->Iterations(1);
BENCHMARK(BM_ZipRead_Zlib)->Apply(zipArgs)->Iterations(1);
BENCHMARK(BM_ZipRead_Zlib1K)->Apply(zipArgs)->Iterations(1);
BENCHMARK(BM_FileWrite_Ours)->ArgName("record")->Arg(8)->Arg(c_block)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FileWrite_Fwrite)->ArgName("record")->Arg(8)->Arg(c_block)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FileRead_Ours)->ArgName("record")->Arg(8)->Arg(c_block)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FileRead_Fread)->ArgName("record")->Arg(8)->Arg(c_block)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    for (const auto& [key, path] : compressedFiles())
        std::filesystem::remove(path);
    std::filesystem::remove(tempPath("plain"));
    return 0;
}
