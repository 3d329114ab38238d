#include "startSettings.h"

#include "Support/OS/file.h"
#include "System/System/configFile.h"
#include "System/System/stringConverter.h"

#include <algorithm>

namespace {

using Qel::StringConverter;

bool loadFile(Qel::ConfigFile &config)
{
    // Having no such file is the usual case, and not worth the exception that a settings file makes of it.
    if (!os::openFile(StartSettings::fileName, "r")) {
        return false;
    }
    config.load(StartSettings::fileName, "=");
    return true;
}

void readSide(Qel::ConfigFile const &config, char const *key, int &side)
{
    int const value = StringConverter::parseInt(config.getSetting(key));
    side = value > 0 && value <= StartSettings::largestSide ? value : side;
}

void readSwitch(Qel::ConfigFile const &config, char const *key, bool &isOn)
{
    Qel::String const value = config.getSetting(key);
    isOn = value.empty() ? isOn : StringConverter::parseBool(value);
}

} // namespace

void StartSettings::load()
{
    Qel::ConfigFile config;
    if (!loadFile(config)) {
        return;
    }
    start = config.getSetting("ConfigDialog") == "start";
    readSide(config, "Width", width);
    readSide(config, "Height", height);
    readSwitch(config, "FullScreen", fullScreen);
    readSwitch(config, "Sound", sound);
    Qel::String const loudness = config.getSetting("Volume");
    volume = loudness.empty() ? volume : std::clamp(StringConverter::parseInt(loudness), 0, 100);
}

bool StartSettings::save() const
{
    Qel::ConfigFile config;
    if (!loadFile(config) && (!os::replaceFile(fileName, "", 0) || !loadFile(config))) {
        return false;
    }
    config.setSetting("ConfigDialog", start ? "start" : "stop");
    config.setSetting("Width", StringConverter::toString(width));
    config.setSetting("Height", StringConverter::toString(height));
    config.setSetting("FullScreen", StringConverter::toString(fullScreen));
    config.setSetting("Sound", StringConverter::toString(sound));
    config.setSetting("Volume", StringConverter::toString(volume));
    config.save();

    StartSettings written;
    written.load();
    return written == *this;
}
