// Helpers of the tests that run the programs in apps/ as processes: a fixture
// that gives each test its own empty working folder, and file reading.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace AppTests {

/// The whole content of a file; empty when it cannot be read.
inline std::string readAll(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/// What a shell command wrote to standard output, and its exit code (-1 when
/// it could not run or did not exit normally).
struct SCommandResult
{
    int exitCode = -1;
    std::string output;
};

inline SCommandResult runCommand(const std::string& command)
{
    SCommandResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe))
        result.output.append(buffer, got);
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

/// A fixture with a fresh folder per test (m_dir), removed afterwards.
class CTempDirTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
        m_dir = std::filesystem::temp_directory_path() /
                (std::string(test->test_suite_name()) + "-" + test->name() + "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(m_dir);
        std::filesystem::create_directories(m_dir);
    }
    void TearDown() override { std::filesystem::remove_all(m_dir); }

    /// A path inside the test's folder.
    std::string path(const std::string& name) const { return (m_dir / name).string(); }

    std::filesystem::path m_dir;
};

}  // namespace AppTests
