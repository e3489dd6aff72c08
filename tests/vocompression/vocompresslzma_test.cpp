#include <vocompression/vocompresslzma.h>
#include <vocompression/vodecompresslzma.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes textLike(std::size_t size)
{
    static const char* words[] = {"lzma ", "range ", "coder ", "1234 ", "\n", "module "};
    std::mt19937 random(3);
    std::string text;
    while (text.size() < size)
        text += words[random() % std::size(words)];
    return Bytes(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
}

bool haveXz()
{
    return std::system("xz --version >/dev/null 2>&1") == 0;
}

// A private directory below /tmp for files handed to xz.
class CScratch
{
public:
    CScratch()
    {
        std::string pattern = "/tmp/vobase-lzma-XXXXXX";
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("mkdtemp failed");
        m_path = pattern;
    }
    ~CScratch() { std::filesystem::remove_all(m_path); }
    std::string operator()(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

void writeFile(const std::string& path, const unsigned char* data, std::size_t size)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

TEST(VoCompressLZMA, RoundTripsThroughTheModule)
{
    VoCompressLZMA compress;
    VoDecompressLZMA decompress;
    for (std::size_t size : {std::size_t(0), std::size_t(1), std::size_t(100000)}) {
        const Bytes data = textLike(size);
        ASSERT_TRUE(compress.Compress(data.data(), static_cast<unsigned>(data.size())));
        ASSERT_NE(compress.GetData(), nullptr);
        if (size > 1000) {
            EXPECT_LT(compress.GetSize(), size / 4);
        }
        ASSERT_TRUE(decompress.Decompress(compress.GetData(), compress.GetSize()));
        EXPECT_EQ(Bytes(decompress.GetData(), decompress.GetData() + decompress.GetSize()), data);
    }
}

TEST(VoCompressLZMA, IncompressibleDataFitsTheOutputBuffer)
{
    std::mt19937 random(9);
    Bytes data(300000);
    for (auto& b : data)
        b = static_cast<unsigned char>(random());
    VoCompressLZMA compress;
    ASSERT_TRUE(compress.Compress(data.data(), static_cast<unsigned>(data.size())));
    EXPECT_GT(compress.GetSize(), data.size());
    VoDecompressLZMA decompress;
    ASSERT_TRUE(decompress.Decompress(compress.GetData(), compress.GetSize()));
    EXPECT_EQ(decompress.GetSize(), data.size());
}

TEST(VoCompressLZMA, OutputIsAStandardStreamForXz)
{
    if (!haveXz())
        GTEST_SKIP() << "xz is not installed";
    CScratch dir;
    const Bytes data = textLike(200000);
    VoCompressLZMA compress;
    ASSERT_TRUE(compress.Compress(data.data(), static_cast<unsigned>(data.size())));
    writeFile(dir("ours.lzma"), compress.GetData(), compress.GetSize());
    const std::string command = "xz -d -q -c --format=lzma " + dir("ours.lzma") + " > " + dir("ours.out");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(readFile(dir("ours.out")), data);
}

TEST(VoDecompressLZMA, ReadsWhatXzMakesInBothFormats)
{
    if (!haveXz())
        GTEST_SKIP() << "xz is not installed";
    CScratch dir;
    const Bytes data = textLike(150000);
    writeFile(dir("plain"), data.data(), data.size());
    VoDecompressLZMA decompress;
    for (const char* format : {"lzma", "xz"}) {
        const std::string packed = dir(std::string("plain.") + format);
        const std::string command =
            std::string("xz -z -q -c -6 --format=") + format + " " + dir("plain") + " > " + packed;
        ASSERT_EQ(std::system(command.c_str()), 0);
        const Bytes bytes = readFile(packed);
        ASSERT_TRUE(decompress.Decompress(bytes.data(), static_cast<unsigned>(bytes.size()))) << format;
        EXPECT_EQ(Bytes(decompress.GetData(), decompress.GetData() + decompress.GetSize()), data) << format;
    }
}

TEST(VoDecompressLZMA, CorruptAndOversizedInputIsRefused)
{
    const Bytes data = textLike(50000);
    VoCompressLZMA compress;
    ASSERT_TRUE(compress.Compress(data.data(), static_cast<unsigned>(data.size())));
    const Bytes valid(compress.GetData(), compress.GetData() + compress.GetSize());
    VoDecompressLZMA decompress;
    std::mt19937 random(4);
    for (int round = 0; round < 60; ++round) {
        Bytes damaged = valid;
        if (round % 2)
            damaged.resize(random() % valid.size());
        else
            for (int f = 0; f < 4; ++f)
                damaged[random() % damaged.size()] ^= static_cast<unsigned char>(1 + random() % 255);
        // refused, decoded to something bounded by the maximum size, or stopped at it
        try {
            if (decompress.Decompress(damaged.data(), static_cast<unsigned>(damaged.size())))
                EXPECT_LE(decompress.GetSize(), decompress.GetMaximumSize());
            else
                EXPECT_EQ(decompress.GetData(), nullptr);
        } catch (const BxExceptionStream&) {
            EXPECT_EQ(decompress.GetData(), nullptr);
        }
    }
    const Bytes noise = {0x5d, 0, 0, 0x80, 0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 1, 2, 3};
    EXPECT_FALSE(decompress.Decompress(noise.data(), static_cast<unsigned>(noise.size())));

    decompress.SetMaximumSize(10000);  // the valid stream holds 50,000 bytes
    try {
        (void)decompress.Decompress(valid.data(), static_cast<unsigned>(valid.size()));
        ADD_FAILURE() << "decompressed beyond the maximum";
    } catch (const BxExceptionStream& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoDecompressLZMA::Decompress");
    }
    EXPECT_EQ(decompress.GetData(), nullptr);
    decompress.SetMaximumSize(50000);
    EXPECT_TRUE(decompress.Decompress(valid.data(), static_cast<unsigned>(valid.size())));
}

TEST(VoCompressLZMA, ModuleProblemsThrowFromTheConstructor)
{
    try {
        VoCompressLZMA lzma(L"/nonexistent/libpelcompress.so");
        ADD_FAILURE() << "loaded a missing module";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoCompressLZMA::VoCompressLZMA");
    }
    // a library without the entry points: the one holding libc's dlopen is always there
    try {
        VoDecompressLZMA lzma(L"libc.so.6");
        ADD_FAILURE() << "found the entry point in libc";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoDecompressLZMA::VoDecompressLZMA");
        EXPECT_NE(e.GetMessage().find("PelDecompress"), std::string::npos);
    }
}

TEST(VoCompressLZMA, ModulePathComesFromTheEnvironmentOrTheLibraryDirectory)
{
    const std::wstring found = VoCompressLZMA::GetDefaultModulePath();
    EXPECT_TRUE(std::filesystem::exists(BxStringConvert::WideToUtf8(found))) << BxStringConvert::WideToUtf8(found);
    setenv(VoCompressLZMA::c_ModuleVariable, "/elsewhere/libpelcompress.so", 1);
    EXPECT_EQ(VoCompressLZMA::GetDefaultModulePath(), L"/elsewhere/libpelcompress.so");
    EXPECT_THROW(VoCompressLZMA{}, BxException);
    unsetenv(VoCompressLZMA::c_ModuleVariable);
    EXPECT_NO_THROW(VoCompressLZMA{});
}
