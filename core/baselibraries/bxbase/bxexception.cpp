#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>

BxException::BxException(const char* sourceFile, int line, const char* functionName, std::string message)
    : m_sourceFile(sourceFile ? sourceFile : ""),
      m_line(line),
      m_functionName(functionName ? functionName : ""),
      m_message(std::move(message))
{
    m_what = m_functionName;
    if (!m_message.empty())
        m_what += ": " + m_message;
    m_what += " (" + m_sourceFile + ":" + std::to_string(m_line) + ")";
}

BxException::BxException(const char* sourceFile, int line, const char* functionName, const std::wstring& message)
    : BxException(sourceFile, line, functionName, BxStringConvert::WideToUtf8Lossy(message))
{
}

std::wstring BxException::GetMessageW() const
{
    return BxStringConvert::Utf8ToWideLossy(m_message);
}
