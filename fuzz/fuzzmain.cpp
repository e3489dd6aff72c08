// libFuzzer entry of one target, chosen when the program is built
// (VOBASE_FUZZ_TARGET, the target's name).
#include "fuzztarget.h"

#include <cstdio>
#include <cstdlib>

namespace {

const fuzz::STarget& target()
{
    static const fuzz::STarget* found = fuzz::Find(VOBASE_FUZZ_TARGET);
    if (!found) {
        std::fprintf(stderr, "no fuzz target named %s\n", VOBASE_FUZZ_TARGET);
        std::abort();
    }
    return *found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Run(target(), data, size);  // anything but a BxException escapes and is reported
    return 0;
}
