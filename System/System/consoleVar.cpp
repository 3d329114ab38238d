#include "System/System/consoleVar.h"

#include "System/System/configurable.h"
#include "System/System/stringConverter.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <new>
#include <utility>

namespace Qel {

struct ConsoleVar::EmptyAtExit {
    ConsoleVar &console;

    ~EmptyAtExit()
    {
        console.m_table.clear();
        decltype(console.m_entries)().swap(console.m_entries);
    }
};

ConsoleVar *ConsoleVar::InstancePtr()
{
    // Emptied at exit and never destroyed: configurables that die later still ask to be forgotten.
    alignas(ConsoleVar) static std::byte storage[sizeof(ConsoleVar)];
    static ConsoleVar *const console = ::new (storage) ConsoleVar;
    static EmptyAtExit const emptyAtExit{*console};
    return console;
}

ConsoleVar &ConsoleVar::Instance()
{
    return *InstancePtr();
}

unsigned int ConsoleVar::size() const
{
    return static_cast<unsigned int>(m_table.size());
}

bool ConsoleVar::isRegistered(String const &name) const
{
    return m_table.contains(name);
}

bool ConsoleVar::setConfigurable(String const &name, String const &value)
{
    auto const at = m_table.find(name);
    if (at == m_table.end()) {
        return false;
    }
    at->second->from_string(value.c_str());
    return true;
}

bool ConsoleVar::getConfigurable(String const &name, String &value, unsigned int *flags) const
{
    auto const at = m_table.find(name);
    if (at == m_table.end()) {
        return false;
    }
    // Zeroed, since a host's own to_string() may leave it alone.
    std::array<char, Storable_configurable::textSize> text{};
    at->second->to_string(text.data());
    if (flags != nullptr) {
        *flags = at->second->getFlags();
    }
    value = text.data();
    return true;
}

String ConsoleVar::getConsoleVar(unsigned int index) const
{
    return index < m_table.size() ? std::next(m_table.begin(), index)->first : String();
}

StringVector ConsoleVar::getNames() const
{
    StringVector names;
    names.reserve(m_table.size());
    for (auto const &[name, configurable] : m_table) {
        names.push_back(name);
    }
    return names;
}

int ConsoleVar::getAsInt(String const &name) const
{
    String text;
    getConfigurable(name, text, nullptr);
    return StringConverter::parseInt(text);
}

bool ConsoleVar::getAsBool(String const &name) const
{
    String text;
    getConfigurable(name, text, nullptr);
    return StringConverter::parseBool(text);
}

float ConsoleVar::getAsFloat(String const &name) const
{
    String text;
    getConfigurable(name, text, nullptr);
    return StringConverter::parseReal(text);
}

void ConsoleVar::add(String name, Storable_configurable &configurable)
{
    auto const [at, isNew] = m_table.try_emplace(std::move(name), &configurable);
    if (!isNew) {
        return;
    }
    try {
        m_entries.emplace(&configurable, at);
    } catch (...) {
        m_table.erase(at);
        throw;
    }
}

void ConsoleVar::remove(Storable_configurable const &configurable)
{
    auto const entry = m_entries.find(&configurable);
    if (entry != m_entries.end()) {
        m_table.erase(entry->second);
        m_entries.erase(entry);
    }
}

} // namespace Qel
