#include "streamtestfiles.h"

#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <sstream>
#include <zlib.h>

using namespace streamtest;

namespace {

using File = VoStreamWriteBinaryFile;

Bytes inflateWithZlib(const Bytes& data, std::size_t offset)
{
    z_stream z{};
    EXPECT_EQ(inflateInit(&z), Z_OK);
    Bytes out(1 << 20);
    Bytes result;
    z.next_in = const_cast<Bytef*>(data.data() + offset);
    z.avail_in = static_cast<uInt>(data.size() - offset);
    int ret;
    do {
        z.next_out = out.data();
        z.avail_out = static_cast<uInt>(out.size());
        ret = inflate(&z, Z_NO_FLUSH);
        result.insert(result.end(), out.data(), out.data() + (out.size() - z.avail_out));
    } while (ret == Z_OK);
    EXPECT_EQ(ret, Z_STREAM_END);
    EXPECT_EQ(z.avail_in, 0u) << "bytes after the zlib stream";
    inflateEnd(&z);
    return result;
}

std::uint32_t u32At(const Bytes& bytes, std::size_t offset)
{
    std::uint32_t v;
    std::memcpy(&v, bytes.data() + offset, 4);
    return v;
}

template <class E>
void expectThrowNamed(const std::function<void()>& f, const char* functionName)
{
    try {
        f();
        ADD_FAILURE() << "nothing thrown, expected " << functionName;
    } catch (const E& e) {
        EXPECT_EQ(e.GetFunctionName(), functionName);
    }
}

}  // namespace

TEST(VoStreamWriteBinaryFile, UncompressedFileIsTheBarePayload)
{
    CTempDir dir;
    {
        File out(dir.Wide("plain.bin"));
        out << 0x01020304 << std::string("ab");
    }
    const Bytes expected = {4, 3, 2, 1, 2, 0, 0, 0, 'a', 'b'};
    EXPECT_EQ(ReadAll(dir.Narrow("plain.bin")), expected);
}

TEST(VoStreamWriteBinaryFile, CompressedFileHasHeaderAndStandardZlibPayload)
{
    CTempDir dir;
    const Bytes payload = TextLike(200000);
    for (auto level : {File::eCL_Default, File::eCL_Fast, File::eCL_Best}) {
        const std::string name = "c" + std::to_string(level) + ".bin";
        {
            File out(dir.Wide(name), File::eAM_Create, File::eCM_ZIP, level);
            // mixed block sizes exercise the stage and the direct path
            std::size_t at = 0;
            for (std::size_t step = 1; at < payload.size(); step = step * 3 % 2000 + 1) {
                const std::size_t n = std::min(step, payload.size() - at);
                out.WriteBuffer(payload.data() + at, n);
                at += n;
            }
            EXPECT_EQ(out.GetByteCount(), payload.size());
        }
        const Bytes file = ReadAll(dir.Narrow(name));
        ASSERT_GE(file.size(), 28u);
        EXPECT_EQ(std::string(file.begin(), file.begin() + 20), "C2288012-30BB4396B65");
        EXPECT_EQ(u32At(file, 20), 2u);
        EXPECT_EQ(u32At(file, 24), payload.size());
        EXPECT_LT(file.size(), payload.size() / 3);
        EXPECT_EQ(inflateWithZlib(file, 28), payload);

        VoStreamReadBinaryFile in(dir.Wide(name));
        Bytes back(payload.size() + 10);
        EXPECT_EQ(in.ReadBuffer(back.data(), back.size()), payload.size());
        back.resize(payload.size());
        EXPECT_EQ(back, payload);
    }
}

TEST(VoStreamWriteBinaryFile, EmptyCompressedFileKeepsHeaderWithSizeZero)
{
    CTempDir dir;
    { File out(dir.Wide("empty.bin"), File::eAM_Create, File::eCM_ZIP); }
    const Bytes file = ReadAll(dir.Narrow("empty.bin"));
    ASSERT_GT(file.size(), 28u);
    EXPECT_EQ(u32At(file, 24), 0u);
    EXPECT_TRUE(inflateWithZlib(file, 28).empty());
    VoStreamReadBinaryFile in(dir.Wide("empty.bin"));
    char c;
    EXPECT_EQ(in.ReadBuffer(&c, 1), 0u);
}

