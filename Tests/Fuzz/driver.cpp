#include "Tests/Fuzz/fuzzTarget.h"

#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

void fuzzRequire(bool condition, char const *promise)
{
    if (!condition) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const *data,
                                                                             std::size_t size)
{
    std::vector<unsigned char> const input(data, data + size);
    // The C library fills a new block with the complement. The address sanitizer has its own allocator and
    // takes no notice; it has other means.
    mallopt(M_PERTURB, 0xFF);
    std::string const overZeros = fuzzTarget(input.data(), size);
    mallopt(M_PERTURB, 0x5A);
    std::string const overOthers = fuzzTarget(input.data(), size);
    mallopt(M_PERTURB, 0);
    fuzzRequire(overZeros == overOthers, "the same bytes give the same answer, whatever memory held before");
    return 0;
}
