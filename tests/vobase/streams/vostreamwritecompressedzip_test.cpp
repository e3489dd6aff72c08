#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadcompressedzip.h>
#include <vobase/streams/vostreamwritecompressedzip.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <zlib.h>

using namespace streamtest;

namespace {

using File = VoStreamWriteBinaryFile;

// Collects what it is given and counts the calls; fails on demand.
class CCountingWriter : public BxStreamWriteBinary
{
public:
    Bytes bytes;
    int calls = 0;
    bool fail = false;

protected:
    BxStreamWriteBinary& write(const void* data, std::size_t count) override
    {
        if (fail)
            throw BxExceptionStream(__FILE__, __LINE__, "CCountingWriter::write", "disk full");
        ++calls;
        const auto* p = static_cast<const unsigned char*>(data);
        bytes.insert(bytes.end(), p, p + count);
        return *this;
    }
};

Bytes inflateAll(const Bytes& z)
{
    uLongf size = 4 << 20;
    Bytes out(size);
    EXPECT_EQ(uncompress(out.data(), &size, z.data(), static_cast<uLong>(z.size())), Z_OK);
    out.resize(size);
    return out;
}

}  // namespace

TEST(VoStreamWriteCompressedZIP, EmptyStreamIsAValidZlibStream)
{
    CCountingWriter inner;
    { VoStreamWriteCompressedZIP zip(inner, File::eCL_Default); }
    ASSERT_FALSE(inner.bytes.empty());
    EXPECT_TRUE(inflateAll(inner.bytes).empty());
}

TEST(VoStreamWriteCompressedZIP, SmallWritesAreStagedUntil1024Bytes)
{
    CCountingWriter inner;
    VoStreamWriteCompressedZIP zip(inner, File::eCL_Fast);
    const Bytes data = RandomBytes(4096);
    zip.WriteBuffer(data.data(), 600);  // empty stage + 600 < 1024: staged
    zip.WriteBuffer(data.data() + 600, 423);  // 1023: still staged
    // deflate keeps its own window, so nothing has reached the inner stream yet
    EXPECT_EQ(inner.calls, 0);
    zip.WriteBuffer(data.data() + 1023, 600);  // 1623 >= 1024: stage deflated, 600 > 512 deflated directly
    zip.WriteBuffer(data.data() + 1623, 2473);
    zip.Finish();
    EXPECT_GT(inner.calls, 0);
    EXPECT_EQ(inflateAll(inner.bytes), data);
    EXPECT_THROW(zip << 1, BxExceptionStream);
}

TEST(VoStreamWriteCompressedZIP, LevelsMapToZlibLevels)
{
    // The second byte of a zlib stream carries the level class: 0 fastest, 2 default, 3 best.
    const Bytes data = TextLike(3000);
    const std::pair<File::ECompressionLevel, int> cases[] = {
        {File::eCL_Default, 2}, {File::eCL_Fast, 0}, {File::eCL_Best, 3}};
    for (auto [level, flevel] : cases) {
        CCountingWriter inner;
        {
            VoStreamWriteCompressedZIP zip(inner, level);
            zip.WriteBuffer(data.data(), data.size());
        }
        ASSERT_GE(inner.bytes.size(), 2u);
        EXPECT_EQ(inner.bytes[1] >> 6, flevel) << "level " << level;
        EXPECT_EQ(inflateAll(inner.bytes), data);
    }
    EXPECT_EQ(VoStreamWriteCompressedZIP::TranslateCompressionLevel(File::eCL_Default), -1);
    CCountingWriter inner;
    try {
        VoStreamWriteCompressedZIP zip(inner, File::ECompressionLevel(5));
        ADD_FAILURE() << "level 5 accepted";
    } catch (const BxExceptionPreconditionViolation& e) {
        EXPECT_EQ(e.GetFunctionName(), "translateCompressionLevel");
    }
}

TEST(VoStreamWriteCompressedZIP, FailedInnerWriteIsReportedOnceAndNotRetried)
{
    CCountingWriter inner;
    auto zip = std::make_unique<VoStreamWriteCompressedZIP>(inner, File::eCL_Fast);
    inner.fail = true;
    const Bytes data = RandomBytes(5000);
    EXPECT_THROW(zip->WriteBuffer(data.data(), data.size()), BxExceptionStream);
    EXPECT_NO_THROW(zip->Finish());  // the error flag skips the final deflate
    EXPECT_NO_THROW(zip.reset());
    EXPECT_EQ(inner.calls, 0);
}

TEST(VoStreamWriteCompressedZIP, OwnsAnInnerStreamWhenGivenOne)
{
    auto buffer = std::make_unique<BxStreamWriteBinaryBuffer>();
    auto* raw = buffer.get();
    VoStreamWriteCompressedZIP zip(std::move(buffer), File::eCL_Fast);
    zip << 12345;
    zip.Finish();
    BxStreamReadBinaryBuffer in(raw->GetData(), raw->GetCount());
    VoStreamReadCompressedZIP unzip(in);
    int v = 0;
    unzip >> v;
    EXPECT_EQ(v, 12345);
}
