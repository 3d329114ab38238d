#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <functional>
#include <limits>
#include <string_view>
#include <vector>

// What String and WString do in the same way. Text is either of them.
namespace Qel::detail {

template <typename Text>
using View = std::basic_string_view<typename Text::value_type>;

template <typename Text>
View<Text> viewOf(Text const &text)
{
    return {text.data(), text.size()};
}

template <typename Text>
int trim(Text &text, bool left, bool right)
{
    auto const isBlank = [](auto c) { return c == ' ' || c == '\t' || c == '\r'; };
    std::size_t const length = text.size();
    std::size_t front = 0;
    std::size_t back = 0;
    if (left) {
        while (front < length && isBlank(text[front])) {
            ++front;
        }
    }
    if (right && front < length && length != 1) {
        while (back < length - 1 && isBlank(text[length - 1 - back])) {
            ++back;
        }
    }
    text.resize(length - back);
    text.erase(0, front);
    return static_cast<int>(front + back);
}

template <typename Text>
unsigned int split(Text const &text, std::vector<Text> &out, Text const &delimiters, unsigned int maxSplits)
{
    auto const inList = [&out](Text const &one) {
        return std::less_equal<>()(out.data(), &one) && std::less<>()(&one, out.data() + out.size());
    };
    if (inList(text) || inList(delimiters)) {
        std::vector<Text> pieces;
        split(text, pieces, delimiters, maxSplits);
        out.swap(pieces);
        return static_cast<unsigned int>(out.size());
    }

    out.clear();
    std::size_t start = 0;
    unsigned int count = 0;
    do {
        std::size_t const delimiter = text.find_first_of(delimiters, start);
        if (delimiter == start) {
            ++start;
        } else if (delimiter == Text::npos || (maxSplits != 0 && count == maxSplits)) {
            out.emplace_back(viewOf(text).substr(start));
            break;
        } else {
            out.emplace_back(viewOf(text).substr(start, delimiter - start));
            start = delimiter + 1;
        }
        start = text.find_first_not_of(delimiters, start);
        ++count;
    } while (start != Text::npos);
    return static_cast<unsigned int>(out.size());
}

/// Replaces @p what by @p with, from the first match on.
///
/// The text lies on both sides of a gap, what is searched after it, so that a replacement moves what is near
/// it and not the whole rest.
/// @param resume  where the search goes on, counted from the start of the match: behind it or before it
/// @param limit   stops once the text is longer
template <typename Text>
void replaceEach(Text &text, View<Text> what, View<Text> with, std::ptrdiff_t resume,
                 std::size_t limit = std::numeric_limits<std::size_t>::max())
{
    std::size_t match = viewOf(text).find(what);
    if (match == Text::npos) {
        return;
    }
    Text buffer;
    buffer.resize(text.size() + with.size());
    auto *data = buffer.data();
    std::size_t done = 0;
    std::size_t rest = with.size();
    std::copy(text.begin(), text.end(), data + rest);
    match += rest;

    while (match != Text::npos && done + (buffer.size() - rest) <= limit) {
        done = static_cast<std::size_t>(std::copy(data + rest, data + match, data + done) - data);
        rest = match + what.size();
        if (rest - done < with.size()) {
            std::size_t const more = buffer.size() + with.size();
            buffer.resize(buffer.size() + more);
            data = buffer.data();
            std::copy_backward(data + rest, data + buffer.size() - more, data + buffer.size());
            rest += more;
        }
        rest -= with.size();
        std::copy(with.begin(), with.end(), data + rest);

        if (resume < 0) {
            std::size_t const back = std::min(done, static_cast<std::size_t>(-resume));
            std::copy_backward(data + done - back, data + done, data + rest);
            done -= back;
            rest -= back;
        } else {
            std::size_t const ahead = std::min(buffer.size() - rest, static_cast<std::size_t>(resume));
            std::copy(data + rest, data + rest + ahead, data + done);
            done += ahead;
            rest += ahead;
        }
        match = viewOf(buffer).find(what, rest);
    }
    std::copy(data + rest, data + buffer.size(), data + done);
    buffer.resize(done + (buffer.size() - rest));
    text = std::move(buffer);
}

template <typename Text>
void replaceAll(Text &text, Text const &what, Text const &with)
{
    if (what.empty()) {
        return;
    }
    if (with.find(what) != Text::npos) {
        replaceEach(text, viewOf(what), viewOf(with), static_cast<std::ptrdiff_t>(with.size()));
        return;
    }
    // A new match can begin no earlier than one character short of a whole one before the replacement. Some
    // rules grow for ever all the same ("ab" by "bbaa"), hence the limit.
    constexpr std::size_t nested = 65536;
    std::size_t const limit = nested + (text.size() + 1) * (with.size() + 1);
    replaceEach(text, viewOf(what), viewOf(with), 1 - static_cast<std::ptrdiff_t>(what.size()), limit);
}

template <typename Text>
void replaceWildcard(Text &text, Text const &value, int index)
{
    constexpr std::ptrdiff_t maxDigits = 8;
    char digits[16];
    char *end = std::to_chars(digits, digits + sizeof digits, index).ptr;
    end = std::min(end, digits + maxDigits + (index < 0 ? 1 : 0));

    Text key;
    key.push_back('%');
    key.append(digits, end);
    // A value that holds the key where the search goes on would be replaced for ever.
    bool const endless = value.find(key, key.size()) != Text::npos;
    std::size_t const resume = endless ? value.size() : key.size();
    replaceEach(text, viewOf(key), viewOf(value), static_cast<std::ptrdiff_t>(resume));
}

} // namespace Qel::detail
