#include <vobase/streams/vostreamwritebinaryfileraw.h>

#include <vobase/platform/vofilesystem.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstringconvert.h>

#include <filesystem>
#include <system_error>

namespace {

constexpr const char* c_constructor = "VoStreamWriteBinaryFileRaw::VoStreamWriteBinaryFileRaw";

void createParentDirectory(const std::wstring& path)
{
    std::wstring directory, fileName;
    VoFileSystem::SplitPath(path, directory, fileName);
    if (directory.empty())
        return;
    const std::filesystem::path parent(BxStringConvert::WideToUtf8(directory));
    std::error_code error;
    if (std::filesystem::is_directory(parent, error))
        return;
    std::filesystem::create_directories(parent, error);
    if (error || !std::filesystem::is_directory(parent, error))
        BX_THROW(BxExceptionStream, c_constructor, "cannot create the directory " + parent.string());
}

}  // namespace

VoStreamWriteBinaryFileRaw::VoStreamWriteBinaryFileRaw(const wchar_t* path,
                                                       VoStreamWriteBinaryFile::EAccessMode accessMode)
    : m_filename(path ? path : L"")
{
    if (!path || VoFileSystem::IsPathTooLong(path))
        BX_THROW(BxExceptionStream, c_constructor, "the path is empty or too long");
    createParentDirectory(m_filename);
    const char* mode = nullptr;
    switch (accessMode) {
    case VoStreamWriteBinaryFile::eAM_Create: mode = "wb"; break;
    case VoStreamWriteBinaryFile::eAM_Append: mode = "ab"; break;
    default: return;  // quietly unopened: later writes fail
    }
    m_file = VoFileSystem::OpenFile(path, mode, c_constructor);
}

VoStreamWriteBinaryFileRaw::~VoStreamWriteBinaryFileRaw()
{
    if (m_file)
        std::fclose(m_file);
}

void VoStreamWriteBinaryFileRaw::Close()
{
    if (!m_file)
        return;
    std::FILE* file = m_file;
    m_file = nullptr;
    if (std::fclose(file) != 0)
        BX_THROW(BxExceptionStream, "VoStreamWriteBinaryFileRaw::Close",
                 L"cannot write the end of " + m_filename);
}

BxStreamWriteBinary& VoStreamWriteBinaryFileRaw::write(const void* data, std::size_t count)
{
    if (!m_file)
        BX_THROW(BxExceptionStream, "VoStreamWriteBinaryFileRaw::write", "the file is not open");
    // The FILE belongs to this stream alone, so the unlocked form is safe.
    if (count && fwrite_unlocked(data, count, 1, m_file) != 1)
        BX_THROW(BxExceptionStream, "VoStreamWriteBinaryFileRaw::write", L"cannot write to " + m_filename);
    return *this;
}
