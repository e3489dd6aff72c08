#include <vobase/streams/vostreamwritecompressedzip.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace {

constexpr std::size_t c_directLimit = 512;  // larger blocks bypass the stage

}  // namespace

VoStreamWriteCompressedZIP::VoStreamWriteCompressedZIP(BxStreamWriteBinary& inner,
                                                       VoStreamWriteBinaryFile::ECompressionLevel level)
    : VoStreamFilter(inner)
{
    init(TranslateCompressionLevel(level));
}

VoStreamWriteCompressedZIP::VoStreamWriteCompressedZIP(std::unique_ptr<BxStreamWriteBinary> inner,
                                                       VoStreamWriteBinaryFile::ECompressionLevel level)
    : VoStreamFilter(std::move(inner))
{
    init(TranslateCompressionLevel(level));
}

VoStreamWriteCompressedZIP::~VoStreamWriteCompressedZIP()
{
    try {
        Finish();
    } catch (...) {
        // A destructor cannot report the failure; Finish does.
    }
    if (m_started)
        deflateEnd(m_stream.get());
}

int VoStreamWriteCompressedZIP::TranslateCompressionLevel(VoStreamWriteBinaryFile::ECompressionLevel level)
{
    switch (level) {
    case VoStreamWriteBinaryFile::eCL_Default: return Z_DEFAULT_COMPRESSION;
    case VoStreamWriteBinaryFile::eCL_Fast: return Z_BEST_SPEED;
    case VoStreamWriteBinaryFile::eCL_Best: return Z_BEST_COMPRESSION;
    }
    BX_THROW(BxExceptionPreconditionViolation, "translateCompressionLevel",
             "unknown compression level " + std::to_string(int(level)));
}

void VoStreamWriteCompressedZIP::init(int level)
{
    m_stream = std::make_unique<z_stream_s>();  // value-initialised: zalloc, zfree, opaque are null
    if (deflateInit_(m_stream.get(), level, ZLIB_VERSION, static_cast<int>(sizeof(z_stream))) != Z_OK)
        BX_THROW(BxExceptionStream, "VoStreamWriteCompressedZIP::init", "zlib cannot start deflating");
    m_started = true;
}

void VoStreamWriteCompressedZIP::Finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (!m_error)
        deflateToStream(m_stage, m_staged, Z_FINISH);
    m_staged = 0;
}

BxStreamWriteBinary& VoStreamWriteCompressedZIP::write(const void* data, std::size_t count)
{
    if (m_finished)
        BX_THROW(BxExceptionStream, "VoStreamWriteCompressedZIP::write", "the stream is already finished");
    if (m_staged + count >= c_BufferSize) {
        deflateToStream(m_stage, m_staged, Z_NO_FLUSH);
        m_staged = 0;
        if (count > c_directLimit) {
            deflateToStream(data, count, Z_NO_FLUSH);
            return *this;
        }
    }
    if (count)
        std::memcpy(m_stage + m_staged, data, count);
    m_staged += count;
    return *this;
}

void VoStreamWriteCompressedZIP::deflateToStream(const void* data, std::size_t count, int flush)
{
    z_stream& z = *m_stream;
    // zlib counts input in 32-bit units: feed larger blocks in slices.
    const auto* input = static_cast<const unsigned char*>(data);
    do {
        const std::size_t slice = std::min<std::size_t>(count, 1u << 30);
        count -= slice;
        z.next_in = const_cast<Bytef*>(input);
        z.avail_in = static_cast<uInt>(slice);
        input += slice;
        const int mode = count ? Z_NO_FLUSH : flush;
        do {
            z.next_out = m_output;
            z.avail_out = c_BufferSize;
            deflate(&z, mode);
            const std::size_t produced = c_BufferSize - z.avail_out;
            if (produced) {
                try {
                    m_inner->WriteBuffer(m_output, produced);
                } catch (...) {
                    m_error = true;
                    throw;
                }
            }
        } while (z.avail_out == 0);
    } while (count);
}
