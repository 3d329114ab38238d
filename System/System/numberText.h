#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <string_view>

namespace Qel::detail {

/// The text of a number as a text stream of the "C" locale writes it by default.
class NumberText {
public:
    explicit NumberText(std::integral auto value)
        : m_length(
              static_cast<std::size_t>(std::to_chars(m_text, m_text + sizeof m_text, value).ptr - m_text))
    {
    }

    explicit NumberText(float value); ///< six significant digits

    char const *begin() const { return m_text; }
    char const *end() const { return m_text + m_length; }
    std::string_view view() const { return {m_text, m_length}; }

private:
    char m_text[24];
    std::size_t m_length;
};

} // namespace Qel::detail
