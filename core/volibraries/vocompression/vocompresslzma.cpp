#include <vocompression/vocompresslzma.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>

#include <cstdlib>
#include <dlfcn.h>
#include <limits>
#include <new>

VoCompressLZMA::CModule::CModule(const std::wstring& path, const char* functionName)
    : m_path(path.empty() ? GetDefaultModulePath() : path)
{
    void* handle = dlopen(BxStringConvert::WideToUtf8Lossy(m_path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* error = dlerror();
        BX_THROW(BxException, functionName,
                 "cannot load the LZMA module " + BxStringConvert::WideToUtf8Lossy(m_path) + ": " +
                     (error ? error : "unknown error"));
    }
    m_handle = std::shared_ptr<void>(handle, [](void* h) { dlclose(h); });
}

VoCompressLZMA::FEntry VoCompressLZMA::CModule::Resolve(const char* name, const char* functionName) const
{
    void* symbol = dlsym(m_handle.get(), name);
    if (!symbol)
        BX_THROW(BxException, functionName,
                 std::string("the LZMA module has no entry point ") + name + ": " + BxStringConvert::WideToUtf8Lossy(m_path));
    return reinterpret_cast<FEntry>(symbol);
}

std::wstring VoCompressLZMA::GetDefaultModulePath()
{
    if (const char* configured = std::getenv(c_ModuleVariable); configured && *configured)
        return BxStringConvert::Utf8ToWideLossy(configured);
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&VoCompressLZMA::GetDefaultModulePath), &info) && info.dli_fname) {
        const std::string library = info.dli_fname;
        const std::size_t slash = library.rfind('/');
        if (slash != std::string::npos)
            return BxStringConvert::Utf8ToWideLossy(library.substr(0, slash + 1) + c_ModuleName);
    }
    return BxStringConvert::Utf8ToWideLossy(c_ModuleName);  // left to the loader's own search
}

VoCompressLZMA::VoCompressLZMA() : VoCompressLZMA(std::wstring())
{
}

VoCompressLZMA::VoCompressLZMA(const std::wstring& modulePath)
    : m_module(modulePath, "VoCompressLZMA::VoCompressLZMA"),
      m_entry(m_module.Resolve(c_CompressEntry, "VoCompressLZMA::VoCompressLZMA"))
{
}

bool VoCompressLZMA::Compress(const void* data, unsigned int size)
{
    m_buffer.reset();
    m_size = 0;
    // Room for incompressible data: 5% more than the input, and 64 KiB for headers.
    const std::size_t capacity = std::size_t(size / 20) * 21 + 65536;
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[capacity]);
    if (!buffer)
        return false;
    const auto* input = static_cast<const unsigned char*>(data);
    unsigned char* output = buffer.get();
    unsigned int produced =
        static_cast<unsigned int>(std::min<std::size_t>(capacity, std::numeric_limits<unsigned int>::max()));
    if (m_entry(&input, &output, size, &produced, 0) != 0)
        return false;
    m_buffer = std::move(buffer);
    m_size = produced;
    return true;
}
