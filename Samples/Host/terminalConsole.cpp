#include "terminalConsole.h"

#include "console.h"

#include <editline/readline.h>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

char const *const prompt = "qel> ";

// The line editor reads only now and then, and gives the terminal back in between: what is typed then must
// not be echoed by the system as well.
class QuietTerminal {
public:
    QuietTerminal() : m_known(tcgetattr(STDIN_FILENO, &m_before) == 0) { apply(); }
    ~QuietTerminal()
    {
        if (m_known) {
            tcsetattr(STDIN_FILENO, TCSANOW, &m_before);
        }
    }

    void apply() const
    {
        termios quiet = m_before;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
        if (m_known) {
            tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
        }
    }

    QuietTerminal(QuietTerminal const &) = delete;
    QuietTerminal &operator=(QuietTerminal const &) = delete;

private:
    termios m_before{};
    bool m_known;
};

std::optional<QuietTerminal> quietTerminal;
bool left = false;
std::vector<std::string> candidates;

// The line editor frees what it is given.
char *nextCandidate(char const *prefix, int state)
{
    if (state == 0) {
        candidates = console::complete(prefix);
    }
    auto const at = static_cast<std::size_t>(state);
    return at < candidates.size() ? strdup(candidates[at].c_str()) : nullptr;
}

void takeLine(char *typed)
{
    if (typed == nullptr || std::strcmp(typed, "quit") == 0) {
        left = true;
        rl_callback_handler_remove();
        std::free(typed);
        return;
    }
    if (*typed != '\0') {
        add_history(typed);
        std::puts(console::answer(typed).c_str());
    }
    std::free(typed);
}

} // namespace

TerminalConsole::TerminalConsole()
{
    left = false;
    rl_completion_entry_function = &nextCandidate;
    std::puts("Console: \"list\" shows the variables, tab completes a name, \"quit\" ends the run.");
    rl_callback_handler_install(prompt, &takeLine);
    quietTerminal.emplace(); // after the editor has looked at the terminal: without an echo it does not edit
}

TerminalConsole::~TerminalConsole()
{
    if (!left) {
        rl_callback_handler_remove();
    }
    std::putchar('\n');
    quietTerminal.reset();
}

bool TerminalConsole::available()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

bool TerminalConsole::frameEnded(Qel::FrameEvent const &)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!left && poll(&input, 1, 0) > 0) {
        rl_callback_read_char();
        quietTerminal->apply();
    }
    return !left;
}
