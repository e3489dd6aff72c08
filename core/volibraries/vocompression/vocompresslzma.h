// Buffer-to-buffer LZMA compression through the separately loaded LZMA module.
//
//   VoCompressLZMA lzma;                          // loads the module next to this library
//   if (lzma.Compress(bytes.data(), unsigned(bytes.size())))
//       save(lzma.GetData(), lzma.GetSize());     // a standard .lzma stream
//
// The module (c_ModuleName, "libpelcompress.so") is looked for, in this order:
// at the path given to the constructor, at the path in the environment
// variable VOBASE_PELCOMPRESS, and next to the vocompression library itself.
// Its entry points are resolved by name (c_CompressEntry, c_DecompressEntry)
// and share one calling shape, FEntry:
//
//   int entry(const unsigned char** input, unsigned char** output,
//             unsigned int inputSize, unsigned int* outputSize, unsigned int flags);
//
// *outputSize holds the output capacity on the call and the produced size on
// return; 0 is success. VoDecompressLZMA uses the decompress entry.
#pragma once

#include <vocompression/vocompressionapi.h>

#include <memory>
#include <string>

/// Buffer-to-buffer LZMA compression through the separately loaded LZMA module.
class VOCOMPRESSION_API VoCompressLZMA
{
public:
    /// The calling shape of both module entry points.
    using FEntry = int (*)(const unsigned char** input, unsigned char** output, unsigned int inputSize,
                           unsigned int* outputSize, unsigned int flags);

    /// The file name of the LZMA module, looked for next to this library.
    static constexpr const char* c_ModuleName = "libpelcompress.so";
    /// The name of the module's compress entry point.
    static constexpr const char* c_CompressEntry = "PelCompress";
    /// The name of the module's decompress entry point.
    static constexpr const char* c_DecompressEntry = "PelDecompress";
    /// The environment variable that may name the module's path.
    static constexpr const char* c_ModuleVariable = "VOBASE_PELCOMPRESS";

    /// A loaded module; closing it when the last copy goes.
    class VOCOMPRESSION_API CModule
    {
    public:
        /// Loads the module at `path` (empty: the default search described
        /// above). Throws BxException naming `functionName` when it cannot be loaded.
        CModule(const std::wstring& path, const char* functionName);
        /// Resolves an entry point by name; throws BxException naming
        /// `functionName` when it is missing.
        FEntry Resolve(const char* name, const char* functionName) const;
        /// The path the module was loaded from.
        const std::wstring& GetPath() const noexcept { return m_path; }

    private:
        std::shared_ptr<void> m_handle;
        std::wstring m_path;
    };

    /// Loads the module and resolves the compress entry. Throws BxException
    /// ("VoCompressLZMA::VoCompressLZMA") when either fails.
    VoCompressLZMA();
    /// As above, with the module at `modulePath`.
    explicit VoCompressLZMA(const std::wstring& modulePath);

    /// Compresses `size` bytes into a .lzma stream kept in this object; any
    /// earlier result is freed first. Returns false (and keeps no result) when
    /// the module fails or the output buffer cannot be allocated.
    bool Compress(const void* data, unsigned int size);

    /// The last result (null when there is none).
    const unsigned char* GetData() const noexcept { return m_buffer.get(); }
    /// The size of the last result in bytes.
    unsigned int GetSize() const noexcept { return m_size; }

    /// Where the module is looked for when no path is given: the environment
    /// variable's value, else c_ModuleName in the directory of this library.
    static std::wstring GetDefaultModulePath();

private:
    CModule m_module;
    FEntry m_entry;
    std::unique_ptr<unsigned char[]> m_buffer;
    unsigned int m_size = 0;
};
