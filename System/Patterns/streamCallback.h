#pragma once

#include <cstdint>

class PoolBlk;

namespace Qel {

/// How the data of a resource got here. Other values exist for nobody: the manager ignores them.
enum eStreamCallback : std::uint32_t {
    STREAM_CACHED = 1, ///< delivered by the streamer
    STREAM_FORCED = 4  ///< read by the manager, on the calling thread
};

/// Takes the contents of a file that was asked for.
/// @param name    the file's name in normal form; valid during the call
/// @param data    the contents; what is not moved out of it is freed after the call
/// @param user    as it was given with the request
/// @param reason  STREAM_CACHED from a streamer
using StreamCallback = void (*)(char const *name, PoolBlk &data, void *user, eStreamCallback reason);

} // namespace Qel
