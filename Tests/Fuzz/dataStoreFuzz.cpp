#include "System/File/dataStore.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <cstdint>
#include <cstring>

namespace {

using Qel::cDataStore;
using Qel::sBlockId;

std::string blockOf(cDataStore const &store, std::uint32_t id)
{
    void const *data = nullptr;
    unsigned int size = 0;
    if (!store.getBlock(sBlockId{id}, data, size)) {
        return "-";
    }
    return {static_cast<char const *>(data), size};
}

} // namespace

// The first byte is the alignment, the rest an image.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    if (size == 0) {
        return {};
    }
    cDataStore store;
    store.open(static_cast<unsigned char>(1 << (data[0] & 7)));
    unsigned char const *const image = data + 1;
    auto const length = static_cast<unsigned int>(size - 1);
    store.open_shared(image, length);

    std::string seen;
    for (unsigned int at = 0; at + 4 <= length; at += 4) {
        std::uint32_t id;
        std::memcpy(&id, image + at, sizeof(id));
        seen += blockOf(store, id);
    }
    cDataStore copy(store);
    seen.append(static_cast<char const *>(copy.getRawData()), copy.getRawSize());
    fuzzRequire(copy.fixErrors(), "a copy is sound");

    std::uint32_t const id = length >= 4 ? image[0] + 256u * image[1] : 7;
    store.writeBlock(sBlockId{id}, "written", 7);
    fuzzRequire(blockOf(store, id) == "written", "what was written is found");
    store.writeBlock(sBlockId{id}, nullptr, 0);
    fuzzRequire(blockOf(store, id) == "-", "what was removed is gone");
    seen.append(static_cast<char const *>(store.getRawData()), store.getRawSize());

    store.open_shared(image, length);
    seen += store.fixErrors() ? 's' : 'd';
    fuzzRequire(store.fixErrors() && store.getRawSize() <= length, "one cut is enough");
    return seen;
}
