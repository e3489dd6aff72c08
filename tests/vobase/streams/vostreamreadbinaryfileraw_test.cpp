#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadbinaryfileraw.h>
#include <vobase/streams/vostreamwritebinaryfileraw.h>

#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionstream.h>

using namespace streamtest;

TEST(VoStreamReadBinaryFileRaw, PeekLeavesThePositionAlone)
{
    CTempDir dir;
    WriteAll(dir.Narrow("p.bin"), {1, 2, 3, 4, 5});
    VoStreamReadBinaryFileRaw in(dir.Wide("p.bin").c_str());
    unsigned char b[8] = {};
    EXPECT_EQ(in.Peek(b, 3), 3u);
    EXPECT_EQ(b[2], 3);
    EXPECT_EQ(in.ReadBuffer(b, 2), 2u);
    EXPECT_EQ(b[0], 1);
    EXPECT_EQ(in.Peek(b, 8), 3u);  // a short peek at the end is no error
    EXPECT_EQ(b[0], 3);
    EXPECT_EQ(in.ReadBuffer(b, 8), 3u);
    EXPECT_EQ(b[2], 5);
    EXPECT_EQ(in.Peek(b, 8), 0u);
}

TEST(VoStreamReadBinaryFileRaw, PathsOf260CharactersAreRefused)
{
    CTempDir dir;
    const std::wstring base = dir.Wide("");
    const std::wstring ok = base + std::wstring(259 - base.size(), L'a');
    const std::wstring tooLong = base + std::wstring(260 - base.size(), L'a');
    try {
        VoStreamReadBinaryFileRaw in(tooLong.c_str());
        ADD_FAILURE() << "accepted 260 characters";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamReadBinaryFileRaw::VoStreamReadBinaryFileRaw");
    }
    EXPECT_THROW(VoStreamWriteBinaryFileRaw(tooLong.c_str(), VoStreamWriteBinaryFile::eAM_Create), BxExceptionStream);
    // 259 characters pass the length check (and then fail on the missing file, with the system's reason)
    EXPECT_THROW(VoStreamReadBinaryFileRaw(ok.c_str()), BxExceptionStd);
}

TEST(VoStreamWriteBinaryFileRaw, CreatesMissingParentDirectories)
{
    CTempDir dir;
    {
        VoStreamWriteBinaryFileRaw out(dir.Wide("a/b/c/raw.bin").c_str(), VoStreamWriteBinaryFile::eAM_Create);
        out << 'x';
        out.Close();
        out.Close();  // closing twice is harmless
    }
    EXPECT_EQ(ReadAll(dir.Narrow("a/b/c/raw.bin")), Bytes{'x'});

    WriteAll(dir.Narrow("file"), {1});
    try {
        VoStreamWriteBinaryFileRaw out(dir.Wide("file/sub/raw.bin").c_str(), VoStreamWriteBinaryFile::eAM_Create);
        ADD_FAILURE() << "created a directory below a file";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoStreamWriteBinaryFileRaw::VoStreamWriteBinaryFileRaw");
    }
}

TEST(VoStreamWriteBinaryFileRaw, UnknownAccessModeOpensNothingQuietly)
{
    CTempDir dir;
    VoStreamWriteBinaryFileRaw out(dir.Wide("none.bin").c_str(), VoStreamWriteBinaryFile::EAccessMode(7));
    EXPECT_EQ(out.GetHandle(), nullptr);
    EXPECT_THROW(out << 1, BxExceptionStream);
    EXPECT_FALSE(std::filesystem::exists(dir.Path() / "none.bin"));
}

TEST(VoStreamWriteBinaryFileRaw, UnwritableTargetCarriesTheSystemMessage)
{
    CTempDir dir;
    std::filesystem::create_directory(dir.Path() / "adir");
    try {
        VoStreamWriteBinaryFileRaw out(dir.Wide("adir").c_str(), VoStreamWriteBinaryFile::eAM_Create);
        ADD_FAILURE() << "opened a directory for writing";
    } catch (const BxExceptionStd& e) {
        EXPECT_NE(e.GetMessage().find(std::strerror(EISDIR)), std::string::npos) << e.GetMessage();
    }
}
