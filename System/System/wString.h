#pragma once

#include "System/System/export.h"
#include "System/System/memtrackAllocator.h"
#include "System/System/string.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Qel {

/// The standard wide string that WString adds to.
using WStringBase =
    std::basic_string<wchar_t, std::char_traits<wchar_t>, memtrack_allocator<wchar_t, stringMemoryContext>>;

/// What can be read as wide text: WString, WStringBase, `std::wstring`, `std::wstring_view`, `wchar_t const
/// *`. A null pointer counts as empty.
template <typename T>
concept WideText = std::is_convertible_v<T const &, std::wstring_view>;

namespace detail {

template <WideText T>
constexpr std::wstring_view wideView(T const &text)
{
    if constexpr (std::is_pointer_v<T>) {
        return text == nullptr ? std::wstring_view() : std::wstring_view(text);
    } else {
        return text;
    }
}

template <typename T>
concept NumberNotWide = std::is_arithmetic_v<T> && !std::is_same_v<T, wchar_t>;

} // namespace detail

/// The library's wide text, one character for each code point: a standard string whose blocks come from
/// PoolHeap, with a few more operations. See String, its narrow fellow.
class QEL_API WString : public WStringBase {
public:
    WString() noexcept = default;
    WString(WString const &) = default;
    WString(WString &&) noexcept = default;
    ~WString() = default;

    WString(WStringBase const &text) : WStringBase(text) {}
    WString(WStringBase &&text) noexcept : WStringBase(std::move(text)) {}
    WString(std::wstring const &text) : WStringBase(text.data(), text.size()) {}
    WString(std::wstring_view text) : WStringBase(text.data(), text.size()) {}
    WString(wchar_t const *text) : WString(detail::wideView(text)) {} ///< null gives the empty text
    WString(wchar_t const *text, size_type length) : WStringBase(text, length) {} ///< exactly @p length
    WString(size_type count, wchar_t character) : WStringBase(count, character) {}
    WString(WString const &text, size_type pos, size_type count) : WStringBase(text, pos, count) {}

    template <std::input_iterator Iterator>
    WString(Iterator first, Iterator last) : WStringBase(first, last)
    {
    }

    /// "1" or "0".
    template <std::same_as<bool> Bool>
    explicit WString(Bool value) : WStringBase(1, value ? L'1' : L'0')
    {
    }

    /// The one character; a byte of narrow text is the character of that number.
    template <typename Character>
    requires std::same_as<Character, wchar_t> || std::same_as<Character, char> ||
        std::same_as<Character, unsigned char>
    explicit WString(Character value) : WStringBase(1, widened(value)) {}

    explicit WString(int value);          ///< decimal
    explicit WString(unsigned int value); ///< decimal
    explicit WString(float value);        ///< six significant digits, as a text stream writes it

    WString &operator=(WString const &) = default;
    WString &operator=(WString &&) noexcept = default;

    template <WideText Text>
    requires(!std::same_as<Text, WString>) WString &operator=(Text const &text)
    {
        std::wstring_view const view = detail::wideView(text);
        assign(view.data(), view.size());
        return *this;
    }

    template <std::same_as<WStringBase> Base>
    WString &operator=(Base &&text) noexcept
    {
        WStringBase::operator=(std::forward<Base>(text));
        return *this;
    }

    template <std::same_as<wchar_t> Character>
    WString &operator=(Character character)
    {
        assign(1, character);
        return *this;
    }

    template <detail::NumberNotWide Number>
    WString &operator=(Number) = delete;

    /// The terminated text, valid until the string changes.
    operator wchar_t const *() const noexcept { return c_str(); }

    // For every integer type, else the conversion to a pointer would make `text[0]` ambiguous.
    template <std::integral Index>
    wchar_t &operator[](Index index)
    {
        return WStringBase::operator[](static_cast<size_type>(index));
    }
    template <std::integral Index>
    wchar_t const &operator[](Index index) const
    {
        return WStringBase::operator[](static_cast<size_type>(index));
    }

    template <WideText Text>
    WString &operator+=(Text const &text)
    {
        std::wstring_view const view = detail::wideView(text);
        append(view.data(), view.size());
        return *this;
    }

    template <std::same_as<wchar_t> Character>
    WString &operator+=(Character character)
    {
        push_back(character);
        return *this;
    }

    template <detail::NumberNotWide Number>
    WString &operator+=(Number) = delete;

    // The standard ones cannot tell the two conversions apart.
    template <WideText Text>
    bool starts_with(Text const &text) const noexcept
    {
        return WStringBase::starts_with(detail::wideView(text));
    }
    template <WideText Text>
    bool ends_with(Text const &text) const noexcept
    {
        return WStringBase::ends_with(detail::wideView(text));
    }
    bool starts_with(wchar_t character) const noexcept { return WStringBase::starts_with(character); }
    bool ends_with(wchar_t character) const noexcept { return WStringBase::ends_with(character); }

