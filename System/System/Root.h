#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/buildDate.h"
#include "System/System/buildVersion.h"
#include "System/System/eventTimes.h"
#include "System/System/export.h"
#include "System/System/frameListener.h"
#include "System/System/string.h"
#include "System/Time/timerCycle.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Qel {

class InputReader;
class Plugin;
class RenderSystem;
class Root;
class Timer;
struct RootManagers;

extern template class QEL_API tSingleton<Root>;

/// The engine: makes every manager, loads the plugins, runs the frame loop and takes all of it down again.
///
/// @code
/// Root root("plugins.cfg", "debug.log", true);
/// root.addFrameListener(&game);
/// root.setMaxFrameRate(60);
/// root.run(); // until a listener returns false or calls endMessageLoop()
/// @endcode
///
/// The engine draws nothing and registers no listener of its own.
///
/// @par Ownership  A host makes exactly one. It owns the managers; listeners, render systems, the input
///                 device and dialogs stay their makers'.
/// @par Threads    One thread makes it, runs it and destroys it. It takes no lock.
class QEL_API Root : public tSingleton<Root> {
public:
    /// Which queue of stamps an event's time is counted in.
    enum FrameEventTimeType : std::int32_t {
        FRAME_EVENT_ANY = 0,
        FRAME_EVENT_STARTED = 1,
        FRAME_EVENT_ENDED = 2,
    };

    /// Frame counts and times.
    struct QelStats {
        /// One frame. The library writes the time; the other words are for whoever calls
        /// getCurrentFrameStats(), and move along with the history.
        struct sHistory {
            float frameTime; ///< seconds
            std::uint32_t words[8];
        };

        std::uint32_t frameCount; ///< render and idle notifications: at least two per loop
        float frameRate;          ///< per second, by the last frame alone; infinite if that took no time
        sHistory history[256];    ///< the oldest first; all zero at the start
    };

    /// As Root("plugins.cfg", "debug.log", true).
    Root();

    /// Brings up every manager in a fixed order, then loads the plugins of a configuration file.
    /// @param pluginFileName  see loadPlugins()
    /// @param logFileName     name of the default log, and path of its file; echoed on the error stream
    /// @param writeLogFile    false keeps the log from writing a file
    /// @throws Exception if the plugin file is missing (number 8), or the platform plugin or a listed one
    ///         cannot be loaded (number 9). The managers made so far are left standing, so that a handler can
    ///         still log; the next Root takes them down first.
    Root(String const &pluginFileName, String const &logFileName, bool writeLogFile);

    /// Takes everything down in a fixed order, which is not that of the constructor reversed: plugins stop
    /// after the managers and the log are gone.
    ~Root();

    Root(Root const &) = delete;
    Root &operator=(Root const &) = delete;

    /// @name Plugins
    /// @{

    /// Loads and starts the plugins of a file: values of the key "Plugin", in order, looked for in the folder
    /// "PluginFolder" (joined as it is), each with ".dll" behind it, which Support/OS also finds as ".so". A
    /// key equal to a plugin's name lists modules that it needs: if one of them cannot be loaded, the plugin
    /// is left out with a line in the log. So is one that is listed twice, the second time, the platform
    /// plugin, which is loaded already, and one whose start function throws, with whatever it had registered.
    /// @throws Exception number 8 if the file is missing, number 9 if a plugin cannot be loaded
    void loadPlugins(String const &pluginFileName);

    /// Stops and unloads them, the last one first, and takes back what they registered when they started and
    /// have not taken back themselves.
    void unloadPlugins();

    std::vector<Plugin *> const &getPlugins() const; ///< those that loadPlugins() loaded, in that order

    /// @}
    /// @name Frame loop
    /// @{

    /// The main loop: messages, the background's throttle, the started, render and ended events, then
    /// limitFramerate(); until endMessageLoop() or until frameStarted or frameEnded of a listener returns
    /// false. In the latter case it may be called again.
    void run();
    void endMessageLoop() { m_running = false; } ///< for good: the frame in progress ends, later run()s too

    void addFrameListener(FrameListener *listener);    ///< told in the order of addresses, once each
    void removeFrameListener(FrameListener *listener); ///< nothing happens if it is absent

    bool _fireFrameStarted(FrameEvent &event); ///< also writes the statistics; false if a listener said so
    bool _fireFrameEnded(FrameEvent &event);   ///< also moves the clock of the resources; false as above
    bool _fireFrameRender();                   ///< counts a frame; false if a listener said so
    bool _fireFrameIdle(FrameEvent &event);    ///< counts a frame; false if a listener said so

    void clearEventTimes(); ///< forgets all stamps, so that a pause does not count as a frame

    /// Event times are averages over this many seconds; 0, the default, takes the last two stamps.
    void setFrameSmoothingPeriod(float seconds) { m_frameSmoothingPeriod = seconds; }
    float getFrameSmoothingPeriod() const { return m_frameSmoothingPeriod; }

