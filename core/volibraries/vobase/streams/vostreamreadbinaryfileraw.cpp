#include <vobase/streams/vostreamreadbinaryfileraw.h>

#include <vobase/platform/vofilesystem.h>

#include <bxbase/bxexceptionstream.h>

#include <algorithm>
#include <cstring>

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
    // Give back what was read ahead, so that the file position is the caller's.
    if (const std::size_t ahead = getAreaSize()) {
        setGetArea(nullptr, nullptr);
        if (std::fseek(m_file, -static_cast<long>(ahead), SEEK_CUR) != 0)
            BX_THROW(BxExceptionStream, function, "cannot take the file position");
    }
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
    // Called when the get area is used up. The FILE belongs to this stream
    // alone, so the unlocked form is safe.
    const bool direct = count >= c_blockSize;
    if (!direct && !m_block)
        m_block = std::make_unique<std::byte[]>(c_blockSize);
    void* target = direct ? data : m_block.get();
    const std::size_t got = fread_unlocked(target, 1, direct ? count : c_blockSize, m_file);
    if (got < (direct ? count : c_blockSize) && std::ferror(m_file))
        BX_THROW(BxExceptionStream, "VoStreamReadBinaryFileRaw::read", L"cannot read from " + m_filename);
    if (direct)
        return got;
    const std::size_t n = std::min(count, got);
    std::memcpy(data, m_block.get(), n);
    setGetArea(m_block.get() + n, m_block.get() + got);
    return n;
}
