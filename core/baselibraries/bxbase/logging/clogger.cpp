#include <bxbase/bxstringconvert.h>
#include <bxbase/logging/clogger.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Logging {

namespace {

ELogLevel levelFromEnvironment()
{
    const char* value = std::getenv("VOBASE_LOG");
    if (!value)
        return eLL_Warn;
    if (!std::strcmp(value, "error")) return eLL_Error;
    if (!std::strcmp(value, "info")) return eLL_Info;
    if (!std::strcmp(value, "trace")) return eLL_Trace;
    return eLL_Warn;
}

const char* levelName(ELogLevel level)
{
    switch (level) {
    case eLL_Error: return "error";
    case eLL_Warn: return "warn";
    case eLL_Info: return "info";
    default: return "trace";
    }
}

}  // namespace

ELogLevel CLogger::GetDefaultLevel()
{
    static const ELogLevel level = levelFromEnvironment();
    return level;
}

CLogger::CLogger(std::wstring category) : m_category(std::move(category)), m_level(GetDefaultLevel()) {}

void CLogger::Log(ELogLevel level, const char*, int, const char* functionName, const std::wstring& message)
{
    if (!IsEnabled(level))
        return;
    std::string line = "[";
    line += levelName(level);
    line += "] ";
    line += BxStringConvert::WideToUtf8Lossy(m_category);
    line += ": ";
    line += BxStringConvert::WideToUtf8Lossy(message);
    if (functionName && *functionName) {
        line += " (";
        line += functionName;
        line += ")";
    }
    line += "\n";
    std::fputs(line.c_str(), stderr);  // one call, so lines of several threads do not interleave
}

}  // namespace Logging
