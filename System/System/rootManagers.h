#pragma once

#include "System/System/globalStrings.h"
#include "System/System/string.h"

#include <memory>
#include <vector>

namespace Qel {

class ArchiveManager;
class CodecManager;
class LogManager;
class MovieManager;
class ParticleSystemMgr;
class PlatformManager;
class Plugin;
class PluginMgr;
class ProcessorInfo;
class SoundSystemManager;
class Timer;

/// What Root makes, and the two orders: Root::bringUp() makes the members from the first to the last,
/// takeDown() has an order of its own. Not part of the public interface.
struct RootManagers {
    std::unique_ptr<LogManager> m_logManager;
    std::unique_ptr<ProcessorInfo> m_processorInfo;
    std::unique_ptr<GlobalStrings> m_globalStrings;
    std::unique_ptr<PluginMgr> m_pluginMgr;
    std::unique_ptr<ArchiveManager> m_archiveManager;
    std::unique_ptr<PlatformManager> m_platformManager;
    std::unique_ptr<ParticleSystemMgr> m_particleSystemMgr;
    std::unique_ptr<MovieManager> m_movieManager;
    std::unique_ptr<SoundSystemManager> m_soundSystemManager;
    std::unique_ptr<CodecManager> m_codecManager;
    std::unique_ptr<Timer> m_timer;
    std::vector<Plugin *> m_plugins; // started, in that order

    RootManagers();
    ~RootManagers(); ///< takes down what stands

    RootManagers(RootManagers const &) = delete;
    RootManagers &operator=(RootManagers const &) = delete;

    void takeDown();
    void stopPlugins(); ///< stops and unloads the plugins, the last one first

    /// Keeps the managers of a Root whose constructor failed, so that its host can still log. They stay until
    /// the next Root is made or the process ends.
    static void leaveStanding(std::unique_ptr<RootManagers> managers);

    static void clearStanding(); ///< takes down what leaveStanding() kept
};

} // namespace Qel
