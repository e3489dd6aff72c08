#include <bxbase/diagnostics/bxconditionhandler.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct SReport
{
    std::string file;
    int line;
    std::string function;
    int severity;
};

std::vector<SReport> g_reports;

void capture(const char* file, int line, const char* function, int severity)
{
    g_reports.push_back({file, line, function, severity});
}

}  // namespace

TEST(BxConditionHandler, ReportsReachTheInstalledHandlerAndTheDefaultComesBack)
{
    g_reports.clear();
    const BxConditionHandler::Handler previous = BxConditionHandler::SetHandler(&capture);
    EXPECT_EQ(previous, &BxConditionHandler::LogReport);

    BxConditionHandler::Report("a/b.cpp", 42, "CFoo::Bar", 2);
    BxConditionHandler::Report(nullptr, 7, nullptr, 1);
    ASSERT_EQ(g_reports.size(), 2u);
    EXPECT_EQ(g_reports[0].file, "a/b.cpp");
    EXPECT_EQ(g_reports[0].line, 42);
    EXPECT_EQ(g_reports[0].function, "CFoo::Bar");
    EXPECT_EQ(g_reports[0].severity, 2);
    EXPECT_EQ(g_reports[1].file, "");  // null names arrive as empty text
    EXPECT_EQ(g_reports[1].function, "");

    // Null restores the default handler, which logs and returns.
    EXPECT_EQ(BxConditionHandler::SetHandler(nullptr), &capture);
    testing::internal::CaptureStderr();
    BxConditionHandler::Report("x.cpp", 3, "CFoo::Baz", 2);
    const std::string logged = testing::internal::GetCapturedStderr();
    EXPECT_NE(logged.find("[error] Core.Diagnostics"), std::string::npos) << logged;
    EXPECT_NE(logged.find("CFoo::Baz"), std::string::npos) << logged;
    EXPECT_EQ(g_reports.size(), 2u);
}
