#pragma once

#include "screen.h"

#include <deque>
#include <string>

/// The console: a line to type into, which stands below every screen, and what was answered.
class ConsoleScreen final : public Screen {
public:
    char const *name() const override { return "console"; }
    char const *title() const override { return "Console"; }
    void warmUp() override;
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

    void type(char32_t character);
    void erase();    ///< the last character
    void complete(); ///< the name that is being typed, as far as there is no choice
    void enter();

    bool isTyping() const { return !m_line.empty(); }
    std::string const &line() const { return m_line; }
    std::string lastAnswer() const { return m_lines.empty() ? "" : m_lines.back(); }

private:
    std::string m_line;              // UTF-8
    std::deque<std::string> m_lines; // the newest last
};
