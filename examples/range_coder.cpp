// Entropy coding: text through the range coder with its adaptive model (and
// a raw bit field beside it), then a slowly changing signal through the
// predictive coder, which codes each sample against the previous one.
#include <vobase/streams/vostreamreadpredictivecoder.h>
#include <vobase/streams/vostreamwritepredictivecoder.h>
#include <vocompression/vocompressrangecoder.h>
#include <vocompression/vodecompressrangecoder.h>

#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

int main()
{
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "the quick brown fox jumps over the lazy dog; ";

    BxStreamWriteBinaryBuffer coded;
    {
        VoCompressRangeCoder encoder(coded, 256, 4096);  // its own model of 256 symbols
        encoder.WriteRawBits(std::uint32_t(text.size()), 24);
        for (unsigned char c : text)
            encoder << c;
    }  // the whole message reaches `coded` when the coder closes
    BxStreamReadBinaryBuffer codedIn(coded.GetData(), coded.GetCount());
    VoDecompressRangeCoder decoder(codedIn, 256);  // reads in the same order
    std::string decoded(decoder.ReadRawBits(24), '\0');
    for (char& c : decoded) {
        unsigned char symbol = 0;
        decoder >> symbol;
        c = char(symbol);
    }
    std::printf("range coder: %zu characters -> %zu bytes (%.2f bits each), decoded %s\n", text.size(),
                static_cast<std::size_t>(coded.GetCount()), 8.0 * coded.GetCount() / text.size(),
                decoded == text ? "equal" : "DIFFERENT");

    std::vector<std::uint32_t> signal(10000);
    for (std::size_t i = 0; i < signal.size(); ++i)
        signal[i] = std::uint32_t(32768 + 20000 * std::sin(i * 0.002) + (i * 7919 % 13));  // 16 bits, smooth plus noise

    BxStreamWriteBinaryBuffer predicted;
    {
        VoStreamWritePredictiveCoder coder(predicted, 16, 1 << 16);
        std::uint32_t previous = 0;
        for (std::uint32_t sample : signal)
            coder.WriteValue(sample, previous), previous = sample;
        coder.Close();
    }
    BxStreamReadBinaryBuffer predictedIn(predicted.GetData(), predicted.GetCount());
    VoStreamReadPredictiveCoder reader(predictedIn, 16);
    std::vector<std::uint32_t> back(signal.size());
    std::uint32_t previous = 0;
    for (std::uint32_t& sample : back)
        previous = sample = reader.ReadValue(previous);
    std::printf("predictive coder: %zu samples of 16 bits -> %zu bytes (%.2f bits each), decoded %s\n", signal.size(),
                static_cast<std::size_t>(predicted.GetCount()), 8.0 * predicted.GetCount() / signal.size(),
                back == signal ? "equal" : "DIFFERENT");
    return decoded == text && back == signal ? 0 : 1;
}
