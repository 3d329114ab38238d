#pragma once

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace Qel {

/// Room for one formatted log text. Not part of the public interface.
class FormatBuffer {
public:
    /// Formats as vprintf does, cut at 4095 bytes. The view lives as long as the buffer.
    std::string_view format(char const *format, std::va_list arguments) __attribute__((format(printf, 2, 0)))
    {
        int const length = std::vsnprintf(m_text.data(), m_text.size(), format, arguments);
        if (length < 0) {
            return {};
        }
        auto const whole = static_cast<std::size_t>(length);
        return {m_text.data(), whole < m_text.size() ? whole : m_text.size() - 1};
    }

private:
    std::array<char, 4096> m_text;
};

} // namespace Qel
