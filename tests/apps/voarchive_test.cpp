// voarchive, run as a process: round trips, info, and refusal of damaged archives.
#include "apptestsupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using SResult = AppTests::SCommandResult;  // standard output and standard error

SResult run(const std::string& arguments)
{
    return AppTests::runCommand(std::string(VOARCHIVE_PATH) + " " + arguments + " 2>&1");
}

using AppTests::readAll;

void writeAll(const fs::path& path, const std::string& data)
{
    std::ofstream(path, std::ios::binary).write(data.data(), static_cast<std::streamsize>(data.size()));
}

// Text-like bytes: compressible, but not trivially.
std::string sampleData(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    static const char* const words[] = {"node ", "lock ", "task ", "graph ", "value\n", "stream ", "42 ", "3.14 "};
    std::string data;
    data.reserve(size + 8);
    while (data.size() < size)
        data += words[random() % 8];
    data.resize(size);
    return data;
}

class VoArchiveTool : public AppTests::CTempDirTest
{
};

}  // namespace

TEST_F(VoArchiveTool, RoundTripsEmptyTinyAndLargeFiles)
{
    for (const std::size_t size : {std::size_t(0), std::size_t(1), std::size_t(50) << 20}) {
        const std::string data = sampleData(size, static_cast<unsigned>(size));
        writeAll(path("in"), data);
        for (const char* options : {"", "--level 1", "--store"}) {
            ASSERT_EQ(run("pack " + path("in") + " " + path("a.vac") + " " + options).exitCode, 0) << options;
            const SResult unpack = run("unpack " + path("a.vac") + " " + path("out"));
            ASSERT_EQ(unpack.exitCode, 0) << unpack.output;
            EXPECT_TRUE(readAll(path("out")) == data) << size << " " << options;
        }
    }
}

TEST_F(VoArchiveTool, InfoReportsHeaderAndPayload)
{
    writeAll(path("in"), sampleData(100000, 7));
    ASSERT_EQ(run("pack " + path("in") + " " + path("a.vac") + " --level 2").exitCode, 0);
    const SResult info = run("info " + path("a.vac"));
    EXPECT_EQ(info.exitCode, 0);
    EXPECT_NE(info.output.find("signature:      current"), std::string::npos) << info.output;
    EXPECT_NE(info.output.find("type:           2 (ZIP)"), std::string::npos);
    EXPECT_NE(info.output.find("declared size:  100000 bytes"), std::string::npos);
    EXPECT_NE(info.output.find("payload size:   100000 bytes"), std::string::npos);
    const SResult cat = run("cat " + path("a.vac"));
    EXPECT_EQ(cat.exitCode, 0);
    EXPECT_TRUE(cat.output == readAll(path("in")));
}

TEST_F(VoArchiveTool, RefusesDamagedArchivesWithoutLeavingOutput)
{
    const std::string data = sampleData(1 << 20, 3);
    writeAll(path("in"), data);
    ASSERT_EQ(run("pack " + path("in") + " " + path("a.vac")).exitCode, 0);
    const std::string archive = readAll(path("a.vac"));

    writeAll(path("truncated.vac"), archive.substr(0, archive.size() / 2));
    SResult result = run("unpack " + path("truncated.vac") + " " + path("out"));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.output.find("truncated.vac: "), std::string::npos) << result.output;
    EXPECT_FALSE(fs::exists(path("out")));

    std::string corrupt = archive;
    for (std::size_t k = 100; k < 200; ++k)
        corrupt[k] = static_cast<char>(corrupt[k] ^ 0x5A);
    writeAll(path("corrupt.vac"), corrupt);
    result = run("unpack " + path("corrupt.vac") + " " + path("out"));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.output.find("corrupt.vac: "), std::string::npos) << result.output;
    EXPECT_FALSE(fs::exists(path("out")));

    std::string retired = archive.substr(0, 28);
    retired[20] = 1;
    writeAll(path("retired.vac"), retired);
    result = run("info " + path("retired.vac"));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.output.find("retired compression type 1"), std::string::npos) << result.output;

    result = run("info " + path("in"));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.output.find("not a compressed archive"), std::string::npos);
    EXPECT_EQ(run("unpack " + path("missing.vac") + " " + path("out")).exitCode, 2);
    for (const auto& entry : fs::directory_iterator(m_dir))
        EXPECT_EQ(entry.path().string().find(".partial-"), std::string::npos) << entry.path();
}

TEST_F(VoArchiveTool, WrongUsageExitsWithOne)
{
    EXPECT_EQ(run("").exitCode, 1);
    EXPECT_EQ(run("frobnicate").exitCode, 1);
    EXPECT_EQ(run("pack onlyone").exitCode, 1);
    EXPECT_EQ(run("pack a b --level 7").exitCode, 1);
    const SResult help = run("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("unpack IN OUT"), std::string::npos);
    EXPECT_NE(run("--version").output.find("voarchive 0.1.0"), std::string::npos);
}
