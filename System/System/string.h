#pragma once

#include "System/System/export.h"
#include "System/System/memtrackAllocator.h"

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

class WString;

/// The standard narrow string that String adds to.
using StringBase =
    std::basic_string<char, std::char_traits<char>, memtrack_allocator<char, stringMemoryContext>>;

/// What can be read as narrow text: String, StringBase, `std::string`, `std::string_view`, `char const *`. A
/// null pointer counts as empty.
template <typename T>
concept NarrowText = std::is_convertible_v<T const &, std::string_view>;

namespace detail {

template <NarrowText T>
constexpr std::string_view narrowView(T const &text)
{
    if constexpr (std::is_pointer_v<T>) {
        return text == nullptr ? std::string_view() : std::string_view(text);
    } else {
        return text;
    }
}

// Numbers are not appended as characters; that is nearly always a slip.
template <typename T>
concept NumberNotChar = std::is_arithmetic_v<T> && !std::is_same_v<T, char>;

} // namespace detail

/// The library's narrow text: a standard string whose blocks come from PoolHeap, with a few more operations.
///
/// Bytes are UTF-8 where they are more than ASCII; lower-casing, comparing and matching work byte by byte. A
/// String converts to `char const *`, so that it can be handed to any function of the C library; it compares
/// with and takes all that is NarrowText. Up to 15 characters live in the object itself.
///
/// @code
/// String name = "Data\\" + file;
/// if (name.match("*.txt", true)) {
///     name.toLowerCase();
/// }
/// String line = String("frames: ") + String(42);
/// @endcode
class QEL_API String : public StringBase {
public:
    String() noexcept = default;
    String(String const &) = default;
    String(String &&) noexcept = default;
    ~String() = default;

    String(StringBase const &text) : StringBase(text) {}
    String(StringBase &&text) noexcept : StringBase(std::move(text)) {}
    String(std::string const &text) : StringBase(text.data(), text.size()) {}
    String(std::string_view text) : StringBase(text.data(), text.size()) {}
    String(char const *text) : String(detail::narrowView(text)) {}           ///< null gives the empty text
    String(char const *text, size_type length) : StringBase(text, length) {} ///< exactly @p length bytes
    String(size_type count, char character) : StringBase(count, character) {}
    String(String const &text, size_type pos, size_type count) : StringBase(text, pos, count) {}

    template <std::input_iterator Iterator>
    String(Iterator first, Iterator last) : StringBase(first, last)
    {
    }

    /// "1" or "0".
    template <std::same_as<bool> Bool>
    explicit String(Bool value) : StringBase(1, value ? '1' : '0')
    {
    }

    /// The one character.
    template <typename Character>
    requires std::same_as<Character, char> || std::same_as<Character, unsigned char>
    explicit String(Character value) : StringBase(1, static_cast<char>(value)) {}

    explicit String(int value);          ///< decimal
    explicit String(unsigned int value); ///< decimal
    explicit String(float value);        ///< six significant digits, as a text stream writes it

    String &operator=(String const &) = default;
    String &operator=(String &&) noexcept = default;

    template <NarrowText Text>
    requires(!std::same_as<Text, String>) String &operator=(Text const &text)
    {
        std::string_view const view = detail::narrowView(text);
        assign(view.data(), view.size());
        return *this;
    }

    template <std::same_as<StringBase> Base>
    String &operator=(Base &&text) noexcept
    {
        StringBase::operator=(std::forward<Base>(text));
        return *this;
    }

    template <std::same_as<char> Character>
    String &operator=(Character character)
    {
        assign(1, character);
        return *this;
    }

    template <detail::NumberNotChar Number>
    String &operator=(Number) = delete;

    /// The terminated text, valid until the string changes.
    operator char const *() const noexcept { return c_str(); }

    // For every integer type, else the conversion to a pointer would make `text[0]` ambiguous.
    template <std::integral Index>
    char &operator[](Index index)
    {
        return StringBase::operator[](static_cast<size_type>(index));
    }
    template <std::integral Index>
    char const &operator[](Index index) const
    {
        return StringBase::operator[](static_cast<size_type>(index));
    }

    template <NarrowText Text>
    String &operator+=(Text const &text)
    {
        std::string_view const view = detail::narrowView(text);
        append(view.data(), view.size());
        return *this;
    }

    template <std::same_as<char> Character>
    String &operator+=(Character character)
    {
        push_back(character);
        return *this;
    }

    template <detail::NumberNotChar Number>
    String &operator+=(Number) = delete;

    // The standard ones cannot tell the two conversions apart.
    template <NarrowText Text>
    bool starts_with(Text const &text) const noexcept
    {
        return StringBase::starts_with(detail::narrowView(text));
    }
    template <NarrowText Text>
    bool ends_with(Text const &text) const noexcept
    {
        return StringBase::ends_with(detail::narrowView(text));
    }
    bool starts_with(char character) const noexcept { return StringBase::starts_with(character); }
    bool ends_with(char character) const noexcept { return StringBase::ends_with(character); }