TEST(VoStreamWriteBinaryFile, PythonZlibReadsThePayload)
{
    if (std::system("python3 -c 'import zlib' >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 with zlib is not available";
    CTempDir dir;
    const Bytes payload = TextLike(50000, 7);
    {
        File out(dir.Wide("py.bin"), File::eAM_Create, File::eCM_ZIP, File::eCL_Best);
        out.WriteBuffer(payload.data(), payload.size());
    }
    WriteAll(dir.Narrow("expected.bin"), payload);
    const std::string command = "python3 -c 'import sys, zlib; d = open(sys.argv[1], \"rb\").read(); "
                                "sys.exit(0 if zlib.decompress(d[28:]) == open(sys.argv[2], \"rb\").read() else 1)' " +
                                dir.Narrow("py.bin") + " " + dir.Narrow("expected.bin");
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(VoStreamWriteBinaryFile, FlushFinishesTheFile)
{
    CTempDir dir;
    File out(dir.Wide("f.bin"), File::eAM_Create, File::eCM_ZIP);
    out << 7;
    out.Flush();
    EXPECT_EQ(u32At(ReadAll(dir.Narrow("f.bin")), 24), 4u);
    expectThrowNamed<BxExceptionStream>([&] { out << 8; }, "VoStreamWriteBinaryFile::write");
    out.Flush();  // a second flush does nothing
    VoStreamReadBinaryFile in(dir.Wide("f.bin"));
    int v = 0;
    in >> v;
    EXPECT_EQ(v, 7);
}

TEST(VoStreamWriteBinaryFile, SizeFieldSaturates)
{
    EXPECT_EQ(VoStreamCompressionHeader::SaturateSize(0), 0u);
    EXPECT_EQ(VoStreamCompressionHeader::SaturateSize(0xFFFFFFFFull), 0xFFFFFFFFu);
    EXPECT_EQ(VoStreamCompressionHeader::SaturateSize(0x100000000ull), 0xFFFFFFFFu);
    EXPECT_EQ(VoStreamCompressionHeader::SaturateSize(5ull << 32), 0xFFFFFFFFu);
}

TEST(VoStreamWriteBinaryFile, AppendAddsToTheEnd)
{
    CTempDir dir;
    { File out(dir.Wide("a.bin")); out << 'a'; }
    { File out(dir.Wide("a.bin"), File::eAM_Append); out << 'b'; }
    { File out(dir.Wide("a.bin"), File::eAM_Append); out << 'c'; }
    EXPECT_EQ(ReadAll(dir.Narrow("a.bin")), (Bytes{'a', 'b', 'c'}));
    { File out(dir.Wide("a.bin"), File::eAM_Create); out << 'd'; }
    EXPECT_EQ(ReadAll(dir.Narrow("a.bin")), (Bytes{'d'}));
}

TEST(VoStreamWriteBinaryFile, BadModesThrowWithTheirFunctionNames)
{
    CTempDir dir;
    expectThrowNamed<BxException>([&] { File(dir.Wide("m.bin"), File::EAccessMode(2)); }, "translateAccessMode");
    expectThrowNamed<BxException>([&] { File(dir.Wide("m.bin"), File::eAM_Create, File::ECompressionMode(2)); },
                                  "translateCompressionMode");
    expectThrowNamed<BxExceptionPreconditionViolation>(
        [&] { File(dir.Wide("m.bin"), File::eAM_Create, File::eCM_ZIP, File::ECompressionLevel(3)); },
        "translateCompressionLevelZip");
    // without compression the level is not looked at
    EXPECT_NO_THROW(File(dir.Wide("m.bin"), File::eAM_Create, File::eCM_None, File::ECompressionLevel(3)));
}

TEST(VoStreamWriteBinaryFile, PathsExpandTheEnvironmentAndSpecialDirectories)
{
    CTempDir dir;
    setenv("VOBASE_STREAMS_TEST_DIR", dir.Narrow("").c_str(), 1);
    {
        File out(L"${VOBASE_STREAMS_TEST_DIR}/sub/env.bin");
        EXPECT_EQ(std::wstring(out.GetFilename()), dir.Wide("") + L"/sub/env.bin");
        out << 1;
    }
    EXPECT_EQ(ReadAll(dir.Narrow("sub/env.bin")).size(), 4u);

    const char* oldTmp = std::getenv("TMPDIR");
    const std::string savedTmp = oldTmp ? oldTmp : "";
    setenv("TMPDIR", dir.Narrow("").c_str(), 1);
    { File out(VoFileSystem::eSD_Temp, std::wstring(L"special.bin")); out << short(3); }
    VoStreamReadBinaryFile in(VoFileSystem::eSD_Temp, L"special.bin");
    short v = 0;
    in >> v;
    EXPECT_EQ(v, 3);
    oldTmp ? setenv("TMPDIR", savedTmp.c_str(), 1) : unsetenv("TMPDIR");
    unsetenv("VOBASE_STREAMS_TEST_DIR");
}

TEST(VoStreamWriteBinaryFile, WritesIntoAStdOstream)
{
    std::ostringstream archive;
    {
        File out(archive);
        out << 0x11223344 << std::string("x");
    }
    EXPECT_EQ(archive.str(), std::string("\x44\x33\x22\x11\x01\0\0\0x", 9));

    std::ostringstream broken;
    broken.setstate(std::ios::badbit);
    EXPECT_THROW(File{broken}, BxExceptionStream);
}

TEST(VoStreamWriteBinaryFile, FailedFinalWritesAreReportedByFlushOnly)
{
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    {
        File out(L"/dev/full", File::eAM_Create, File::eCM_ZIP);
        out << 1;
        // the buffered header and stream tail fail when the seek to the size field flushes them
        expectThrowNamed<BxExceptionStream>([&] { out.Flush(); }, "VoStreamWriteBinaryFile::Flush");
    }
    {
        File out(L"/dev/full");
        out << 1;
        EXPECT_THROW(out.Flush(), BxExceptionStream);
    }
    EXPECT_NO_THROW({
        File out(L"/dev/full", File::eAM_Create, File::eCM_ZIP);
        out << 2;
    });  // the destructor swallows the failure
}
