// vobase-demo: shows the framework at work.
//
// For now it exercises the base-types layer: the type registry, variants,
// identifiers, binary streams and the persistence form, and reports each
// stage. It exits non-zero when a stage fails.
#include <bxbase/bxbase.h>
#include <vobase/vobase.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

namespace {

struct Stage
{
    const char* name;
    std::function<std::string()> run;  // returns a short result text; throws on failure
};

std::string registryStage()
{
    int created = 0;
    for (const wchar_t* name : {L"BxBool", L"BxInt32", L"BxFloat64", L"BxString"}) {
        auto object = BxRTTI::CreateByName(name);
        if (!object || std::wstring(object->GetClassNameW()) != name)
            throw BxException(__FILE__, __LINE__, "registryStage", L"cannot create " + std::wstring(name));
        ++created;
    }
    return std::to_string(created) + " value classes created by name";
}

std::string streamStage()
{
    BxStreamWriteBinaryBuffer out;
    out.WriteVersion(1);
    for (int k = 0; k < 100000; ++k)
        out << k << static_cast<double>(k) * 0.5;
    out << std::wstring(L"Grüße");
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    in.ReadAndCompareVersion(1);
    for (int k = 0; k < 100000; ++k) {
        int i;
        double d;
        in >> i >> d;
        if (i != k || d != k * 0.5)
            throw BxException(__FILE__, __LINE__, "streamStage", "value mismatch");
    }
    std::wstring text;
    in >> text;
    if (text != L"Grüße")
        throw BxException(__FILE__, __LINE__, "streamStage", "text mismatch");
    return std::to_string(out.GetCount()) + " bytes written and read back";
}

std::string variantStage()
{
    BxVariant a = 42;
    BxVariant b = 42.0;
    BxVariant c = L"42";
    c.ConvertTo(BxVariant::eVT_Int);
    if (!(a == b) || !(a == c))
        throw BxException(__FILE__, __LINE__, "variantStage", "variants differ");
    return "int, double and converted text compare equal";
}

std::string identifierStage()
{
    _GUID id;
    UuidCreate(&id);
    std::wstring text;
    UuidToStringW(&id, text);
    _GUID back;
    if (UuidFromStringW(text.c_str(), &back) != RPC_S_OK || !(back == id))
        throw BxException(__FILE__, __LINE__, "identifierStage", "identifier does not round-trip");
    return BxStringConvert::WideToUtf8(text);
}

}  // namespace

int main()
{
    std::printf("VoBase %s demo\n", BxGetVersionString());
    const Stage stages[] = {
        {"type registry", registryStage},
        {"binary streams", streamStage},
        {"variants", variantStage},
        {"identifiers", identifierStage},
    };
    int failed = 0;
    for (const auto& stage : stages) {
        const auto start = std::chrono::steady_clock::now();
        try {
            const std::string result = stage.run();
            const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
            std::printf("  %-16s ok    %8.2f ms  %s\n", stage.name, ms, result.c_str());
        } catch (const std::exception& e) {
            std::printf("  %-16s FAIL  %s\n", stage.name, e.what());
            ++failed;
        }
    }
    std::printf("%s\n", failed ? "demo failed" : "demo finished");
    return failed ? 1 : 0;
}
