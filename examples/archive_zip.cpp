// Binary streams with compression: a compressed archive file (a 28-byte
// header, then a zlib stream) written and read back, and the same data
// through a ZIP stream held in memory.
#include <vobase/streams/vostreamcompressionheader.h>
#include <vobase/streams/vostreamreadbinaryfile.h>
#include <vobase/streams/vostreamreadcompressedzip.h>
#include <vobase/streams/vostreamwritebinaryfile.h>
#include <vobase/streams/vostreamwritecompressedzip.h>

#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

int main()
{
    std::vector<float> samples(20000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = float(std::lround(1000 * std::sin(i * 0.01))) / 1000;  // a smooth, repetitive signal
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "vobase-example.vac";

    {
        VoStreamWriteBinaryFile out(path.wstring(), VoStreamWriteBinaryFile::eAM_Create,
                                    VoStreamWriteBinaryFile::eCM_ZIP, VoStreamWriteBinaryFile::eCL_Best);
        out.WriteVersion(1);
        out << std::wstring(L"sine") << std::uint32_t(samples.size());
        out.WriteArray(samples.data(), samples.size());
        out.Flush();  // ends the zlib stream and patches the size into the header
        std::printf("archive: %llu payload bytes -> %llu bytes on disk\n",
                    static_cast<unsigned long long>(out.GetByteCount()),
                    static_cast<unsigned long long>(std::filesystem::file_size(path)));
    }

    std::ifstream raw(path, std::ios::binary);
    const std::vector<char> head((std::istreambuf_iterator<char>(raw)), std::istreambuf_iterator<char>());
    VoStreamCompressionHeader header;
    if (header.Parse(head.data(), head.size()))
        std::printf("header: type %u (2 = ZIP), uncompressed size %u\n", header.GetCompressionType(), header.GetSize());

    VoStreamReadBinaryFile in(path.wstring());  // recognises the header and inflates
    in.ReadAndCompareVersion(1);
    std::wstring name;
    std::uint32_t count = 0;
    in >> name >> count;
    std::vector<float> back(count);
    in.ReadArray(back.data(), back.size());
    std::filesystem::remove(path);
    std::printf("archive read back: %ls, %u samples, %s\n", name.c_str(), count, back == samples ? "equal" : "DIFFERENT");

    BxStreamWriteBinaryBuffer packed;
    {
        VoStreamWriteCompressedZIP zip(packed, VoStreamWriteBinaryFile::eCL_Fast);
        zip.WriteArray(samples.data(), samples.size());
    }  // the destructor ends the zlib stream
    BxStreamReadBinaryBuffer packedIn(packed.GetData(), packed.GetCount());
    VoStreamReadCompressedZIP unzip(packedIn);
    std::vector<float> unpacked(samples.size());
    unzip.ReadArray(unpacked.data(), unpacked.size());
    std::printf("ZIP stream: %zu bytes -> %zu, read back %s\n", samples.size() * sizeof(float),
                static_cast<std::size_t>(packed.GetCount()), unpacked == samples ? "equal" : "DIFFERENT");
    return back == samples && unpacked == samples ? 0 : 1;
}
