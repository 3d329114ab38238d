#pragma once

#include "System/System/frameListener.h"

/// A console on the terminal while frames run: a line editor with history and completion by name over the
/// process's console variables. One at a time.
class TerminalConsole final : public Qel::FrameListener {
public:
    TerminalConsole();
    ~TerminalConsole();

    TerminalConsole(TerminalConsole const &) = delete;
    TerminalConsole &operator=(TerminalConsole const &) = delete;

    static bool available(); ///< is there a terminal to type on?

    /// Takes in what has been typed. @return false once the user has left: the loop ends
    bool frameEnded(Qel::FrameEvent const &event) override;
};
