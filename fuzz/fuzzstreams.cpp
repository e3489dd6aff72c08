// Targets for the stream readers: archives (memory, file, raw file, ASCII
// file), the ZIP reader, the range decoder with its models, the predictive
// and floating-point readers, the ASCII string readers and LZMA.
#include "fuzztarget.h"

#include <vobase/streams/vofloatingpointquantizationuniform.h>
#include <vobase/streams/vofloatingpointquantizationuniformwithinvalid.h>
#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadasciifile.h>
#include <vobase/streams/vostreamreadasciistringt.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamreadbinaryfileraw.h>
#include <vobase/streams/vostreamreadbinarymemoryfile.h>
#include <vobase/streams/vostreamreadcompressedfloatingpoint.h>
#include <vobase/streams/vostreamreadcompressedzip.h>
#include <vobase/streams/vostreamreadpredictivecoder.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritecompressedfloatingpoint.h>
#include <vobase/streams/vostreamwritecompressedzip.h>
#include <vobase/streams/vostreamwritepredictivecoder.h>

#include <vocompression/vocompresslzma.h>
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompresslzma.h>
#include <vocompression/vodecompressrangecoder.h>
#include <vocompression/voprobabilitymodelquasistatic.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxstringconvert.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <utility>
#include <unistd.h>

namespace fuzz {

namespace {

template <class F>
void mustDecode(const char* what, F step)
{
    try {
        step();
    } catch (const BxException& e) {
        throw CFinding(std::string(what) + ": the library refused its own encoding: " + e.what());
    }
}

// Reads until a short read, in pieces of changing sizes (small ones through
// the buffered path, large ones straight into the destination).
Bytes readAll(BxStreamReadBinary& in)
{
    static constexpr std::size_t c_pieces[] = {1, 7, 100, 2000, 5000, 3};
    Bytes out;
    for (std::size_t i = 0;; ++i) {
        const std::size_t piece = c_pieces[i % std::size(c_pieces)];
        const std::size_t at = out.size();
        out.resize(at + piece);
        const std::size_t got = in.ReadBuffer(out.data() + at, piece);
        out.resize(at + got);
        if (got < piece)
            return out;
    }
}

Bytes deflated(const Bytes& payload)
{
    BxStreamWriteBinaryBuffer out;
    {
        VoStreamWriteCompressedZIP zip(out, VoStreamWriteBinaryFile::eCL_Default);
        zip.WriteBuffer(payload.data(), payload.size());
    }
    return BytesOf(out);
}

// A ZIP archive of `payload` as the file writer lays it out: header, zlib stream.
Bytes archiveOf(const Bytes& payload)
{
    Bytes archive(VoStreamCompressionHeader::c_HeaderSize);
    VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_ZIP, VoStreamCompressionHeader::SaturateSize(payload.size()))
        .Serialize(archive.data());
    const Bytes body = deflated(payload);
    archive.insert(archive.end(), body.begin(), body.end());
    return archive;
}

// The one scratch file of this process, rewritten for each input.
class CScratchFile
{
public:
    CScratchFile()
        : m_path(std::filesystem::temp_directory_path() / ("vobase-fuzz-" + std::to_string(getpid()) + ".bin"))
    {
    }
    ~CScratchFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    std::wstring Write(const std::uint8_t* data, std::size_t size) const
    {
        std::ofstream out(m_path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return m_path.wstring();
    }

private:
    std::filesystem::path m_path;
};

const CScratchFile& scratch()
{
    static const CScratchFile file;
    return file;
}

// The payload must survive being archived and read again, byte for byte.
void archiveRoundTrip(const Bytes& payload, const char* what)
{
    const Bytes first = archiveOf(payload);
    Bytes back;
    mustDecode(what, [&] {
        VoStreamReadBinaryMemoryFile again(first.data(), first.size());
        back = readAll(again);
    });
    ExpectSameBytes(payload, back, std::string(what) + " payload");
    ExpectSameBytes(first, archiveOf(back), what);
}

}  // namespace

// --- archive: the header and the archive readers -----------------------------

void FuzzArchive(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t form = data[0] % 4;
    ++data;
    --size;
    VoStreamCompressionHeader header;
    const bool parsed = header.Parse(data, size);
    Expect(parsed == (size >= VoStreamCompressionHeader::c_HeaderSize &&
                      VoStreamCompressionHeader::HasSignature(data, size)),
           "archive: Parse and HasSignature disagree");
    switch (form) {
    case 0: {
        VoStreamReadBinaryMemoryFile in(data, size);
        archiveRoundTrip(readAll(in), "archive memory");
        break;
    }
    case 1: {
        VoStreamReadBinaryFile in(scratch().Write(data, size));
        archiveRoundTrip(readAll(in), "archive file");
        break;
    }
    case 2: {
        VoStreamReadBinaryFileRaw in(scratch().Write(data, size).c_str());
        std::uint8_t peeked[VoStreamCompressionHeader::c_HeaderSize];
        const std::size_t count = in.Peek(peeked, sizeof peeked);
        Expect(count == std::min(size, sizeof peeked), "archive raw: Peek count");
        ExpectSameBytes(Bytes(data, data + size), readAll(in), "archive raw");
        break;
    }
    default: {
        VoStreamReadASCIIFile in(scratch().Write(data, size));
        std::string line;
        int number;
        std::string word;
        for (int i = 0; !in.IsEndOfStream() && i < 1000; ++i) {
            try {
                if (i % 3 == 0)
                    in >> VoStreamReadASCIIT<std::string>::Line(line);
                else if (i % 3 == 1)
                    in >> number;
                else
                    in >> word;
            } catch (const BxException&) {
                if (in.IsEndOfStream())
                    break;
            }
        }
        break;
    }
    }
}

void SeedsArchive(std::vector<Bytes>& out)
{
    Bytes payload;
    for (int i = 0; i < 300; ++i)
        payload.push_back(static_cast<std::uint8_t>("vobase archive "[i % 15]));
    const Bytes zip = archiveOf(payload);
    Bytes stored(VoStreamCompressionHeader::c_HeaderSize);
    VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_Stored, 300).Serialize(stored.data());
    stored.insert(stored.end(), payload.begin(), payload.end());
    Bytes old = stored;
    std::copy_n(VoStreamCompressionHeader::c_ArchiveSignatureOld, VoStreamCompressionHeader::c_SignatureSize,
                old.begin());
    const std::string text = "12 -7 true\r\nrest of the line\n3.5 word";
    for (std::uint8_t form = 0; form < 4; ++form) {
        for (const Bytes* body : {&zip, &std::as_const(stored), &std::as_const(old)}) {
            Bytes seed{form};
            seed.insert(seed.end(), body->begin(), body->end());
            out.push_back(seed);
        }
    }
    out.push_back(BytesOf("\x03" + text));
}

