#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadbinarymemoryfile.h>
#include <vobase/streams/vostreamwritecompressedzip.h>

#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

using namespace streamtest;

namespace {

const char* const c_new = "C2288012-30BB4396B65C-A8CE40307C01";
const char* const c_old = "Vorax AG, 2005, compressed archive";

Bytes concat(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes readEverything(VoStreamReadBinaryMemoryFile& in)
{
    Bytes out(1 << 20);
    out.resize(in.ReadBuffer(out.data(), out.size()));
    return out;
}

}  // namespace

TEST(VoStreamReadBinaryMemoryFile, DetectsTheHeaderLikeTheFileReader)
{
    const Bytes payload = TextLike(5000);
    BxStreamWriteBinaryBuffer zipped;
    {
        VoStreamWriteCompressedZIP zip(zipped, VoStreamWriteBinaryFile::eCL_Fast);
        zip.WriteBuffer(payload.data(), payload.size());
    }
    const auto* z = reinterpret_cast<const unsigned char*>(zipped.GetData());
    const Bytes stream(z, z + zipped.GetCount());
    for (const char* signature : {c_new, c_old}) {
        const Bytes compressed = concat(Header(signature, 2, 5000), stream);
        VoStreamReadBinaryMemoryFile zin(compressed);
        EXPECT_EQ(readEverything(zin), payload);

        const Bytes stored = concat(Header(signature, 0, 5000), payload);
        VoStreamReadBinaryMemoryFile sin(stored.data(), stored.size());
        EXPECT_EQ(readEverything(sin), payload);
    }
    VoStreamReadBinaryMemoryFile plain(payload);
    EXPECT_EQ(readEverything(plain), payload);
}

TEST(VoStreamReadBinaryMemoryFile, HeaderOnlyBlockIsEmpty)
{
    const Bytes header = Header(c_new, 0, 0);
    VoStreamReadBinaryMemoryFile in(header);
    char c;
    EXPECT_EQ(in.ReadBuffer(&c, 1), 0u);
    EXPECT_THROW(in >> c, BxExceptionStream);
}

TEST(VoStreamReadBinaryMemoryFile, ShortBlocksArePlain)
{
    const Bytes header = Header(c_old, 2, 0);
    const Bytes shortBlock(header.begin(), header.begin() + 27);
    VoStreamReadBinaryMemoryFile in(shortBlock);
    EXPECT_EQ(readEverything(in), shortBlock);
    VoStreamReadBinaryMemoryFile none(nullptr, 0);
    EXPECT_TRUE(readEverything(none).empty());
}

TEST(VoStreamReadBinaryMemoryFile, RefusedTypesNameInit)
{
    for (std::uint32_t type : {1u, 3u, 0x80000000u}) {
        const Bytes block = concat(Header(c_new, type, 0), TextLike(10));
        try {
            VoStreamReadBinaryMemoryFile in(block);
            ADD_FAILURE() << "type " << type << " accepted";
        } catch (const BxExceptionStream& e) {
            EXPECT_EQ(e.GetFunctionName(), "VoStreamReadBinaryMemoryFile::init");
        }
    }
}

TEST(VoStreamReadBinaryMemoryFile, CorruptStringLengthIsRefusedBeforeAllocating)
{
    const Bytes block = {0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b'};  // a 2 GiB string with 2 bytes behind it
    VoStreamReadBinaryMemoryFile in(block);
    std::string s;
    EXPECT_THROW(in >> s, BxExceptionStream);
}
