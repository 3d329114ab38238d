#include "streamer.h"

#include "System/File/archiveContainer.h"
#include "System/System/Root.h"
#include "System/System/configFile.h"
#include "System/System/exception.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

namespace {

std::unique_ptr<Streamer> streamer;

unsigned setting(Qel::ConfigFile &config, char const *key, unsigned long most, unsigned otherwise)
{
    unsigned long const value = std::strtoul(config.getSetting(key), nullptr, 10);
    return value == 0 ? otherwise : static_cast<unsigned>(std::min(value, most));
}

Streamer::Limits limits()
{
    Streamer::Limits result;
    std::error_code unknown;
    if (!std::filesystem::exists("streamer.cfg", unknown)) {
        return result;
    }
    try {
        Qel::ConfigFile config;
        config.load("streamer.cfg", "=");
        result.workers = setting(config, "Workers", 64, result.workers);
        unsigned const megabytes = setting(config, "MegabytesInFlight", 4096, 0);
        result.bytesInFlight = megabytes == 0 ? result.bytesInFlight : std::uint64_t{megabytes} << 20;
    } catch (Qel::Exception const &) {
        // The log names it; no wishes then.
    }
    return result;
}

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    streamer = std::make_unique<Streamer>(limits());
    Qel::cArchiveContainer::setStreamingMgr(streamer.get());
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->addFrameListener(streamer.get());
    }
}

extern "C" QEL_API void dllStopPlugin()
{
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->removeFrameListener(streamer.get());
    }
    // Out first, so that what its last callbacks ask for is not asked of it.
    if (Qel::cArchiveContainer::streamer == streamer.get()) {
        Qel::cArchiveContainer::setStreamingMgr(nullptr);
    }
    streamer.reset();
}
