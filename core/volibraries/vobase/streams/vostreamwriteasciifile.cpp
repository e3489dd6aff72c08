#include <vobase/streams/vostreamwriteasciifile.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>

#include <cstring>
#include <cwchar>

VoStreamWriteASCIIFile::VoStreamWriteASCIIFile(const CString& path, VoStreamWriteBinaryFile::EAccessMode accessMode,
                                               VoStreamWriteBinaryFile::ECompressionMode compressionMode,
                                               locale_t locale)
    : m_file(path, accessMode, compressionMode, VoStreamWriteBinaryFile::eCL_Default), m_locale(locale)
{
}

VoStreamWriteASCIIFile::VoStreamWriteASCIIFile(VoFileSystem::ESpecialDirectory directory, const CString& name,
                                               VoStreamWriteBinaryFile::EAccessMode accessMode,
                                               VoStreamWriteBinaryFile::ECompressionMode compressionMode,
                                               locale_t locale)
    : m_file(directory, name, accessMode, compressionMode, VoStreamWriteBinaryFile::eCL_Default), m_locale(locale)
{
}

void VoStreamWriteASCIIFile::write(const char* text)
{
    m_file.WriteBuffer(text, std::strlen(text));
}

void VoStreamWriteASCIIFile::write(const wchar_t* text)
{
    constexpr std::size_t c_chunk = 1024;
    const std::wstring_view all(text, std::wcslen(text));
    for (std::size_t start = 0; start < all.size(); start += c_chunk) {
        const std::wstring_view chunk = all.substr(start, c_chunk);
        std::string bytes;
        try {
            bytes = BxStringConvert::WideToAnsi(chunk);
        } catch (const std::exception& e) {
            BX_THROW(BxException, "VoStreamWriteASCIIFile::write", e.what());
        }
        // One byte per character, whatever the conversion produced.
        bytes.resize(chunk.size(), '?');
        m_file.WriteBuffer(bytes.data(), chunk.size());
    }
}
