#pragma once

#include "System/System/export.h"
#include "System/System/paramDictionary.h"
#include "System/System/parameterDef.h"
#include "System/System/string.h"

#include <map>

namespace Qel {

class ParamCommand;

/// Base of objects whose properties a script sets and reads by name, as text, without knowing their class.
///
/// The names and the code behind them stand once per class in a ParamDictionary, which the first object of
/// the class fills:
///
/// @code
/// Lamp::Lamp()
/// {
///     if (createParamDictionary("Lamp")) {
///         getParamDictionary()->addParameter({"power", "Power in watts.", PARAM_FLOAT}, &msPowerCmd);
///     }
/// }
///
/// lamp.setParameter("power", "60");
/// @endcode
///
/// Names of classes are found in any case, names of parameters only as they are. An exact class name is the
/// fast one: only one that misses is compared with all the others.
///
/// @par Threads  Takes no lock: dictionaries are filled on the thread that constructs the objects, mostly the
///               main thread. Others may read once filling has stopped.
class QEL_API StringInterface {
public:
    StringInterface() = default; ///< has no dictionary yet
    StringInterface(StringInterface const &) = default;
    StringInterface &operator=(StringInterface const &) = default;
    virtual ~StringInterface();

    /// Sets a property from text.
    /// @return false if the object has no dictionary or the name has no command. A value that the command
    ///         cannot read is no failure here.
    virtual bool setParameter(String const &name, String const &value);

    /// A property as text; the empty text if the object has no dictionary or the name has no command.
    virtual String getParameter(String const &name);

    /// The dictionary of a class, or null. Stays at its place until the library unloads.
    /// @param caseSensitive  false: if there is none of exactly that name, the first in order of names that
    ///                       is equal in lower case
    static ParamDictionary *getParamDictionary(String const &name, bool caseSensitive);

    ParamDictionary *getParamDictionary();             ///< of this object's class, or null
    ParamDictionary const *getParamDictionary() const; ///< of this object's class, or null

    ParameterList const &getParameters() const; ///< of this object's class; empty if it has no dictionary

    static String getDictionaryList(); ///< the names of all dictionaries in order, a newline after each

protected:
    /// Names the dictionary of this object, and makes it if there is none.
    /// @return true if it has to be filled: it is new, or has lost commands of a plugin that has gone. What
    ///         it still has stays when it is filled again.
    bool createParamDictionary(String const &className);

    static std::map<String, ParamDictionary> msDictionary; ///< by class name

private:
    friend class ParamCommand;
    static void forgetCommand(ParamCommand const *command);

    String m_dictionaryName;
};

} // namespace Qel
