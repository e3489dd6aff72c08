#include <bxbase/bxstreamwriteasciitrace.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/logging/clogger.h>

BxStreamWriteASCIITrace::BxStreamWriteASCIITrace() : BxStreamWriteASCIITrace(new Logging::CLogger(L"Trace")) {}

BxStreamWriteASCIITrace::BxStreamWriteASCIITrace(BxSmartPointer<Logging::ILogger> logger)
    : m_logger(std::move(logger))
{
}

BxStreamWriteASCIITrace::~BxStreamWriteASCIITrace()
{
    if (!m_pending.empty() && m_logger)
        m_logger->Log(Logging::eLL_Trace, __FILE__, __LINE__, "BxStreamWriteASCIITrace", m_pending);
}

void BxStreamWriteASCIITrace::write(const char* text)
{
    m_pending += BxStringConvert::Utf8ToWideLossy(text);
    emitLines();
}

void BxStreamWriteASCIITrace::write(const wchar_t* text)
{
    m_pending += text;
    emitLines();
}

void BxStreamWriteASCIITrace::emitLines()
{
    std::size_t start = 0;
    for (std::size_t end; (end = m_pending.find(L'\n', start)) != std::wstring::npos; start = end + 1) {
        if (m_logger && m_logger->IsEnabled(Logging::eLL_Trace))
            m_logger->Log(Logging::eLL_Trace, __FILE__, __LINE__, "BxStreamWriteASCIITrace",
                          m_pending.substr(start, end - start));
    }
    m_pending.erase(0, start);
}
