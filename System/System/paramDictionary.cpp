#include "System/System/paramDictionary.h"

#include "System/System/paramCommand.h"

#include <algorithm>

namespace Qel {

void ParamDictionary::addParameter(ParameterDef const &def, ParamCommand *command)
{
    if (m_commands.contains(def.name)) {
        return;
    }
    m_parameters.push_back(def);
    try {
        m_commands.emplace(def.name, command);
    } catch (...) {
        m_parameters.pop_back();
        throw;
    }
}

ParamCommand *ParamDictionary::getParamCommand(String const &name) const
{
    auto const at = m_commands.find(name);
    return at != m_commands.end() ? at->second : nullptr;
}

void ParamDictionary::forget(ParamCommand const *command)
{
    for (auto at = m_commands.begin(); at != m_commands.end();) {
        if (at->second != command) {
            ++at;
            continue;
        }
        std::erase_if(m_parameters, [&](ParameterDef const &def) { return def.name == at->first; });
        at = m_commands.erase(at);
        m_hasLost = true;
    }
}

} // namespace Qel
