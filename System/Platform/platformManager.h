#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"

namespace Qel {

class ConfigDialog;
class ErrorDialog;
class InputReader;
class ProcessorInfo;
class SplashDialog;

class PlatformManager;
extern template class QEL_API tSingleton<PlatformManager>;

/// Hands out what only the desktop has: dialogs and input. All of it comes from one plugin, which is loaded
/// under the name "plugin_win32platform.dll" when the manager is made and stays until PluginMgr goes.
///
/// The plugin exports the eight functions below as `extern "C"`: a `create` function takes the address of a
/// pointer and stores the new object there, a `destroy` function takes the object.
///
/// @par Ownership  The caller owns what a `create` operation returns and gives it back through the matching
///                 `destroy` operation, while the manager lives.
/// @par Threads    Belongs to the main thread.
class QEL_API PlatformManager : public tSingleton<PlatformManager> {
public:
    static constexpr char const *pluginName = "plugin_win32platform.dll";

    /// Needs a PluginMgr. Switches the binding of threads to processors on if a ProcessorInfo counts more
    /// than one package.
    /// @throws Exception number 9 if the plugin cannot be loaded or lacks one of the exports; the description
    ///         names it
    PlatformManager();
    ~PlatformManager();

    PlatformManager(PlatformManager const &) = delete;
    PlatformManager &operator=(PlatformManager const &) = delete;

    ProcessorInfo &getProcessorInfo() const; ///< the process's; there must be one, as there is under Root

    // Null if the plugin made nothing.
    ConfigDialog *createConfigDialog();
    ErrorDialog *createErrorDialog();
    InputReader *createInputReader();
    SplashDialog *createSplashDialog();

    // Null does nothing.
    void destroyConfigDialog(ConfigDialog *dialog);
    void destroyErrorDialog(ErrorDialog *dialog);
    void destroyInputReader(InputReader *reader);
    void destroySplashDialog(SplashDialog *dialog);

private:
    void (*m_createConfigDialog)(ConfigDialog **) = nullptr;
    void (*m_createErrorDialog)(ErrorDialog **) = nullptr;
    void (*m_createInputReader)(InputReader **) = nullptr;
    void (*m_createSplashDialog)(SplashDialog **) = nullptr;
    void (*m_destroyConfigDialog)(ConfigDialog *) = nullptr;
    void (*m_destroyErrorDialog)(ErrorDialog *) = nullptr;
    void (*m_destroyInputReader)(InputReader *) = nullptr;
    void (*m_destroySplashDialog)(SplashDialog *) = nullptr;
};

} // namespace Qel