// --- zip: the ZIP reader on a bare zlib stream ------------------------------

void FuzzZip(const std::uint8_t* data, std::size_t size)
{
    BxStreamReadBinaryBuffer inner(data, size);
    VoStreamReadCompressedZIP zip(inner);
    const Bytes payload = readAll(zip);
    if (payload.size() > 1) {
        // the same stream with a maximum one byte short stops; at the size it reads
        BxStreamReadBinaryBuffer limitedInner(data, size);
        VoStreamReadCompressedZIP limited(limitedInner);
        limited.SetMaximumSize(payload.size() - 1);
        bool stopped = false;
        try {
            (void)readAll(limited);
        } catch (const BxException&) {
            stopped = true;
        }
        Expect(stopped, "zip: inflated beyond the maximum size");
        BxStreamReadBinaryBuffer exactInner(data, size);
        VoStreamReadCompressedZIP exact(exactInner);
        exact.SetMaximumSize(payload.size());
        ExpectSameBytes(payload, readAll(exact), "zip at its maximum size");
    }
    const Bytes first = deflated(payload);
    Bytes back;
    mustDecode("zip", [&] {
        BxStreamReadBinaryBuffer again(first.data(), first.size());
        VoStreamReadCompressedZIP inflate(again);
        back = readAll(inflate);
    });
    ExpectSameBytes(payload, back, "zip payload");
    ExpectSameBytes(first, deflated(back), "zip");
}

