#pragma once

#include "System/Patterns/command.h"

#include <vector>

namespace Qel {

/// A list of commands that is itself a command.
///
/// A sub-command may change the list while it runs: the walk goes on by position, up to what is then the
/// end. An index outside the list does nothing.
///
/// @par Ownership  The commands are not owned: they must live as long as they are in the list.
/// @par Threads    Belongs to one thread.
class QEL_API cMacroCommand : public cCommand {
public:
    cMacroCommand() = default;
    explicit cMacroCommand(int capacity); ///< with room for @p capacity commands
    ~cMacroCommand() override;

    void execute() override; ///< runs all sub-commands in order

    /// Appends a command, which may be in the list already.
    /// @param command  not tested: not null when it is executed
    virtual void add(cCommand *command);

    /// Takes the command at @p index out, with all its other places in the list.
    virtual void remove(int index);

    /// Takes a command out of all its places; the others keep their order. Null does nothing.
    virtual void remove(cCommand *command);

    virtual void removeAll(); ///< empties the list; deletes nothing

    virtual void executeFrom(int index); ///< runs the sub-commands from @p index to the end

    /// Runs one sub-command.
    /// @param remove  if not 0, the command is first taken out as remove(int) does it
    virtual void executeSingle(int index, int remove);

    virtual int numSubCommands() const; ///< places in the list

private:
    bool isInside(int index) const;

    std::vector<cCommand *> m_commands;
};

} // namespace Qel
