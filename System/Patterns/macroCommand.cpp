#include "System/Patterns/macroCommand.h"

namespace Qel {

cMacroCommand::cMacroCommand(int capacity)
{
    if (capacity > 0) {
        m_commands.reserve(static_cast<std::size_t>(capacity));
    }
}

cMacroCommand::~cMacroCommand() = default;

void cMacroCommand::execute()
{
    executeFrom(0);
}

void cMacroCommand::add(cCommand *command)
{
    m_commands.push_back(command);
}

void cMacroCommand::remove(int index)
{
    if (isInside(index)) {
        remove(m_commands[static_cast<std::size_t>(index)]);
    }
}

void cMacroCommand::remove(cCommand *command)
{
    if (command != nullptr) {
        std::erase(m_commands, command);
    }
}

void cMacroCommand::removeAll()
{
    m_commands.clear();
}

void cMacroCommand::executeFrom(int index)
{
    // By position and with the end asked for anew: a sub-command may change the list.
    if (index >= 0) {
        for (auto i = static_cast<std::size_t>(index); i < m_commands.size(); ++i) {
            m_commands[i]->execute();
        }
    }
}

void cMacroCommand::executeSingle(int index, int remove)
{
    if (!isInside(index)) {
        return;
    }
    cCommand *const command = m_commands[static_cast<std::size_t>(index)];
    if (remove != 0) {
        this->remove(index);
    }
    command->execute();
}

int cMacroCommand::numSubCommands() const
{
    return static_cast<int>(m_commands.size());
}

bool cMacroCommand::isInside(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < m_commands.size();
}

} // namespace Qel