void SeedsZip(std::vector<Bytes>& out)
{
    out.push_back(deflated({}));
    Bytes text;
    for (int i = 0; i < 2000; ++i)
        text.push_back(static_cast<std::uint8_t>("the quick brown fox "[i % 20]));
    out.push_back(deflated(text));
    Bytes noise(700);
    std::uint32_t x = 1;
    for (auto& b : noise)
        b = static_cast<std::uint8_t>((x = x * 1103515245u + 12345u) >> 24);
    out.push_back(deflated(noise));
}

// --- rangecoder: the range decoder with its own and a separate model --------

namespace {

struct SModel
{
    std::uint32_t symbols, totalBits, targetRescale;
};
constexpr SModel c_models[] = {{2, 16, 1024}, {3, 16, 1024}, {17, 8, 256}, {256, 16, 1024}, {1000, 12, 4096},
                               {16384, 16, 65535}};
constexpr std::size_t c_maxItems = 2048;

// What item i is, for a given pattern: a symbol of the coder's own model, a
// symbol of the separate model, a raw field of some width, or a raw byte.
struct SItem
{
    int kind;
    std::uint32_t width;
};
SItem itemOf(std::uint8_t pattern, std::size_t i)
{
    return {static_cast<int>((pattern + i * 5) % 4), static_cast<std::uint32_t>(1 + (pattern * 3 + i) % 32)};
}

BxSmartPointer<VoProbabilityModelQuasiStatic> modelOf(const SModel& m)
{
    return BxSmartPointer<VoProbabilityModelQuasiStatic>(
        new VoProbabilityModelQuasiStatic(m.symbols, m.totalBits, m.targetRescale));
}

// Decodes up to `limit` items; stops at the first BxException when `tolerant`.
std::vector<std::uint32_t> decodeItems(const std::uint8_t* data, std::size_t size, const SModel& m,
                                       std::uint8_t pattern, std::size_t limit, bool tolerant)
{
    std::vector<std::uint32_t> values;
    BxStreamReadBinaryBuffer in(data, size);
    VoDecompressRangeCoder decoder(in, m.symbols);
    const auto separate = modelOf(m);
    try {
        for (std::size_t i = 0; i < limit; ++i) {
            const SItem item = itemOf(pattern, i);
            std::uint32_t v = 0;
            switch (item.kind) {
            case 0: decoder >> v; break;
            case 1: v = decoder.ReadSymbol(*separate); break;
            case 2: v = decoder.ReadRawBits(item.width); break;
            default: {
                std::uint8_t byte = 0;
                decoder.ReadRaw(&byte, 1);
                v = byte;
            }
            }
            if (item.kind == 2 && item.width < 32)
                v &= (1u << item.width) - 1;  // the field's bits: what an encoder can write
            values.push_back(v);
        }
    } catch (const BxException&) {
        if (!tolerant)
            throw;
    }
    return values;
}

Bytes encodeItems(const std::vector<std::uint32_t>& values, const SModel& m, std::uint8_t pattern)
{
    BxStreamWriteBinaryBuffer out;
    VoCompressRangeCoder encoder(out, m.symbols, 64);
    const auto separate = modelOf(m);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const SItem item = itemOf(pattern, i);
        switch (item.kind) {
        case 0: encoder << values[i]; break;
        case 1: encoder.WriteSymbol(values[i], *separate); break;
        case 2: encoder.WriteRawBits(values[i], item.width); break;
        default: {
            const std::uint8_t byte = static_cast<std::uint8_t>(values[i]);
            encoder.WriteRaw(&byte, 1);
        }
        }
    }
    encoder.Close();
    return BytesOf(out);
}

}  // namespace

void FuzzRangeCoder(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const SModel& m = c_models[data[0] % std::size(c_models)];
    const std::uint8_t pattern = data[0] / std::size(c_models);
    const std::vector<std::uint32_t> values = decodeItems(data + 1, size - 1, m, pattern, c_maxItems, true);
    const Bytes first = encodeItems(values, m, pattern);
    std::vector<std::uint32_t> back;
    mustDecode("rangecoder", [&] { back = decodeItems(first.data(), first.size(), m, pattern, values.size(), false); });
    Expect(back == values, "rangecoder: the items changed");
    ExpectSameBytes(first, encodeItems(back, m, pattern), "rangecoder");
}

