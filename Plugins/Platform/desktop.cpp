#include "objects.h"

#include "sdlConfigDialog.h"
#include "sdlErrorDialog.h"
#include "sdlInputReader.h"
#include "sdlMessagePump.h"
#include "sdlSplashDialog.h"

namespace {

// In place from the time the plugin is loaded until it is unloaded. A pump that the host has put there before
// stays.
class InstalledPump {
public:
    InstalledPump()
    {
        // An interrupt ends the program as it would without SDL, and not whenever the queue is read next.
        SDL_SetHintWithPriority(SDL_HINT_NO_SIGNAL_HANDLERS, "1", SDL_HINT_DEFAULT);
        if (os::installedMessagePump() == nullptr) {
            os::setMessagePump(&m_pump);
        }
    }

    ~InstalledPump()
    {
        if (os::installedMessagePump() == &m_pump) {
            os::setMessagePump(nullptr);
        }
        if (SDL_WasInit(0) == 0) {
            SDL_Quit(); // else what SDL keeps beside its subsystems is lost with the module
        }
    }

    InstalledPump(InstalledPump const &) = delete;
    InstalledPump &operator=(InstalledPump const &) = delete;

private:
    SdlMessagePump m_pump;
};

InstalledPump const installedPump;

} // namespace

std::unique_ptr<Qel::ConfigDialog> makeConfigDialog()
{
    return std::make_unique<SdlConfigDialog>();
}

std::unique_ptr<Qel::ErrorDialog> makeErrorDialog()
{
    return std::make_unique<SdlErrorDialog>();
}

std::unique_ptr<Qel::InputReader> makeInputReader()
{
    return std::make_unique<SdlInputReader>();
}

std::unique_ptr<Qel::SplashDialog> makeSplashDialog()
{
    return std::make_unique<SdlSplashDialog>();
}
