#include "System/System/wString.h"

#include "Support/OS/text.h"
#include "System/System/numberText.h"
#include "System/System/stringAlgorithms.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cwchar>
#include <locale>

namespace Qel {

namespace {

std::ctype<wchar_t> const &classicCtype()
{
    return std::use_facet<std::ctype<wchar_t>>(std::locale::classic());
}

// The library cannot measure a wide text that does not fit, so the room doubles until it does.
bool formatLong(WString &text, wchar_t const *format, std::va_list arguments)
{
    for (std::size_t room = 8192; room <= INT_MAX; room *= 2) {
        text.resize(room);
        std::va_list again;
        va_copy(again, arguments);
        errno = 0;
        int const length = std::vswprintf(text.data(), room, format, again);
        int const error = errno;
        va_end(again);
        if (length >= 0) {
            text.resize(static_cast<std::size_t>(length));
            return true;
        }
        if (error != 0 && error != E2BIG) {
            return false;
        }
    }
    return false;
}

} // namespace

WString::WString(int value)
{
    detail::NumberText const text(value);
    assign(text.begin(), text.end());
}

WString::WString(unsigned int value)
{
    detail::NumberText const text(value);
    assign(text.begin(), text.end());
}

WString::WString(float value)
{
    detail::NumberText const text(value);
    assign(text.begin(), text.end());
}

int WString::trim(bool left, bool right)
{
    return detail::trim(*this, left, right);
}

bool WString::match(WString const &pattern, bool caseSensitive) const
{
    WString text = *this;
    WString wanted = pattern;
    if (!caseSensitive) {
        text.toLowerCase();
        wanted.toLowerCase();
    }
    for (std::size_t i = wanted.find(L'?'); i < text.size(); i = wanted.find(L'?', i + 1)) {
        wanted[i] = text[i];
    }

    std::size_t inText = 0;
    std::size_t inPattern = 0;
    std::size_t star = npos;
    while (inText < text.size() && inPattern < wanted.size()) {
        if (wanted[inPattern] == L'*') {
            star = inPattern;
            if (inPattern + 1 == wanted.size()) {
                return true;
            }
            inText = text.find(wanted[inPattern + 1], inText);
            if (inText == npos) {
                return false;
            }
            ++inPattern;
        } else if (wanted[inPattern] == text[inText]) {
            ++inPattern;
            ++inText;
        } else if (star != npos) {
            inPattern = star;
            star = npos;
        } else {
            return false;
        }
    }
    return inText == text.size() && inPattern == wanted.size();
}

float WString::match(String const &a, String const &b)
{
    return String::match(a, b);
}

unsigned int WString::split(std::vector<WString> &out, WString const &delimiters,
                            unsigned int maxSplits) const
{
    return detail::split(*this, out, delimiters, maxSplits);
}

WString &WString::sprintf(wchar_t const *format, ...)
{
    wchar_t buffer[4096];
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    int const length = std::vswprintf(buffer, std::size(buffer), format, arguments);
    va_end(arguments);
    if (length >= 0) {
        assign(buffer, static_cast<std::size_t>(length));
    } else {
        // An argument may point into this text, so the new one is made beside it.
        WString formatted;
        if (formatLong(formatted, format, again)) {
            *this = std::move(formatted);
        }
    }
    va_end(again);
    return *this;
}

WString &WString::toLowerCase()
{
    classicCtype().tolower(data(), data() + size());
    return *this;
}

WString &WString::toUpperCase()
{
    classicCtype().toupper(data(), data() + size());
    return *this;
}

WString &WString::toString(String const &text)
{
    *this = os::toWide(text);
    return *this;
}

void WString::replaceAll(WString const &what, WString const &with)
{
    detail::replaceAll(*this, what, with);
}

void WString::replaceWildcard(WString const &value, int index)
{
    detail::replaceWildcard(*this, value, index);
}

void WString::replaceWildcard(std::vector<WString> const &values)
{
    for (std::size_t n = 0; n < values.size(); ++n) {
        detail::replaceWildcard(*this, values[n], static_cast<int>(n + 1));
    }
}

} // namespace Qel