    void setTimeClamp(float min, float max);           ///< limits of event times in seconds; 0 and 1 at start
    void setTimeConst(float t) { setTimeClamp(t, t); } ///< every event time is @p t: a fixed time step

    /// Limits the rate. The limit is kept in whole milliseconds, 1000 / @p fps, and the loop runs at
    /// 1000 divided by those: 60 gives 62 frames a second.
    /// @param fps  0 or above 1000: no limit
    void setMaxFrameRate(unsigned int fps) { m_maxFrameMs = fps == 0 ? 0 : 1000 / fps; }

    /// Sleeps before each frame, on a lower priority, while the foreground is another's; on at start.
    void setBackgroundBehave(bool throttle) { m_backgroundBehave = throttle; }
    void setSleepTime(unsigned short ms) { m_sleepTime = ms; } ///< of that sleep; 5 at start

    float getFrameRate() const { return m_stats.frameRate; } ///< by the last frame alone
    float getFrameRateAvg() const;                           ///< over the last 256 frames
    std::uint32_t getFrameCount() const { return m_stats.frameCount; }
    void incFrameCount() { ++m_stats.frameCount; }
    QelStats const &getStats() const { return m_stats; }
    QelStats::sHistory *getCurrentFrameStats() { return &m_stats.history[255]; } ///< the newest record

    /// Offers each message to a dialog's window before it is dispatched, the last one added first.
    void addDialog(void *window);    ///< one that is added twice is offered twice
    void removeDialog(void *window); ///< takes out the first entry; nothing happens if it is absent

    /// @}
    /// @name Render systems and input
    /// @{

    void addRenderSystem(RenderSystem *system);
    RenderSystem *getRenderSystem() const { return m_renderSystem; } ///< the active one, or null
    std::vector<RenderSystem *> *getAvailableRenderers() { return &m_renderSystems; }

    /// Makes a system the active one. Another that was active is shut down first.
    /// @param system  not owned; null for none
    void setRenderSystem(RenderSystem *system);

    void setInputDevice(InputReader *device);                     ///< not owned; null for none
    InputReader *getInputDevice() const { return m_inputDevice; } ///< null at start

    /// Shows the platform's configuration dialog and waits for its end.
    /// @return what the dialog says; false if the platform has none
    bool showConfigDialog();

    bool restoreConfig() { return true; } ///< kept for callers; does nothing
    void saveConfig() {}                  ///< kept for callers; does nothing
    void shutdown() {}                    ///< kept for callers; does nothing

    /// @}

    /// The frame clock: its reading is the raw millisecond count. Null once the engine is being taken down.
    Timer *getTimer() const;
    TimerCycle getTimeSinceInit(); ///< time since just before the plugins were loaded
    BuildVersion const &getVersion() const { return m_version; }
    BuildDate const &getBuildDate() const { return m_buildDate; }

    /// Keeps a text for as long as this object lives. Equal texts give one pointer.
    /// @param text  copied; null and "" give one static empty text
    char const *makeGlobalString(char const *text);

    /// The process's terminate handler, installed by the constructor: logs, then handleTerminate().
    [[noreturn]] static void termHandler();

private:
    void bringUp(String const &pluginFileName, String const &logFileName, bool writeLogFile);
    bool loadDependencies(String const &name, std::vector<String> const &dependencies);
    void startPlugin(String const &folder, String const &name);
    bool runStartFunction(Plugin &plugin, String const &name, void (*start)());

    void drainMessages();
    void throttleInBackground();
    FrameEvent makeEvent(FrameEventTimeType type);
    float calculateEventTime(std::uint64_t now, FrameEventTimeType type);
    float clampTime(float seconds) const;
    void limitFramerate();
    template <class Tell>
    bool tellListeners(Tell const &tell);

    BuildVersion m_version;
    BuildDate m_buildDate;
    std::vector<RenderSystem *> m_renderSystems;
    RenderSystem *m_renderSystem = nullptr;
    RenderSystem *m_shuttingDown = nullptr; // the one whose shutdown() runs
    std::unique_ptr<RootManagers> m_managers;
    TimerCycle m_initTime;
    InputReader *m_inputDevice = nullptr;
    QelStats m_stats{};
    bool m_running = true;
    bool m_foreground = true;
    bool m_backgroundBehave = true;
    std::uint16_t m_sleepTime = 5; // ms
    float m_minFrameTime = 0.0f;   // seconds
    float m_maxFrameTime = 1.0f;   // seconds
    std::uint32_t m_maxFrameMs = 0;
    float m_frameSmoothingPeriod = 0.0f; // seconds
    std::array<EventTimes, 3> m_eventTimes;
    std::vector<FrameListener *> m_frameListeners; // in the order of addresses
    std::uint32_t m_listenerChanges = 0;
    bool m_warnedOfChange = false;
    std::vector<void *> m_dialogs;
};

} // namespace Qel
