// Uses each installed library once and checks the results.
#include <bxbase/bxbase.h>
#include <vobase/vobase.h>
#include <vocompression/vocompression.h>

#include <cstdio>
#include <cstring>

int main()
{
    BxStreamWriteBinaryBuffer out;
    out << 7 << std::wstring(L"package");
    BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
    int seven = 0;
    std::wstring text;
    in >> seven >> text;

    BxSmartPointer<BxInt32> value(new BxInt32(seven));
    const bool ok = seven == 7 && text == L"package" && value->Get() == 7 &&
                    std::strcmp(VoBaseGetVersionString(), BxGetVersionString()) == 0 &&
                    std::strcmp(VoCompressionGetVersionString(), BxGetVersionString()) == 0;
    std::printf("VoBase %s package client: %s\n", BxGetVersionString(), ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}
