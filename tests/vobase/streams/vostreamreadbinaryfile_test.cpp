#include "streamtestfiles.h"

#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamreadbinarymemoryfile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>

#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionstream.h>

#include <fstream>
#include <sstream>
#include <zlib.h>

using namespace streamtest;

namespace {

const char* const c_new = "C2288012-30BB4396B65C-A8CE40307C01";
const char* const c_old = "Vorax AG, 2005, compressed archive";

Bytes zlibCompress(const Bytes& data, int level)
{
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    Bytes out(size);
    EXPECT_EQ(compress2(out.data(), &size, data.data(), static_cast<uLong>(data.size()), level), Z_OK);
    out.resize(size);
    return out;
}

Bytes concat(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes readEverything(BxStreamReadBinary& in)
{
    Bytes out;
    unsigned char block[777];
    while (std::size_t n = in.ReadBuffer(block, sizeof block))
        out.insert(out.end(), block, block + n);
    return out;
}

Bytes readFile(const CTempDir& dir, const std::string& name)
{
    VoStreamReadBinaryFile in(dir.Wide(name));
    return readEverything(in);
}

void expectInitFailure(const CTempDir& dir, const std::string& name, const Bytes& content)
{
    WriteAll(dir.Narrow(name), content);
    try {
        VoStreamReadBinaryFile in(dir.Wide(name));
        ADD_FAILURE() << name << " was accepted";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamReadBinaryFile::init") << name;
    }
}

}  // namespace

TEST(VoStreamReadBinaryFile, OutsideZlibStreamsBehindHandBuiltHeadersReadBack)
{
    CTempDir dir;
    const Bytes payload = TextLike(100000, 3);
    for (const char* signature : {c_new, c_old}) {
        for (int level : {1, 6, 9}) {
            WriteAll(dir.Narrow("zip.bin"), concat(Header(signature, 2, 123), zlibCompress(payload, level)));
            EXPECT_EQ(readFile(dir, "zip.bin"), payload) << signature << " level " << level;
        }
        WriteAll(dir.Narrow("stored.bin"), concat(Header(signature, 0, 0xFFFFFFFF), payload));
        EXPECT_EQ(readFile(dir, "stored.bin"), payload) << signature;
    }
}

TEST(VoStreamReadBinaryFile, DataWithoutSignatureIsPlain)
{
    CTempDir dir;
    const Bytes shortFile = Header(c_new, 2, 0);
    const Bytes truncatedHeader(shortFile.begin(), shortFile.begin() + 27);  // signature, but only 27 bytes
    WriteAll(dir.Narrow("short.bin"), truncatedHeader);
    EXPECT_EQ(readFile(dir, "short.bin"), truncatedHeader);

    Bytes almost = concat(Header(c_new, 2, 0), TextLike(100));
    almost[19] ^= 1;  // the 20th signature byte differs
    WriteAll(dir.Narrow("almost.bin"), almost);
    EXPECT_EQ(readFile(dir, "almost.bin"), almost);

    WriteAll(dir.Narrow("empty.bin"), {});
    EXPECT_TRUE(readFile(dir, "empty.bin").empty());
}

TEST(VoStreamReadBinaryFile, RetiredAndUnknownTypesAreRefused)
{
    CTempDir dir;
    expectInitFailure(dir, "type1.bin", concat(Header(c_new, 1, 0), TextLike(50)));
    expectInitFailure(dir, "type1old.bin", Header(c_old, 1, 0));
    expectInitFailure(dir, "type3.bin", Header(c_new, 3, 0));
    expectInitFailure(dir, "typeff.bin", Header(c_old, 0xFFFFFFFF, 0));
}

TEST(VoStreamReadBinaryFile, MissingFileCarriesTheSystemMessage)
{
    CTempDir dir;
    try {
        VoStreamReadBinaryFile in(dir.Wide("missing.bin"));
        ADD_FAILURE() << "opened a missing file";
    } catch (const BxExceptionStd& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamReadBinaryFileRaw::VoStreamReadBinaryFileRaw");
        EXPECT_NE(e.GetMessage().find(std::strerror(ENOENT)), std::string::npos) << e.GetMessage();
    }
}

TEST(VoStreamReadBinaryFile, ReadsAStdIstreamAsItIs)
{
    const std::string bytes = std::string("\x05\0\0\0", 4) + "tail";
    std::istringstream archive(bytes);
    VoStreamReadBinaryFile in(archive);
    int v = 0;
    in >> v;
    EXPECT_EQ(v, 5);
    char rest[10];
    EXPECT_EQ(in.ReadBuffer(rest, sizeof rest), 4u);
    EXPECT_EQ(std::string(rest, 4), "tail");

    std::ostringstream writeOnly;  // a stream buffer that cannot be read
    std::istream wrongDirection(writeOnly.rdbuf());
    EXPECT_THROW(VoStreamReadBinaryFile{wrongDirection}, BxExceptionStream);
}

// Random corruptions and truncations of valid compressed files end in a clean
// exception or a short read, never a crash, a hang or a runaway allocation.
TEST(VoStreamReadBinaryFile, CorruptFilesFailCleanly)
{
    CTempDir dir;
    const std::string path = dir.Narrow("valid.bin");
    {
        VoStreamWriteBinaryFile out(dir.Wide("valid.bin"), VoStreamWriteBinaryFile::eAM_Create,
                                    VoStreamWriteBinaryFile::eCM_ZIP);
        for (int i = 0; i < 3000; ++i)
            out << i << std::string("entry ") + std::to_string(i * 7) << double(i) / 3;
    }
    const Bytes valid = ReadAll(path);
    std::mt19937 random(11);
    int exceptions = 0;
    for (int round = 0; round < 300; ++round) {
        Bytes damaged = valid;
        if (round % 3 == 0) {
            damaged.resize(random() % valid.size());
        } else {
            const int flips = 1 + static_cast<int>(random() % 8);
            for (int f = 0; f < flips; ++f)
                damaged[28 + random() % (damaged.size() - 28)] ^= static_cast<unsigned char>(1 + random() % 255);
            if (round % 7 == 0)
                damaged[20] = static_cast<unsigned char>(random());  // type field
        }
        auto readAll = [&](BxStreamReadBinary& in) {
            for (int i = 0; i < 3000; ++i) {
                int n;
                std::string s;
                double d;
                in >> n >> s >> d;
            }
        };
        try {
            if (round % 2) {
                WriteAll(dir.Narrow("damaged.bin"), damaged);
                VoStreamReadBinaryFile in(dir.Wide("damaged.bin"));
                readAll(in);
            } else {
                VoStreamReadBinaryMemoryFile in(damaged.data(), damaged.size());
                readAll(in);
            }
        } catch (const BxExceptionStream&) {
            ++exceptions;
        }
    }
    EXPECT_GT(exceptions, 250);  // nearly every damaged file is noticed by the typed reads
}
