#include "consoleErrorDialog.h"

#include <cstdio>

void ConsoleErrorDialog::display(Qel::String text, Qel::String details)
{
    for (Qel::String const &part : {text, details}) {
        if (!part.empty()) {
            std::fwrite(part.data(), 1, part.size(), stderr);
            if (part.back() != '\n') {
                std::fputc('\n', stderr);
            }
        }
    }
    std::fflush(stderr);
}
