#include <vobase/streams/vostreamreadbinaryfileraw.h>

#include <vobase/platform/vofilesystem.h>

#include <bxbase/bxexceptionstream.h>

VoStreamReadBinaryFileRaw::VoStreamReadBinaryFileRaw(const wchar_t* path)
    : m_filename(path ? path : L"")
{
    m_file = VoFileSystem::OpenFile(path, "rb", "VoStreamReadBinaryFileRaw::VoStreamReadBinaryFileRaw");
}

VoStreamReadBinaryFileRaw::~VoStreamReadBinaryFileRaw()
{
    std::fclose(m_file);
}

std::size_t VoStreamReadBinaryFileRaw::Peek(void* buffer, std::size_t count)
{
    constexpr const char* function = "VoStreamReadBinaryFileRaw::Peek";
    std::fpos_t position;
    if (std::fgetpos(m_file, &position) != 0)
        BX_THROW(BxExceptionStream, function, "cannot take the file position");
    const std::size_t got = fread_unlocked(buffer, 1, count, m_file);
    const bool failed = got < count && std::ferror(m_file);
    if (std::fsetpos(m_file, &position) != 0 || failed)
        BX_THROW(BxExceptionStream, function, L"cannot read ahead in " + m_filename);
    return got;
}

std::size_t VoStreamReadBinaryFileRaw::read(void* data, std::size_t count)
{
    // The FILE belongs to this stream alone, so the unlocked form is safe.
    const std::size_t got = fread_unlocked(data, 1, count, m_file);
    if (got < count && std::ferror(m_file))
        BX_THROW(BxExceptionStream, "VoStreamReadBinaryFileRaw::read", L"cannot read from " + m_filename);
    return got;
}
