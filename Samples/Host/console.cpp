#include "console.h"

#include "System/System/consoleVar.h"
#include "System/System/string.h"

#include <algorithm>

namespace console {

namespace {

constexpr std::string_view blanks = " \t\r\n";

constexpr char const *help = "name          shows a variable\n"
                             "name=value    sets it\n"
                             "list [text]   shows all variables, or those with the text in their names\n"
                             "help          shows this";

std::string quoted(std::string_view text)
{
    return std::string(1, '\'').append(text).append(1, '\'');
}

std::string_view trimmed(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool meansOn(Qel::String const &value)
{
    return value.match("true", true) || value.match("on", true) || value.match("yes", true);
}

std::string lineOf(Qel::String const &name)
{
    Qel::String value;
    Qel::ConsoleVar::Instance().getConfigurable(name, value, nullptr);
    return std::string(name) + " = " + value.c_str();
}

std::string unknown(Qel::String const &name)
{
    std::string const text = "no variable " + quoted(name);
    Qel::String nearest;
    float likeness = 0.6f; // less alike is no help
    for (Qel::String const &candidate : Qel::ConsoleVar::Instance().getNames()) {
        if (float const like = Qel::String::match(name, candidate); like > likeness) {
            likeness = like;
            nearest = candidate;
        }
    }
    return nearest.empty() ? text : text + "; did you mean " + quoted(nearest) + "?";
}

bool contains(Qel::String const &name, Qel::String const &lowerPattern)
{
    Qel::String lower = name;
    return std::string_view(lower.toLowerCase()).find(std::string_view(lowerPattern)) !=
           std::string_view::npos;
}

std::string joined(std::vector<std::string> const &lines)
{
    std::string text;
    for (std::string const &line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

} // namespace

bool set(std::string_view assignment, std::string &error)
{
    std::size_t const sign = assignment.find('=');
    std::string_view const name = trimmed(assignment.substr(0, sign));
    if (sign == std::string_view::npos || name.empty()) {
        error = quoted(assignment) + " is not name=value";
        return false;
    }
    Qel::ConsoleVar &table = Qel::ConsoleVar::Instance();
    Qel::String const known(name);
    Qel::String const value(trimmed(assignment.substr(sign + 1)));
    if (!table.setConfigurable(known, value)) {
        error = unknown(known);
        return false;
    }
    // The table reads numbers alone, and so takes the word for 0.
    Qel::String now;
    if (meansOn(value) && table.getConfigurable(known, now, nullptr) && now == "0") {
        table.setConfigurable(known, "1");
    }
    return true;
}

std::vector<std::string> list(std::string_view pattern)
{
    Qel::String lower(pattern);
    lower.toLowerCase();
    std::vector<std::string> lines;
    for (Qel::String const &name : Qel::ConsoleVar::Instance().getNames()) {
        if (contains(name, lower)) {
            lines.push_back(lineOf(name));
        }
    }
    return lines;
}

std::vector<std::string> complete(std::string_view prefix)
{
    std::vector<std::string> names;
    for (Qel::String const &name : Qel::ConsoleVar::Instance().getNames()) {
        if (name.starts_with(prefix)) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string extend(std::string_view prefix)
{
    std::vector<std::string> const names = complete(prefix);
    if (names.empty()) {
        return std::string(prefix);
    }
    // They are sorted: what the first and the last have in common, all have.
    std::string const &first = names.front();
    auto const end =
        std::mismatch(first.begin(), first.end(), names.back().begin(), names.back().end()).first;
    return std::string(first.begin(), end);
}

std::string answer(std::string_view line)
{
    line = trimmed(line);
    std::size_t const wordEnd = std::min(line.find_first_of(" \t="), line.size());
    Qel::String const word(line.substr(0, wordEnd));
    std::string_view const rest = trimmed(line.substr(wordEnd));
    if (word.empty() && rest.empty()) {
        return {};
    }
    bool const isVariable = Qel::ConsoleVar::Instance().isRegistered(word);
    if (!isVariable && word == "help" && rest.empty()) {
        return help;
    }
    if (!isVariable && word == "list" && !rest.starts_with('=')) {
        std::vector<std::string> const lines = list(rest);
        if (lines.empty()) {
            return rest.empty() ? "no variables" : "no variable with " + quoted(rest);
        }
        return joined(lines);
    }
    if (!rest.empty()) {
        std::string error;
        std::string const assignment =
            std::string(word) + (rest.starts_with('=') ? "" : "=") + std::string(rest);
        if (!set(assignment, error)) {
            return error;
        }
    }
    return isVariable ? lineOf(word) : unknown(word);
}

} // namespace console