    /// @throws std::out_of_range if @p pos is beyond the end
    WString substr(size_type pos = 0, size_type count = npos) const { return WString(*this, pos, count); }

    /// As String::trim().
    int trim(bool left = true, bool right = true);

    /// Does the text match a pattern of `*` and `?`? A match of its own kind, other than that of String:
    ///
    /// A `?` takes the character that the text has at the same index, whatever stars stand before it; beyond
    /// the text's end it stays a literal. A `*` moves on to the next place of the character that follows it,
    /// and after a difference once more, from there. At the pattern's end it matches the rest of a text that
    /// has at least one more character.
    /// @param caseSensitive  the flag of String::match() runs the other way
    bool match(WString const &pattern, bool caseSensitive) const;

    /// String::match(String const &, String const &): how alike two narrow texts are, from 0 to 1.
    static float match(String const &a, String const &b);

    /// As String::split().
    unsigned int split(std::vector<WString> &out, WString const &delimiters = L"\t\n ",
                       unsigned int maxSplits = 0) const;

    /// Replaces the content by formatted text of any length. The format is that of the C standard: "%ls"
    /// takes wide text, "%s" narrow text that must be ASCII. A text that cannot be formatted leaves the
    /// content as it was.
    WString &sprintf(wchar_t const *format, ...);

    WString &toLowerCase(); ///< in place, as the classic locale lowers
    WString &toUpperCase(); ///< in place, as the classic locale raises

    /// Becomes the wide form of the UTF-8 text @p text; an empty one empties this, other than
    /// String::toString().
    WString &toString(String const &text);

    /// As String::replaceAll().
    void replaceAll(WString const &what, WString const &with);

    /// As String::replaceWildcard().
    void replaceWildcard(WString const &value, int index);

    /// Replaces "%1" by the first value, "%2" by the second and so on, from the first to the last: "%1" also
    /// takes the start of "%10", so a text with ten values or more must not rely on this form.
    void replaceWildcard(std::vector<WString> const &values);

private:
    static constexpr wchar_t widened(wchar_t c) { return c; }
    static constexpr wchar_t widened(char c) { return static_cast<unsigned char>(c); }
    static constexpr wchar_t widened(unsigned char c) { return c; }
};

static_assert(sizeof(WString) == sizeof(std::wstring), "WString adds no field");

template <WideText Text>
WString operator+(WString const &left, Text const &right)
{
    std::wstring_view const view = detail::wideView(right);
    WString result;
    result.reserve(left.size() + view.size());
    result.append(left).append(view.data(), view.size());
    return result;
}

template <WideText Text>
WString operator+(WString &&left, Text const &right)
{
    left += right;
    return std::move(left);
}

template <WideText Text>
requires(!std::same_as<Text, WString>) WString operator+(Text const &left, WString const &right)
{
    std::wstring_view const view = detail::wideView(left);
    WString result;
    result.reserve(view.size() + right.size());
    result.append(view.data(), view.size()).append(right);
    return result;
}

template <std::same_as<wchar_t> Character>
WString operator+(WString left, Character right)
{
    left.push_back(right);
    return left;
}

template <std::same_as<wchar_t> Character>
WString operator+(Character left, WString const &right)
{
    return std::wstring_view(&left, 1) + right;
}

template <detail::NumberNotWide Number>
WString operator+(WString const &, Number) = delete;
template <detail::NumberNotWide Number>
WString operator+(Number, WString const &) = delete;

/// Comparison with standard texts over another allocator; the standard operators do the rest.
template <typename Text>
requires std::same_as<Text, std::wstring> || std::same_as<Text, std::wstring_view>
bool operator==(WString const &left, Text const &right) noexcept
{
    return std::wstring_view(left.data(), left.size()) == std::wstring_view(right);
}

template <typename Text>
requires std::same_as<Text, std::wstring> || std::same_as<Text, std::wstring_view> std::strong_ordering
operator<=>(WString const &left, Text const &right) noexcept
{
    return std::wstring_view(left.data(), left.size()) <=> std::wstring_view(right);
}

} // namespace Qel

/// @cond SPECIALISATION_IN_STD
/// The hash of the characters, equal to that of a `std::wstring_view` of them.
template <>
struct std::hash<Qel::WString> {
    std::size_t operator()(Qel::WString const &text) const noexcept
    {
        return std::hash<std::wstring_view>()(std::wstring_view(text.data(), text.size()));
    }
};
/// @endcond