void SeedsRangeCoder(std::vector<Bytes>& out)
{
    for (std::uint8_t selector : {0, 7, 14, 21, 28, 35}) {
        const SModel& m = c_models[selector % std::size(c_models)];
        const std::uint8_t pattern = selector / std::size(c_models);
        std::vector<std::uint32_t> values;
        for (std::size_t i = 0; i < 60; ++i) {
            const SItem item = itemOf(pattern, i);
            const std::uint32_t v = static_cast<std::uint32_t>(i * 2654435761u);
            values.push_back(item.kind < 2 ? v % m.symbols
                                           : item.kind == 2 && item.width < 32 ? v & ((1u << item.width) - 1)
                                           : item.kind == 2                    ? v
                                                                                : v & 0xFF);
        }
        Bytes seed{selector};
        const Bytes body = encodeItems(values, m, pattern);
        seed.insert(seed.end(), body.begin(), body.end());
        out.push_back(seed);
    }
}

// --- predictive: the predictive-coder and floating-point readers ------------

namespace {

constexpr std::size_t c_maxValues = 1024;

std::uint32_t predictionOf(std::size_t i, std::uint32_t bits)
{
    const std::uint32_t p = static_cast<std::uint32_t>(i * 2654435761u);
    return bits >= 32 ? p : p & ((1u << bits) - 1);
}

const VoFloatingPointQuantization& quantizationOf(std::uint8_t choice)
{
    static const VoFloatingPointQuantizationUniform uniform(0.0f, 1.0f, 255.0f);
    static const VoFloatingPointQuantizationUniformWithInvalid withInvalid(-10.0f, 10.0f, 100.0f, -999.0f);
    return choice % 2 ? static_cast<const VoFloatingPointQuantization&>(withInvalid) : uniform;
}

constexpr float c_floatPredictions[] = {0.0f, 0.5f, 0.25f, 1.0f, -3.0f, 7.5f};

std::vector<std::uint32_t> decodeIntegers(const std::uint8_t* data, std::size_t size, std::uint32_t bits,
                                          std::size_t limit, bool tolerant)
{
    std::vector<std::uint32_t> values;
    BxStreamReadBinaryBuffer in(data, size);
    VoStreamReadPredictiveCoder reader(in, bits);
    try {
        for (std::size_t i = 0; i < limit; ++i)
            values.push_back(reader.ReadValue(predictionOf(i, bits)));
    } catch (const BxException&) {
        if (!tolerant)
            throw;
    }
    return values;
}

Bytes encodeIntegers(const std::vector<std::uint32_t>& values, std::uint32_t bits)
{
    BxStreamWriteBinaryBuffer out;
    VoStreamWritePredictiveCoder writer(out, bits, 256);
    for (std::size_t i = 0; i < values.size(); ++i)
        writer.WriteValue(values[i], predictionOf(i, bits));
    writer.Close();
    return BytesOf(out);
}

std::vector<float> decodeFloats(const std::uint8_t* data, std::size_t size, std::uint8_t choice, std::size_t limit,
                                bool tolerant)
{
    std::vector<float> values;
    BxStreamReadBinaryBuffer in(data, size);
    VoStreamReadCompressedFloatingPoint reader(in, quantizationOf(choice), false);
    try {
        for (std::size_t i = 0; i < limit; ++i)
            values.push_back(reader.ReadValue(c_floatPredictions[i % std::size(c_floatPredictions)]));
    } catch (const BxException&) {
        if (!tolerant)
            throw;
    }
    return values;
}

Bytes encodeFloats(const std::vector<float>& values, std::uint8_t choice)
{
    BxStreamWriteBinaryBuffer out;
    VoStreamWriteCompressedFloatingPoint writer(out, quantizationOf(choice), false, 256);
    for (std::size_t i = 0; i < values.size(); ++i)
        writer.WriteValue(values[i], c_floatPredictions[i % std::size(c_floatPredictions)]);
    writer.Close();
    return BytesOf(out);
}

}  // namespace

