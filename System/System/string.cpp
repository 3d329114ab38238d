#include "System/System/string.h"

#include "Support/OS/text.h"
#include "System/System/numberText.h"
#include "System/System/stringAlgorithms.h"
#include "System/System/stringTools.h"
#include "System/System/wString.h"

#include <cstdarg>
#include <cstdio>

namespace Qel {

namespace {

unsigned char lowered(char c)
{
    auto const byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

// Finds, for two positions, how far ahead in each the nearest characters stand that agree but for case.
class Resynchroniser {
public:
    // Looks no further than the sum of the steps it finds, so that all searches together are as long as the
    // texts. On a tie fewer steps in `a` win.
    bool find(std::string_view a, std::string_view b)
    {
        ++m_search;
        m_sum = std::string_view::npos;
        std::size_t const longest = std::max(a.size(), b.size());
        for (std::size_t ahead = 0; ahead < longest && ahead <= m_sum; ++ahead) {
            if (ahead < a.size()) {
                First &first = m_first[lowered(a[ahead])];
                if (first.searchA != m_search) {
                    first.searchA = m_search;
                    first.inA = ahead;
                    offer(first);
                }
            }
            if (ahead < b.size()) {
                First &first = m_first[lowered(b[ahead])];
                if (first.searchB != m_search) {
                    first.searchB = m_search;
                    first.inB = ahead;
                    offer(first);
                }
            }
        }
        return m_sum != std::string_view::npos;
    }

    std::size_t inA() const { return m_inA; }
    std::size_t inB() const { return m_sum - m_inA; }

private:
    struct First {
        std::size_t searchA = 0;
        std::size_t searchB = 0;
        std::size_t inA = 0;
        std::size_t inB = 0;
    };

    void offer(First const &first)
    {
        if (first.searchA != m_search || first.searchB != m_search) {
            return;
        }
        std::size_t const sum = first.inA + first.inB;
        if (sum < m_sum || (sum == m_sum && first.inA < m_inA)) {
            m_sum = sum;
            m_inA = first.inA;
        }
    }

    First m_first[256];
    std::size_t m_search = 0;
    std::size_t m_sum = 0;
    std::size_t m_inA = 0;
};

} // namespace

String::String(int value) : String(detail::NumberText(value).view())
{
}

String::String(unsigned int value) : String(detail::NumberText(value).view())
{
}

String::String(float value) : String(detail::NumberText(value).view())
{
}

int String::trim(bool left, bool right)
{
    return detail::trim(*this, left, right);
}

bool String::match(String const &pattern, bool ignoreCase) const
{
    return match(pattern.c_str(), ignoreCase);
}

bool String::match(char const *pattern, bool ignoreCase) const
{
    return StringTools::wcMatch(pattern, c_str(),
                                StringTools::getMapTable(ignoreCase ? MAP_LOWER : MAP_IDENTITY));
}

float String::match(String const &a, String const &b)
{
    if (a.empty()) {
        return 0.0f;
    }
    auto const maxLen = static_cast<float>(std::max(a.size(), b.size()));
    float score = 0.0f;
    Resynchroniser nearest;
    std::size_t inA = 0;
    std::size_t inB = 0;
    while (inA < a.size() && inB < b.size()) {
        if (a[inA] == b[inB]) {
            score += 1.0f / maxLen;
            ++inA;
            ++inB;
        } else if (lowered(a[inA]) == lowered(b[inB])) {
            score += 0.9f / maxLen;
            ++inA;
            ++inB;
        } else if (nearest.find(detail::viewOf(a).substr(inA), detail::viewOf(b).substr(inB))) {
            inA += nearest.inA();
            inB += nearest.inB();
        } else {
            break;
        }
    }
    if (score > 0.99f) {
        return 1.0f;
    }
    return score < 0.01f ? 0.0f : score;
}

unsigned int String::split(std::vector<String> &out, String const &delimiters, unsigned int maxSplits) const
{
    return detail::split(*this, out, delimiters, maxSplits);
}

String &String::sprintf(char const *format, ...)
{
    char buffer[4096];
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof buffer) {
        assign(buffer, static_cast<std::size_t>(length));
    } else if (length >= 0) {
        // An argument may point into this text, so the new one is made beside it.
        String formatted(static_cast<std::size_t>(length), '\0');
        std::vsnprintf(formatted.data(), formatted.size() + 1, format, again);
        *this = std::move(formatted);
    }
    va_end(again);
    return *this;
}

String &String::toLowerCase()
{
    unsigned char const *const map = StringTools::getMapTable(MAP_LOWER);
    for (char &c : *this) {
        c = static_cast<char>(map[static_cast<unsigned char>(c)]);
    }
    return *this;
}

String &String::toUpperCase()
{
    for (char &c : *this) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    }
    return *this;
}

String &String::toString(WString const &text)
{
    if (!text.empty()) {
        *this = os::toNarrow(text);
    }
    return *this;
}

void String::replaceAll(String const &what, String const &with)
{
    detail::replaceAll(*this, what, with);
}

void String::replaceWildcard(String const &value, int index)
{
    detail::replaceWildcard(*this, value, index);
}

void String::replaceWildcard(std::vector<String> const &values)
{
    for (std::size_t number = values.size(); number > 0; --number) {
        detail::replaceWildcard(*this, values[number - 1], static_cast<int>(number));
    }
}

} // namespace Qel
