// Output filter that deflates everything written to it into an inner stream
// as one standard zlib stream (RFC 1950), the payload of compressed archives.
//
//   BxStreamWriteBinaryBuffer bytes;
//   {
//       VoStreamWriteCompressedZIP zip(bytes, VoStreamWriteBinaryFile::eCL_Fast);
//       zip << values;
//   }   // the destructor ends the zlib stream
//
// Writes are staged in a 1,024-byte buffer: when the staged bytes and a new
// block reach 1,024 together, the stage is deflated, and a block larger than
// 512 bytes is then deflated directly while a smaller one starts the new
// stage. Deflated output leaves through a 1,024-byte buffer. Level 0 selects
// zlib's default level, 1 the fastest and 2 the best.
#pragma once

#include <vobase/streams/vostreamfilter.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/vobaseapi.h>

#include <bxbase/bxstreamwritebinary.h>

#include <cstddef>
#include <memory>

struct z_stream_s;

/// Output filter that deflates everything written to it into an inner stream as one standard zlib stream (RFC
/// 1950), the payload of compressed archives.
class VOBASE_API VoStreamWriteCompressedZIP : public VoStreamFilter<BxStreamWriteBinary, BxStreamWriteBinary>
{
public:
    static constexpr std::size_t c_BufferSize = 1024;  ///< the stage and the output buffer

    /// Borrows `inner`. Throws BxExceptionPreconditionViolation
    /// ("translateCompressionLevel") for a level other than 0, 1, 2, and
    /// BxExceptionStream ("VoStreamWriteCompressedZIP::init") when zlib cannot start.
    VoStreamWriteCompressedZIP(BxStreamWriteBinary& inner, VoStreamWriteBinaryFile::ECompressionLevel level);
    /// Owns `inner`, otherwise as above.
    VoStreamWriteCompressedZIP(std::unique_ptr<BxStreamWriteBinary> inner,
                               VoStreamWriteBinaryFile::ECompressionLevel level);
    /// Finishes the stream unless Finish ran or an inner write failed; errors are swallowed.
    ~VoStreamWriteCompressedZIP() override;

    /// Deflates the staged bytes with Z_FINISH and writes the end of the zlib
    /// stream. Skipped after a failed inner write; may throw what the inner
    /// stream throws. Later writes throw BxExceptionStream.
    void Finish();

    /// zlib's level for a level selector: 0 -> -1 (default), 1 -> 1, 2 -> 9.
    /// Throws BxExceptionPreconditionViolation ("translateCompressionLevel") otherwise.
    static int TranslateCompressionLevel(VoStreamWriteBinaryFile::ECompressionLevel level);

protected:
    BxStreamWriteBinary& write(const void* data, std::size_t count) override;

private:
    void init(int level);
    void deflateToStream(const void* data, std::size_t count, int flush);

    std::unique_ptr<z_stream_s> m_stream;            ///< zlib state, zero-initialised
    bool m_started = false;                          ///< deflateInit succeeded (deflateEnd is due)
    bool m_finished = false;                         ///< Finish ran
    bool m_error = false;                            ///< an inner write failed
    std::size_t m_staged = 0;                        ///< bytes in m_stage
    unsigned char m_output[c_BufferSize];
    unsigned char m_stage[c_BufferSize];
};
