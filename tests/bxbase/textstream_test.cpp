#include <bxbase/bxformat.h>
#include <bxbase/bxtypes.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstreamwriteasciitrace.h>
#include <bxbase/logging/clogger.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

// Keeps every line it is given, at the level it is set to.
class CCapturingLogger : public Logging::ILogger
{
public:
    explicit CCapturingLogger(Logging::ELogLevel level) : level(level) {}
    bool IsEnabled(Logging::ELogLevel l) const override { return l <= level; }
    void Log(Logging::ELogLevel, const char*, int, const char* function, const std::wstring& message) override
    {
        lines.push_back(message);
        functions.push_back(function);
    }
    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return counter; }

    Logging::ELogLevel level;
    std::vector<std::wstring> lines;
    std::vector<std::string> functions;
    mutable BxReferenceCounter<unsigned int> counter;
};

}  // namespace

TEST(BxStreamWriteASCII, WritesTextNumbersAndBooleans)
{
    BxStreamWriteASCIIStringT<CStringW> wide;
    wide << L"n=" << 42 << ", " << -7LL << ' ' << 2.5 << L' ' << true << "|Grüße";
    EXPECT_EQ(wide.GetString(), L"n=42, -7 2.5 true|Grüße");
    BxStreamWriteASCIIStringT<CStringA> narrow;
    narrow << L"é" << 0.1f << static_cast<unsigned short>(65535);
    EXPECT_EQ(narrow.GetString(), "é0.165535");
}

TEST(BxFormat, WideFormatsTakeWideStringsForPercentS)
{
    EXPECT_EQ(BxFormat::Wide(L"'%s' %S %c%d %I64d %I64u %%", L"wide", "narrow", L'x', 5, -(1LL << 40), 1ULL << 63),
              L"'wide' narrow x5 -1099511627776 9223372036854775808 %");
    EXPECT_EQ(BxFormat::Wide(L"%-5s|%ls|%5.1f", L"ab", L"cd", 2.25), L"ab   |cd|  2.2");
    EXPECT_EQ(BxFormat::Narrow("%s=%d", "x", 3), "x=3");
    EXPECT_EQ(BxFormat::Wide(L"%s", std::wstring(5000, L'y').c_str()).size(), 5000u);
}

TEST(Logging, HelpersFormatOnlyWhenTheLevelIsEnabled)
{
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger(Logging::eLL_Warn));
    logger->Info(__FILE__, __LINE__, "CTest::Run", L"hidden %d", 1);
    logger->Warn(__FILE__, __LINE__, "CTest::Run", L"shown %s", L"warning");
    logger->Error(__FILE__, __LINE__, "CTest::Run", L"shown %d", 2);
    ASSERT_EQ(logger->lines.size(), 2u);
    EXPECT_EQ(logger->lines[0], L"shown warning");
    EXPECT_EQ(logger->functions[1], "CTest::Run");

    Logging::CLogger standard(L"Test.Category");
    standard.SetLevel(Logging::eLL_Error);
    EXPECT_TRUE(standard.IsEnabled(Logging::eLL_Error));
    EXPECT_FALSE(standard.IsEnabled(Logging::eLL_Warn));
    standard.SetLevel(Logging::eLL_Trace);
    EXPECT_TRUE(standard.IsEnabled(Logging::eLL_Trace));
}

TEST(BxStreamWriteASCIITrace, LogsWholeLinesAndTheRestAtTheEnd)
{
    BxSmartPointer<CCapturingLogger> logger(new CCapturingLogger(Logging::eLL_Trace));
    {
        BxStreamWriteASCIITrace trace(logger);
        trace << L"first " << 1 << L"\nsecond\n" << "third";
        EXPECT_EQ(logger->lines.size(), 2u);
    }
    const std::vector<std::wstring> expected = {L"first 1", L"second", L"third"};
    EXPECT_EQ(logger->lines, expected);
}