    /// @throws std::out_of_range if @p pos is beyond the end
    String substr(size_type pos = 0, size_type count = npos) const { return String(*this, pos, count); }

    /// Takes blanks (space, tab and carriage return; not newline) off the ends. The first character is looked
    /// at from the left only: a text of blanks trimmed on the right alone keeps one.
    /// @return the number of characters taken off
    int trim(bool left = true, bool right = true);

    /// Does the whole text match a pattern of `*` and `?`? See StringTools::wcMatch(); "abc*" does not match
    /// "abc".
    /// @param ignoreCase  compare through MAP_LOWER; the flag of WString::match() runs the other way
    bool match(String const &pattern, bool ignoreCase) const;
    bool match(char const *pattern, bool ignoreCase) const;

    /// How alike two names are: 1 for equal ones, 0.9 if they differ in case alone, 0 if nothing agrees or
    /// @p a is empty. Texts are walked side by side; after a difference the walk goes on at the nearest
    /// characters that agree.
    static float match(String const &a, String const &b);

    // With a literal as second argument the conversion of pointers to bool would choose the pattern match.
    template <NarrowText A, NarrowText B>
    static float match(A const &a, B const &b)
    {
        return match(String(a), String(b));
    }

    /// Splits the text at every run of @p delimiters into @p out, which is cleared first. Runs make no empty
    /// pieces; an empty text gives one empty piece.
    /// @param maxSplits  0 for no limit; else the piece after that many splits is the rest as it stands, so
    ///                   that 1 gives a key and the rest
    /// @return the number of pieces
    unsigned int split(std::vector<String> &out, String const &delimiters = "\t\n ",
                       unsigned int maxSplits = 0) const;

    /// Replaces the content by formatted text of any length. Arguments may point into this text. A text that
    /// cannot be formatted leaves the content as it was.
    String &sprintf(char const *format, ...) QEL_PRINTF(2, 3);

    String &toLowerCase(); ///< in place, through MAP_LOWER
    String &toUpperCase(); ///< in place, ASCII only: what MAP_LOWER does to umlauts is not undone

    /// Becomes the UTF-8 form of @p text; an empty @p text leaves this one as it was.
    String &toString(WString const &text);

    /// Replaces every @p what by @p with, searching from the start again after each replacement, so that
    /// matches that a replacement makes are found too. Nothing happens for an empty @p what. If @p with
    /// contains
    /// @p what, each match of the text as it was is replaced once.
    void replaceAll(String const &what, String const &with);

    /// Replaces each "%" with @p index in decimal after it by @p value. The search goes on at the length of
    /// the key after the match, so the rest of a longer value is searched too. If that would never end, it
    /// stops at the end of the value that stands in the way.
    void replaceWildcard(String const &value, int index);

    /// Replaces "%1" by the first value, "%2" by the second and so on, from the last to the first, so that
    /// "%10" is safe from "%1".
    void replaceWildcard(std::vector<String> const &values);
};

static_assert(sizeof(String) == sizeof(std::string), "String adds no field");

template <NarrowText Text>
String operator+(String const &left, Text const &right)
{
    std::string_view const view = detail::narrowView(right);
    String result;
    result.reserve(left.size() + view.size());
    result.append(left).append(view.data(), view.size());
    return result;
}

template <NarrowText Text>
String operator+(String &&left, Text const &right)
{
    left += right;
    return std::move(left);
}

template <NarrowText Text>
requires(!std::same_as<Text, String>) String operator+(Text const &left, String const &right)
{
    std::string_view const view = detail::narrowView(left);
    String result;
    result.reserve(view.size() + right.size());
    result.append(view.data(), view.size()).append(right);
    return result;
}

template <std::same_as<char> Character>
String operator+(String left, Character right)
{
    left.push_back(right);
    return left;
}

template <std::same_as<char> Character>
String operator+(Character left, String const &right)
{
    return std::string_view(&left, 1) + right;
}

// Else the conversion to a pointer would take `text + 1` for pointer arithmetic.
template <detail::NumberNotChar Number>
String operator+(String const &, Number) = delete;
template <detail::NumberNotChar Number>
String operator+(Number, String const &) = delete;

/// Comparison with standard texts over another allocator; the standard operators do the rest.
template <typename Text>
requires std::same_as<Text, std::string> || std::same_as<Text, std::string_view>
bool operator==(String const &left, Text const &right) noexcept
{
    return std::string_view(left.data(), left.size()) == std::string_view(right);
}

template <typename Text>
requires std::same_as<Text, std::string> || std::same_as<Text, std::string_view> std::strong_ordering
operator<=>(String const &left, Text const &right) noexcept
{
    return std::string_view(left.data(), left.size()) <=> std::string_view(right);
}

} // namespace Qel

/// @cond SPECIALISATION_IN_STD
/// The hash of the characters, equal to that of a `std::string_view` of them.
template <>
struct std::hash<Qel::String> {
    std::size_t operator()(Qel::String const &text) const noexcept
    {
        return std::hash<std::string_view>()(std::string_view(text.data(), text.size()));
    }
};
/// @endcond
