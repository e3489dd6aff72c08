// Binary input straight from a file, without header detection.
//
//   VoStreamReadBinaryFileRaw in(L"/tmp/data/values.bin");
//   char magic[4];
//   std::size_t seen = in.Peek(magic, 4);   // the position does not move
//   int value;
//   in >> value;
//
// The file is opened with fopen on the UTF-8 form of the path in mode "rb"
// and fully buffered with 65,536 bytes. Paths of 260 characters or more are
// refused, as on the original platform. Small reads are served from a block
// of 65,536 bytes lent to the base class as its get area, so that typed
// values cost no call into the C runtime.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamreadbinary.h>

#include <cstdio>
#include <memory>
#include <string>

/// Binary input straight from a file, without header detection.
class VOBASE_API VoStreamReadBinaryFileRaw : public BxStreamReadBinary
{
public:
    /// Opens `path`. Throws BxExceptionStream for a path of 260 characters or
    /// more or an open failure without an error number, and BxExceptionStd
    /// carrying the system message when the open fails with one.
    explicit VoStreamReadBinaryFileRaw(const wchar_t* path);
    ~VoStreamReadBinaryFileRaw() override;

    /// Reads up to `count` bytes and restores the file position; returns the
    /// count read (smaller at end of file). Throws BxExceptionStream
    /// ("VoStreamReadBinaryFileRaw::Peek") when the position cannot be taken
    /// or restored, or on a read error.
    std::size_t Peek(void* buffer, std::size_t count);

    /// The path as given to the constructor.
    const wchar_t* GetFilename() const noexcept { return m_filename.c_str(); }

protected:
    /// Reads up to `count` bytes; fewer at end of file. Throws
    /// BxExceptionStream on a read error.
    std::size_t read(void* data, std::size_t count) override;

private:
    static constexpr std::size_t c_blockSize = 65536;

    std::FILE* m_file = nullptr;
    std::wstring m_filename;
    std::unique_ptr<std::byte[]> m_block;  ///< read ahead of the caller; its unread part is the get area
};
