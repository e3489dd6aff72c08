// Binary output straight into a file, without any header: the bytes written
// are the file's bytes.
//
//   VoStreamWriteBinaryFileRaw out(L"/tmp/data/values.bin", VoStreamWriteBinaryFile::eAM_Create);
//   out << 42 << 3.5;
//   out.Close();
//
// The file is opened with fopen on the UTF-8 form of the path ("wb" to create
// or truncate, "ab" to append) and fully buffered with 65,536 bytes. A
// missing parent directory is created. Paths of 260 characters or more are
// refused, as on the original platform.
//
// An access mode other than create or append opens nothing: the constructor
// returns quietly and every later write throws. VoStreamWriteBinaryFile checks
// the mode before it gets here.
#pragma once

#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamwritebinary.h>

#include <cstdio>
#include <string>

/// Binary output straight into a file, without any header: the bytes written are the file's bytes.
class VOBASE_API VoStreamWriteBinaryFileRaw : public BxStreamWriteBinary
{
public:
    /// Opens `path`. Throws BxExceptionStream for a path of 260 characters or
    /// more, a parent directory that cannot be created or an open failure
    /// without an error number, and BxExceptionStd carrying the system message
    /// when the open fails with one.
    VoStreamWriteBinaryFileRaw(const wchar_t* path, VoStreamWriteBinaryFile::EAccessMode accessMode);
    /// Closes the file (errors are ignored here; call Close to see them).
    ~VoStreamWriteBinaryFileRaw() override;

    /// Flushes and closes the file; throws BxExceptionStream when that fails.
    /// Does nothing when the file is not open.
    void Close();

    /// The path as given to the constructor.
    const wchar_t* GetFilename() const noexcept { return m_filename.c_str(); }

    /// The open file, or null after Close (used to patch a header in place).
    std::FILE* GetHandle() const noexcept { return m_file; }

protected:
    /// Writes the whole buffer; throws BxExceptionStream when the file is not
    /// open or not everything was stored.
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

private:
    std::FILE* m_file = nullptr;
    std::wstring m_filename;
};
