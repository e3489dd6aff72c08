#include "archivetool.h"
#include "progressbar.h"

#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>
#include <vobase/platform/vofilesystem.h>
#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritebinaryfileraw.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include <unistd.h>

namespace {

constexpr std::size_t c_blockSize = 1 << 20;

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

std::wstring wide(const std::string& path) { return BxStringConvert::Utf8ToWideLossy(path); }

// The path as the framework's file streams will open it.
std::string resolved(const std::string& path)
{
    return BxStringConvert::WideToUtf8Lossy(VoFileSystem::InterpretEnvironment(wide(path)));
}

FilePtr openForReading(const std::string& path)
{
    FilePtr file(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw ArchiveError(path + ": cannot open: " + std::strerror(errno));
    return file;
}

std::uint64_t fileSize(const std::string& path)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error)
        throw ArchiveError(path + ": cannot read its size: " + error.message());
    return size;
}

// A temporary file beside the target that is removed unless committed.
class TemporaryOutput
{
public:
    explicit TemporaryOutput(const std::string& target)
        : m_target(target), m_path(target + ".partial-" + std::to_string(::getpid()))
    {
    }
    ~TemporaryOutput()
    {
        if (!m_committed)
            std::remove(m_path.c_str());
    }
    const std::string& GetPath() const { return m_path; }
    void Commit()
    {
        if (std::rename(m_path.c_str(), m_target.c_str()) != 0)
            throw ArchiveError(m_target + ": cannot write: " + std::strerror(errno));
        m_committed = true;
    }

private:
    std::string m_target;
    std::string m_path;
    bool m_committed = false;
};

// Copies the input file block by block into `write`.
template <class Write>
std::uint64_t copyInput(const std::string& input, ProgressBar& bar, Write&& write)
{
    FilePtr file = openForReading(input);
    std::vector<char> block(c_blockSize);
    std::uint64_t total = 0;
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), file.get())) {
        write(block.data(), got);
        total += got;
        bar.Advance(got);
    }
    if (std::ferror(file.get()))
        throw ArchiveError(input + ": read error: " + std::strerror(errno));
    return total;
}

VoStreamCompressionHeader readHeader(const std::string& path, std::string& signature)
{
    FilePtr file = openForReading(path);
    unsigned char bytes[VoStreamCompressionHeader::c_HeaderSize];
    const std::size_t got = std::fread(bytes, 1, sizeof bytes, file.get());
    VoStreamCompressionHeader header;
    if (!header.Parse(bytes, got))
        throw ArchiveError(path + ": not a compressed archive (no archive signature in its first 28 bytes)");
    signature = std::memcmp(bytes, VoStreamCompressionHeader::c_ArchiveSignature,
                            VoStreamCompressionHeader::c_SignatureSize) == 0 ? "current" : "old";
    if (header.GetCompressionType() == VoStreamCompressionHeader::eCT_Retired)
        throw ArchiveError(path + ": uses the retired compression type 1");
    if (header.GetCompressionType() != VoStreamCompressionHeader::eCT_Stored &&
        header.GetCompressionType() != VoStreamCompressionHeader::eCT_ZIP)
        throw ArchiveError(path + ": unknown compression type " + std::to_string(header.GetCompressionType()));
    return header;
}

}  // namespace

void ArchiveTool::Pack(const std::string& input, const std::string& output, const SPackOptions& options) const
{
    if (options.level < 0 || options.level > 2)
        throw ArchiveError("--level must be 0, 1 or 2");
    const std::uint64_t size = fileSize(input);
    TemporaryOutput temporary(resolved(output));
    ProgressBar bar("packing", size);
    try {
        if (options.store) {
            VoStreamWriteBinaryFileRaw out(wide(temporary.GetPath()).c_str(), VoStreamWriteBinaryFile::eAM_Create);
            unsigned char header[VoStreamCompressionHeader::c_HeaderSize];
            VoStreamCompressionHeader(VoStreamCompressionHeader::eCT_Stored, VoStreamCompressionHeader::SaturateSize(size))
                .Serialize(header);
            out.WriteBuffer(header, sizeof header);
            const std::uint64_t copied = copyInput(input, bar, [&](const char* data, std::size_t n) { out.WriteBuffer(data, n); });
            if (copied != size)
                throw ArchiveError(input + ": changed while it was read");
            out.Close();
        } else {
            VoStreamWriteBinaryFile out(wide(temporary.GetPath()), VoStreamWriteBinaryFile::eAM_Create,
                                        VoStreamWriteBinaryFile::eCM_ZIP,
                                        static_cast<VoStreamWriteBinaryFile::ECompressionLevel>(options.level));
            copyInput(input, bar, [&](const char* data, std::size_t n) { out.WriteBuffer(data, n); });
            out.Flush();
        }
    } catch (const BxException& e) {
        throw ArchiveError(output + ": cannot write: " + e.GetMessage());
    }
    temporary.Commit();
}

template <class Sink>
std::uint64_t ArchiveTool::readPayload(const std::string& input, const char* label, Sink&& sink) const
{
    const std::string path = resolved(input);
    std::string signature;
    const VoStreamCompressionHeader header = readHeader(path, signature);
    ProgressBar bar(label, header.GetSize() == 0xFFFFFFFFu ? 0 : header.GetSize());
    std::uint64_t total = 0;
    try {
        VoStreamReadBinaryFile in(wide(input));
        std::vector<char> block(c_blockSize);
        while (const std::size_t got = in.ReadBuffer(block.data(), block.size())) {
            sink(block.data(), got);
            total += got;
            bar.Advance(got);
        }
    } catch (const BxException& e) {
        throw ArchiveError(input + ": corrupt archive: " + e.GetMessage());
    }
    // The size field is saturated for payloads of 4 GiB and more; below that
    // it must match, or the archive was cut short or damaged.
    if (header.GetSize() != 0xFFFFFFFFu && total != header.GetSize())
        throw ArchiveError(input + ": truncated or corrupt archive: the header declares " +
                           std::to_string(header.GetSize()) + " bytes, the payload holds " + std::to_string(total));
    return total;
}

void ArchiveTool::Unpack(const std::string& input, const std::string& output) const
{
    TemporaryOutput temporary(output);
    {
        FilePtr out(std::fopen(temporary.GetPath().c_str(), "wb"));
        if (!out)
            throw ArchiveError(output + ": cannot create: " + std::strerror(errno));
        readPayload(input, "unpacking", [&](const char* data, std::size_t n) {
            if (std::fwrite(data, 1, n, out.get()) != n)
                throw ArchiveError(output + ": write error: " + std::strerror(errno));
        });
        if (std::fclose(out.release()) != 0)
            throw ArchiveError(output + ": write error: " + std::strerror(errno));
    }
    temporary.Commit();
}

void ArchiveTool::Cat(const std::string& input) const
{
    readPayload(input, "reading", [](const char* data, std::size_t n) {
        if (std::fwrite(data, 1, n, stdout) != n)
            throw ArchiveError(std::string("standard output: write error: ") + std::strerror(errno));
    });
    std::fflush(stdout);
}

ArchiveTool::SInfo ArchiveTool::Info(const std::string& input) const
{
    SInfo info;
    const std::string path = resolved(input);
    const VoStreamCompressionHeader header = readHeader(path, info.signature);
    info.type = header.GetCompressionType();
    info.declaredSize = header.GetSize();
    info.fileSize = fileSize(path);
    info.payloadSize = readPayload(input, "checking", [](const char*, std::size_t) {});
    return info;
}
