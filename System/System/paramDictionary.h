#pragma once

#include "System/System/export.h"
#include "System/System/parameterDef.h"
#include "System/System/string.h"

#include <map>

namespace Qel {

class ParamCommand;

/// The parameters of one class: what they are, and the commands that reach them. StringInterface keeps one
/// per class.
///
/// @par Ownership  Does not own the commands; one that dies takes its parameter out.
class QEL_API ParamDictionary {
public:
    /// Enters a parameter at the end of the list. If the name is there already nothing changes: the first
    /// command stays.
    /// @param command  kept, not owned. With null the parameter is listed and can be neither got nor set.
    void addParameter(ParameterDef const &def, ParamCommand *command);

    ParameterList const &getParameters() const { return m_parameters; } ///< in order of adding

protected:
    friend class StringInterface;

    ParamCommand *getParamCommand(String const &name) const; ///< null for an unknown name, too

private:
    void forget(ParamCommand const *command);

    ParameterList m_parameters;
    std::map<String, ParamCommand *> m_commands;
    bool m_hasLost = false; // a command has died since the class last filled this
};

} // namespace Qel
