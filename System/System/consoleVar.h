#pragma once

#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include <map>
#include <unordered_map>

namespace Qel {

class Storable_configurable;

/// The one table of all registered configurables of the process, in order of their names.
///
/// @code
/// ConsoleVar &table = ConsoleVar::Instance();
/// for (String const &name : table.getNames()) {
///     String value;
///     table.getConfigurable(name, value, nullptr);
///     show(name, value);
/// }
/// @endcode
///
/// @par Ownership  Owns none of the objects. Each takes itself out when it dies, so no entry outlives its
///                 object: a plugin's static configurables come and go with the plugin.
/// @par Lifetime   Made by the first call of Instance(), and emptied at the exit of the process. It may still
///                 be called after that: static objects that die later find it empty.
/// @par Threads    For the main thread; takes no lock.
class QEL_API ConsoleVar {
public:
    static ConsoleVar &Instance();    ///< made on first use
    static ConsoleVar *InstancePtr(); ///< never null; made on first use

    ConsoleVar(ConsoleVar const &) = delete;
    ConsoleVar &operator=(ConsoleVar const &) = delete;

    unsigned int size() const; ///< number of entries

    bool isRegistered(String const &name) const;

    /// Sets a value from text, which is not checked: text that cannot be read gives 0.
    /// @return false for an unknown name
    bool setConfigurable(String const &name, String const &value);

    /// Reads a value as text of up to 63 bytes; a longer one is cut.
    /// @param flags  may be null
    /// @return false for an unknown name; the outputs are then left alone
    bool getConfigurable(String const &name, String &value, unsigned int *flags) const;

    /// The name at a place in name order; the empty text if @p index is out of range. The time grows with
    /// @p index.
    String getConsoleVar(unsigned int index) const;

    StringVector getNames() const; ///< all names in order, in one walk

    int getAsInt(String const &name) const;   ///< the number at the start of the text; 0 for an unknown name
    bool getAsBool(String const &name) const; ///< is the text "1" or "true"? false for an unknown name
    float getAsFloat(String const &name) const; ///< the text as a number; 0 for an unknown name

private:
    friend class Storable_configurable;
    struct EmptyAtExit;
    using Table = std::map<String, Storable_configurable *>;

    ConsoleVar() = default;
    ~ConsoleVar() = default;

    void add(String name, Storable_configurable &configurable);
    void remove(Storable_configurable const &configurable);

    Table m_table;
    // The name is not in the object, so the way back from the object to its entry is kept here.
    std::unordered_map<Storable_configurable const *, Table::iterator> m_entries;
};

} // namespace Qel
