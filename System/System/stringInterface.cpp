#include "System/System/stringInterface.h"

#include "System/System/paramCommand.h"
#include "System/System/stringTools.h"

namespace Qel {

namespace {

// Trivial, so that it can still be read when the dictionaries are gone.
constinit bool dictionariesLive = false;

struct DictionaryLife {
    DictionaryLife() { dictionariesLive = true; }
    ~DictionaryLife() { dictionariesLive = false; }
};

} // namespace

// Built before the commands and objects that other sources of the library hold statically, and destroyed
// after them.
__attribute__((init_priority(102))) std::map<String, ParamDictionary> StringInterface::msDictionary;

namespace {

__attribute__((init_priority(103))) DictionaryLife const dictionaryLife;

}

ParamCommand::~ParamCommand()
{
    StringInterface::forgetCommand(this);
}

StringInterface::~StringInterface() = default;

bool StringInterface::setParameter(String const &name, String const &value)
{
    ParamDictionary const *const dictionary = getParamDictionary();
    ParamCommand *const command = dictionary != nullptr ? dictionary->getParamCommand(name) : nullptr;
    if (command == nullptr) {
        return false;
    }
    command->doSet(this, value);
    return true;
}

String StringInterface::getParameter(String const &name)
{
    ParamDictionary const *const dictionary = getParamDictionary();
    ParamCommand *const command = dictionary != nullptr ? dictionary->getParamCommand(name) : nullptr;
    return command != nullptr ? command->doGet(this) : String();
}

ParamDictionary *StringInterface::getParamDictionary(String const &name, bool caseSensitive)
{
    auto at = msDictionary.find(name);
    if (at == msDictionary.end() && !caseSensitive) {
        unsigned char const *const lower = StringTools::getMapTable(MAP_LOWER);
        for (at = msDictionary.begin(); at != msDictionary.end(); ++at) {
            if (at->first.size() == name.size() && StringTools::compare(at->first, name, lower) == 0) {
                break;
            }
        }
    }
    return at != msDictionary.end() ? &at->second : nullptr;
}

ParamDictionary *StringInterface::getParamDictionary()
{
    return getParamDictionary(m_dictionaryName, false);
}

ParamDictionary const *StringInterface::getParamDictionary() const
{
    return getParamDictionary(m_dictionaryName, false);
}

ParameterList const &StringInterface::getParameters() const
{
    static ParameterList const none;
    ParamDictionary const *const dictionary = getParamDictionary();
    return dictionary != nullptr ? dictionary->getParameters() : none;
}

String StringInterface::getDictionaryList()
{
    String list;
    for (auto const &[name, dictionary] : msDictionary) {
        list += name;
        list += '\n';
    }
    return list;
}

bool StringInterface::createParamDictionary(String const &className)
{
    m_dictionaryName = className;
    auto const [at, isNew] = msDictionary.try_emplace(className);
    bool const hasLost = at->second.m_hasLost;
    at->second.m_hasLost = false;
    return isNew || hasLost;
}

void StringInterface::forgetCommand(ParamCommand const *command)
{
    if (!dictionariesLive) {
        return;
    }
    for (auto &[name, dictionary] : msDictionary) {
        dictionary.forget(command);
    }
}

} // namespace Qel
