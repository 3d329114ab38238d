#pragma once

#include "System/System/export.h"
#include "System/System/mapIterator.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include <map>

namespace Qel {

/// A small settings file: one key and value a line, in memory.
///
/// A key may repeat, and its values keep the order of the file: so one file lists many plugins. Lines that
/// start with "#" or "@" are comments. A line that is no setting is passed over in silence. Blanks around key
/// and value do not count. The last line counts only if it ends in a newline, and a line is taken in pieces
/// of 99 characters, each of them looked at as a line of its own. A piece counts only up to a zero byte.
///
/// @code
/// ConfigFile config;
/// config.load("plugins.cfg", "=");
/// for (String const &name : config.getMultiSetting("Plugin")) {
///     ...
/// }
/// @endcode
///
/// @par Threads  Belongs to its caller.
class QEL_API ConfigFile {
public:
    using SettingsMap = std::multimap<String, String>;
    using SettingsIterator = MapIterator<SettingsMap>;

    /// Replaces all settings by those of a file.
    /// @param fileName    kept for save()
    /// @param separators  each of these characters ends a key; those after the first belong to the value
    /// @throws Exception number 8 if the file cannot be opened, which is logged too; there are no settings
    /// then
    void load(String const &fileName, String const &separators);

    /// The first value of a key; empty if there is none.
    String getSetting(String const &key) const;

    /// All values of a key in their order; empty if there are none.
    StringVector getMultiSetting(String const &key) const;

    /// Stands at the first setting, in order of the keys. The values may be changed through it.
    SettingsIterator getSettingsIterator();

    /// Changes the first value of a key, or adds the key. Further values of the key stay.
    void setSetting(String const &key, String const &value);
    void setSetting(String const &key, unsigned int value); ///< in decimal; from 2^31 on as a negative number

    /// Writes all settings, one "key = value" a line in order of the keys, to the file they were loaded from,
    /// whatever the separators were then. A failure is silent: the file then stays as it was wherever the
    /// system allows that.
    void save() const;

private:
    void readPiece(char const *piece, std::size_t length, String const &separators);

    SettingsMap m_settings;
    String m_fileName;
};

} // namespace Qel
