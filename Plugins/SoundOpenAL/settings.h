#pragma once

#include "System/System/configurable.h"
#include "System/System/string.h"

template <>
struct Qel::ConfigurableText<Qel::String> {
    static String toText(String const &value) { return value; }
    static void fromText(String &value, char const *text) { value = text; }
};

/// What a host sets by ConsoleVar::setConfigurable() before it calls initSoundSystem().
namespace settings {

extern Qel::Configurable<Qel::String> device; ///< "openal.device": its name; empty for the usual one
extern Qel::Configurable<Qel::String> file; ///< "openal.file": a WAV file to render into in place of a device

} // namespace settings
