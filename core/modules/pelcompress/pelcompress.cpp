// The LZMA module: buffer-to-buffer compression and decompression on liblzma.
//
// Both entry points have one calling shape:
//
//   int PelCompress(const unsigned char** input, unsigned char** output,
//                   unsigned int inputSize, unsigned int* outputSize, unsigned int flags);
//   int PelDecompress(...the same...);
//
// *input points at inputSize bytes, *output at *outputSize bytes of space; on
// success *outputSize becomes the number of bytes produced. Neither pointer is
// changed. flags must be 0. PelCompress writes the .lzma format (LZMA1 with an
// end marker, preset 6); PelDecompress reads .lzma and .xz, within a
// decoder memory limit of 256 MiB. The result is 0 on success, 1 when the
// output space is too small, 2 for corrupt, truncated or unsupported input,
// 3 when memory runs out (or the memory limit is reached) and 4 for bad
// arguments.
#include <lzma.h>

#include <algorithm>
#include <cstdint>

namespace {

enum EResult : int {
    eR_Ok = 0,
    eR_OutputTooSmall = 1,  ///< the output space filled before the end
    eR_DataError = 2,       ///< corrupt, truncated or unsupported input
    eR_MemoryError = 3,     ///< out of memory, or the decoder's memory limit
    eR_BadArguments = 4,
};

constexpr std::uint64_t c_decoderMemoryLimit = 256u << 20;

int toResult(lzma_ret ret)
{
    switch (ret) {
    case LZMA_OK:
    case LZMA_STREAM_END: return eR_Ok;
    case LZMA_MEM_ERROR:
    case LZMA_MEMLIMIT_ERROR: return eR_MemoryError;
    case LZMA_OPTIONS_ERROR:
    case LZMA_PROG_ERROR: return eR_BadArguments;
    default: return eR_DataError;
    }
}

// Runs `stream` to the end over the caller's buffers.
int run(lzma_stream& stream, const unsigned char* input, unsigned int inputSize, unsigned char* output,
        unsigned int* outputSize)
{
    stream.next_in = input;
    stream.avail_in = inputSize;
    stream.next_out = output;
    stream.avail_out = *outputSize;
    lzma_ret ret;
    do {
        ret = lzma_code(&stream, LZMA_FINISH);
    } while (ret == LZMA_OK);  // liblzma answers LZMA_BUF_ERROR when it cannot progress
    int result;
    if (ret == LZMA_STREAM_END)
        result = eR_Ok;
    else if (ret == LZMA_BUF_ERROR && stream.avail_out == 0)
        result = eR_OutputTooSmall;
    else
        result = toResult(ret) == eR_Ok ? eR_DataError : toResult(ret);
    if (result == eR_Ok)
        *outputSize = static_cast<unsigned int>(stream.total_out);
    lzma_end(&stream);
    return result;
}

bool validArguments(const unsigned char** input, unsigned char** output, unsigned int inputSize,
                    unsigned int* outputSize, unsigned int flags)
{
    return input && output && outputSize && flags == 0 && (*input || inputSize == 0) && (*output || *outputSize == 0);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int PelCompress(const unsigned char** input, unsigned char** output,
                                                                  unsigned int inputSize, unsigned int* outputSize,
                                                                  unsigned int flags)
{
    if (!validArguments(input, output, inputSize, outputSize, flags))
        return eR_BadArguments;
    lzma_options_lzma options;
    if (lzma_lzma_preset(&options, 6))
        return eR_BadArguments;
    // A dictionary larger than the input buys nothing and costs memory.
    options.dict_size = std::min<std::uint32_t>(options.dict_size, std::max<std::uint32_t>(LZMA_DICT_SIZE_MIN, inputSize));
    lzma_stream stream = LZMA_STREAM_INIT;
    if (const lzma_ret ret = lzma_alone_encoder(&stream, &options); ret != LZMA_OK)
        return toResult(ret);
    return run(stream, *input, inputSize, *output, outputSize);
}

extern "C" __attribute__((visibility("default"))) int PelDecompress(const unsigned char** input,
                                                                    unsigned char** output, unsigned int inputSize,
                                                                    unsigned int* outputSize, unsigned int flags)
{
    if (!validArguments(input, output, inputSize, outputSize, flags))
        return eR_BadArguments;
    lzma_stream stream = LZMA_STREAM_INIT;
    if (const lzma_ret ret = lzma_auto_decoder(&stream, c_decoderMemoryLimit, 0); ret != LZMA_OK)
        return toResult(ret);
    return run(stream, *input, inputSize, *output, outputSize);
}
