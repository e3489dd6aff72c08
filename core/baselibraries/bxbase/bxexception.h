// Root of the framework's exception family.
//
// Every exception names the place that threw it: the source file, the line
// and the qualified function name as the library documents it (for example
// "VoSemanticVersion::operator ="), always passed explicitly.
//
//   throw BxExceptionStream(__FILE__, __LINE__, "VoStreamReadBinaryFile::read", "file is truncated");
//   BX_THROW(BxExceptionStream, "VoStreamReadBinaryFile::read", "file is truncated");
//
// Subclasses (each in its own header): BxExceptionContainer,
// BxExceptionPreconditionViolation, BxExceptionStream,
// BxExceptionWrongFileVersion, BxExceptionUnknownExtension, BxExceptionStd.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/iexception.h>

#include <exception>
#include <memory>
#include <string>

/// Root of the framework's exception family.
class BXBASE_API BxException : public std::exception, public IException
{
public:
    /// Where it was thrown and why; a null sourceFile or functionName is kept as empty text, message may be empty.
    BxException(const char* sourceFile, int line, const char* functionName, std::string message = {});
    /// As above, with a wide message; it is kept as UTF-8, malformed characters replaced by U+FFFD.
    BxException(const char* sourceFile, int line, const char* functionName, const std::wstring& message);

    /// The source file that threw (as given, usually `__FILE__`).
    const std::string& GetSourceFile() const noexcept { return m_sourceFile; }
    /// The line in GetSourceFile() that threw.
    int GetLine() const noexcept { return m_line; }
    /// The qualified function name the thrower gave, for example "VoSemanticVersion::operator =".
    const std::string& GetFunctionName() const noexcept { return m_functionName; }
    /// The message in UTF-8 (empty when none was given).
    const std::string& GetMessage() const noexcept { return m_message; }
    /// The message as wide text.
    std::wstring GetMessageW() const;

    /// "function: message (file:line)".
    const char* what() const noexcept override { return m_what.c_str(); }

    std::unique_ptr<IException> Clone() const override { return std::make_unique<BxException>(*this); }
    [[noreturn]] void Rethrow() const override { throw *this; }

private:
    std::string m_sourceFile;
    int m_line;
    std::string m_functionName;
    std::string m_message;
    std::string m_what;
};

/// Defines an exception class that derives from Base and only changes the type.
#define BX_DEFINE_EXCEPTION_CLASS(API, Name, Base)                                            \
    class API Name : public Base                                                              \
    {                                                                                         \
    public:                                                                                   \
        using Base::Base;                                                                     \
        std::unique_ptr<IException> Clone() const override { return std::make_unique<Name>(*this); } \
        [[noreturn]] void Rethrow() const override { throw *this; }                          \
    }

/// Throws Type built from this source position, the given function name and message.
#define BX_THROW(Type, functionName, ...) throw Type(__FILE__, __LINE__, functionName, ##__VA_ARGS__)
