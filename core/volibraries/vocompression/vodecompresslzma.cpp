#include <vocompression/vodecompresslzma.h>

#include <bxbase/bxexceptionstream.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

constexpr int c_outputTooSmall = 1;  // the module's answer when the output space filled up
constexpr unsigned int c_minimumCapacity = 64u << 10;

}  // namespace

VoDecompressLZMA::VoDecompressLZMA() : VoDecompressLZMA(std::wstring())
{
}

VoDecompressLZMA::VoDecompressLZMA(const std::wstring& modulePath)
    : m_module(modulePath, "VoDecompressLZMA::VoDecompressLZMA"),
      m_entry(m_module.Resolve(VoCompressLZMA::c_DecompressEntry, "VoDecompressLZMA::VoDecompressLZMA"))
{
}

bool VoDecompressLZMA::Decompress(const void* data, unsigned int size)
{
    m_buffer.reset();
    m_size = 0;
    const auto* input = static_cast<const unsigned char*>(data);
    std::uint64_t capacity = std::max<std::uint64_t>(std::uint64_t(size) * 4, c_minimumCapacity);
    capacity = std::min<std::uint64_t>(capacity, m_maximumSize);
    for (;;) {
        std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[capacity ? capacity : 1]);
        if (!buffer)
            return false;
        unsigned char* output = buffer.get();
        unsigned int produced = static_cast<unsigned int>(capacity);
        const int result = m_entry(&input, &output, size, &produced, 0);
        if (result == 0) {
            m_buffer = std::move(buffer);
            m_size = produced;
            return true;
        }
        if (result != c_outputTooSmall)
            return false;
        if (capacity >= m_maximumSize)
            BX_THROW(BxExceptionStream, "VoDecompressLZMA::Decompress",
                     "the data decompresses to more than the maximum of " + std::to_string(m_maximumSize) + " bytes");
        capacity = std::min<std::uint64_t>(capacity * 2, m_maximumSize);
    }
}