void FuzzPredictive(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t selector = data[0];
    ++data;
    --size;
    if (selector & 0x80) {
        const std::uint8_t choice = selector & 1;
        const std::vector<float> values = decodeFloats(data, size, choice, c_maxValues, true);
        const Bytes first = encodeFloats(values, choice);
        std::vector<float> back;
        mustDecode("predictive float", [&] { back = decodeFloats(first.data(), first.size(), choice, values.size(), false); });
        ExpectSameBytes(first, encodeFloats(back, choice), "predictive float");
        return;
    }
    const std::uint32_t bits = 1 + selector % 32;
    std::vector<std::uint32_t> values = decodeIntegers(data, size, bits, c_maxValues, true);
    // Only differences below 2^B have a code: keep the prefix that an encoder can write.
    const std::uint64_t limit = std::uint64_t(1) << bits;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::uint32_t p = predictionOf(i, bits);
        if ((values[i] > p ? values[i] - p : p - values[i]) >= limit) {
            values.resize(i);
            break;
        }
    }
    const Bytes first = encodeIntegers(values, bits);
    std::vector<std::uint32_t> back;
    mustDecode("predictive", [&] { back = decodeIntegers(first.data(), first.size(), bits, values.size(), false); });
    Expect(back == values, "predictive: the values changed");
    ExpectSameBytes(first, encodeIntegers(back, bits), "predictive");
}

void SeedsPredictive(std::vector<Bytes>& out)
{
    for (std::uint32_t bits : {1u, 8u, 16u, 32u}) {
        std::vector<std::uint32_t> values;
        for (std::size_t i = 0; i < 40; ++i)
            values.push_back(predictionOf(i, bits) ^ static_cast<std::uint32_t>(i % 5));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::uint32_t p = predictionOf(i, bits);
            if ((values[i] > p ? values[i] - p : p - values[i]) >= (std::uint64_t(1) << bits))
                values[i] = p;
        }
        Bytes seed{static_cast<std::uint8_t>(bits - 1)};
        const Bytes body = encodeIntegers(values, bits);
        seed.insert(seed.end(), body.begin(), body.end());
        out.push_back(seed);
    }
    for (std::uint8_t choice : {0, 1}) {
        std::vector<float> values;
        for (int i = 0; i < 40; ++i)
            values.push_back(i == 7 ? -999.0f : static_cast<float>(std::sin(i * 0.3)));
        Bytes seed{static_cast<std::uint8_t>(0x80 | choice)};
        const Bytes body = encodeFloats(values, choice);
        seed.insert(seed.end(), body.begin(), body.end());
        out.push_back(seed);
    }
}

// --- ascii: the token readers over strings ------------------------------------

