#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A console over all console variables of the process, without a screen: what was typed goes in, what is to
/// be shown comes out. The host, a terminal and an in-game overlay use it alike.
///
/// @code
/// std::string error;
/// if (!console::set("world.gravity=3.7", error)) {
///     std::fprintf(stderr, "%s\n", error.c_str());
/// }
/// for (std::string const &line : console::list()) {
///     std::puts(line.c_str());
/// }
/// @endcode
namespace console {

/// Sets a variable. Blanks around name and value do not count.
/// @param assignment  "name=value"; what stands after the first "=" is the value. "true", "on" and "yes" set
/// a
///                    number or a switch to 1.
/// @return false if it is no assignment or there is no such variable; @p error then says so in one line
bool set(std::string_view assignment, std::string &error);

/// The variables as lines "name = value", in order of their names.
/// @param pattern  those whose names contain this, in any case; empty for all
std::vector<std::string> list(std::string_view pattern = {});

/// The names that start with @p prefix, in order.
std::vector<std::string> complete(std::string_view prefix);

/// What can be written after @p prefix without a choice: the longest start that all completions have in
/// common.
/// @return @p prefix itself if there is nothing to add
std::string extend(std::string_view prefix);

/// Answers one line as typed: "name" shows a variable, "name=value" and "name value" set one and show what it
/// is now, "list [text]" lists, "help" explains. An empty line has no answer.
/// @return lines without the last line's end
std::string answer(std::string_view line);

} // namespace console
