#include "fileConfigDialog.h"

#include "Support/OS/file.h"
#include "System/System/configFile.h"

bool FileConfigDialog::display()
{
    constexpr char const *answers = "platform.cfg";
    // Having no such file is the usual case, and not worth the exception that a settings file makes of it.
    if (!os::openFile(answers, "r")) {
        return false;
    }
    Qel::ConfigFile config;
    config.load(answers, "=");
    return config.getSetting("ConfigDialog") == "start";
}