namespace {

constexpr int c_asciiOps = 14;
constexpr std::size_t c_maxTokens = 512;

template <class T>
std::string numberText(T value)
{
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

// Reads up to `limit` tokens, the kinds cycling with `pattern`, and writes
// each back as text a reader takes for the same token: words and numbers
// followed by a space, lines by CR LF, raw characters as they are.
template <class TString>
std::string readTokens(const std::string& text, std::uint8_t pattern, std::size_t limit, bool tolerant,
                       std::size_t& count)
{
    TString source;
    if constexpr (std::is_same_v<TString, std::string>)
        source = text;
    else
        source = BxStringConvert::AnsiToWide(text);
    VoStreamReadASCIIStringT<TString> in(source);
    std::string out;
    count = 0;
    try {
        for (; count < limit; ++count) {
            switch ((pattern + count * 7) % c_asciiOps) {
            case 0: { bool v; in >> v; out += v ? "true " : "false "; break; }
            case 1: { char v; in >> v; out += v; break; }
            case 2: { signed char v; in >> v; out += numberText(int(v)) + " "; break; }
            case 3: { unsigned char v; in >> v; out += numberText(unsigned(v)) + " "; break; }
            case 4: { short v; in >> v; out += numberText(v) + " "; break; }
            case 5: { unsigned short v; in >> v; out += numberText(v) + " "; break; }
            case 6: { int v; in >> v; out += numberText(v) + " "; break; }
            case 7: { unsigned int v; in >> v; out += numberText(v) + " "; break; }
            case 8: { long long v; in >> v; out += numberText(v) + " "; break; }
            case 9: { unsigned long long v; in >> v; out += numberText(v) + " "; break; }
            case 10: { float v; in >> v; out += numberText(v) + " "; break; }
            case 11: { double v; in >> v; out += numberText(v) + " "; break; }
            case 12: {
                TString word;
                in >> word;
                if constexpr (std::is_same_v<TString, std::string>)
                    out += word + " ";
                break;
            }
            default: {
                TString line;
                in >> VoStreamReadASCIIT<TString>::Line(line);
                if constexpr (std::is_same_v<TString, std::string>)
                    out += line + "\r\n";
                break;
            }
            }
        }
    } catch (const BxException&) {
        if (!tolerant)
            throw;
    }
    return out;
}

}  // namespace

void FuzzAscii(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t pattern = data[0];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    std::size_t wideCount = 0;
    (void)readTokens<std::wstring>(text, pattern, c_maxTokens, true, wideCount);
    std::size_t count = 0;
    const std::string first = readTokens<std::string>(text, pattern, c_maxTokens, true, count);
    std::string second;
    std::size_t againCount = 0;
    mustDecode("ascii", [&] { second = readTokens<std::string>(first, pattern, count, false, againCount); });
    ExpectSameBytes(BytesOf(first), BytesOf(second), "ascii");
}

void SeedsAscii(std::vector<Bytes>& out)
{
    const std::string texts[] = {
        "true 1 -5 200 -300 60000 -70000 4000000000 -9000000000 18000000000000000000 2.5 1e300 word line\r\n",
        "12\r\n-7 false 0x1F 077 nan inf -0 3.4e38 abc",
        std::string(300, 'x') + "\n\n\r\n",
    };
    for (const std::string& text : texts)
        for (std::uint8_t pattern : {0, 3, 12})
            out.push_back(BytesOf(std::string(1, char(pattern)) + text));
}

// --- lzma: buffer decompression through the LZMA module ------------------------

namespace {

VoDecompressLZMA& decompressor()
{
    static VoDecompressLZMA lzma;
    return lzma;
}

VoCompressLZMA& compressor()
{
    static VoCompressLZMA lzma;
    return lzma;
}

constexpr unsigned int c_fuzzMaximum = 8u << 20;     // the run's own cap, below the default
constexpr std::size_t c_roundTripLimit = 64u << 10;  // larger results are not compressed again

Bytes lzmaCompress(const Bytes& data)
{
    VoCompressLZMA& lzma = compressor();
    Expect(lzma.Compress(data.data(), static_cast<unsigned int>(data.size())), "lzma: compression failed");
    return Bytes(lzma.GetData(), lzma.GetData() + lzma.GetSize());
}

}  // namespace

void FuzzLzma(const std::uint8_t* data, std::size_t size)
{
    VoDecompressLZMA& lzma = decompressor();
    lzma.SetMaximumSize(c_fuzzMaximum);
    if (!lzma.Decompress(data, static_cast<unsigned int>(size))) {
        Expect(lzma.GetData() == nullptr, "lzma: a refused input left a result");
        return;
    }
    Expect(lzma.GetSize() <= c_fuzzMaximum, "lzma: a result beyond the maximum");
    const Bytes result(lzma.GetData(), lzma.GetData() + lzma.GetSize());
    if (result.size() > c_roundTripLimit)
        return;
    const Bytes first = lzmaCompress(result);
    Bytes back;
    mustDecode("lzma", [&] {
        Expect(lzma.Decompress(first.data(), static_cast<unsigned int>(first.size())), "lzma: refused its own stream");
        back.assign(lzma.GetData(), lzma.GetData() + lzma.GetSize());
    });
    ExpectSameBytes(result, back, "lzma payload");
    ExpectSameBytes(first, lzmaCompress(back), "lzma");
}

void SeedsLzma(std::vector<Bytes>& out)
{
    Bytes text;
    for (int i = 0; i < 3000; ++i)
        text.push_back(static_cast<std::uint8_t>("lorem ipsum dolor "[i % 18]));
    out.push_back(lzmaCompress(text));
    out.push_back(lzmaCompress({}));
    out.push_back(lzmaCompress(Bytes(100000, 0)));  // a small stream of a large result
}

}  // namespace fuzz
