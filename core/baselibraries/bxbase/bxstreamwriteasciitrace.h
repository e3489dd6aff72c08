// Text output stream whose lines go to a logger at trace level.
//
//   BxStreamWriteASCIITrace trace;                 // category "Trace"
//   trace << L"queue length " << n << L"\n";      // one trace line
//
// Text is collected until a line feed and then logged as one line; what is
// left when the stream is destroyed is logged as a last line.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxstreamwriteasciit.h>
#include <bxbase/logging/ilogger.h>

#include <string>

/// Text output stream whose lines go to a logger at trace level.
class BXBASE_API BxStreamWriteASCIITrace : public BxStreamWriteASCIIT<std::wstring>
{
public:
    /// Logs to a default logger of the category "Trace".
    BxStreamWriteASCIITrace();
    /// Logs each line to `logger` at trace level (nothing is logged when it is null); the stream keeps a
    /// reference to it.
    explicit BxStreamWriteASCIITrace(BxSmartPointer<Logging::ILogger> logger);
    ~BxStreamWriteASCIITrace() override;

protected:
    void write(const char* text) override;
    void write(const wchar_t* text) override;

private:
    void emitLines();

    BxSmartPointer<Logging::ILogger> m_logger;
    std::wstring m_pending;
};
