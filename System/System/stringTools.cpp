#include "System/System/stringTools.h"

#include "System/math/nameHash.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

namespace Qel {

namespace {

using MapTable = std::array<unsigned char, 256>;

constexpr MapTable makeTable(bool lower, bool path)
{
    MapTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        bool const upper = (i >= 'A' && i <= 'Z') || i == 0xC4 || i == 0xD6 || i == 0xDC;
        table[i] = static_cast<unsigned char>(lower && upper ? i + 0x20 : i);
    }
    if (path) {
        table['\\'] = '/';
    }
    return table;
}

alignas(64) constexpr MapTable identityTable = makeTable(false, false);
alignas(64) constexpr MapTable lowerTable = makeTable(true, false);
alignas(64) constexpr MapTable pathTable = makeTable(true, true);

unsigned char const *mapOr(unsigned char const *map)
{
    return map != nullptr ? map : identityTable.data();
}

template <typename Character>
auto mapped(Character c, unsigned char const *map)
{
    auto const code = static_cast<std::make_unsigned_t<Character>>(c);
    if constexpr (sizeof(Character) == 1) {
        return map[code];
    } else {
        return code < 256 ? map[code] : code;
    }
}

// A star that stands for any run is remembered, and only the last one: whatever an earlier star could try
// passes the later one at the same place in the text or after it, and was tried from there. That holds with
// stars that are met as literals too, since those take one character and the others none at the least. For
// the same reason the end of the text ends the search.
template <typename Character>
class WildcardMatch {
public:
    WildcardMatch(Character const *pattern, Character const *text, unsigned char const *map)
        : m_pattern(pattern), m_text(text), m_map(map)
    {
    }

    bool run()
    {
        Character const *star = nullptr;
        Character const *tried = nullptr;
        for (;;) {
            while (*m_pattern != 0 && *m_text != 0 && equal(*m_pattern, *m_text)) {
                ++m_pattern;
                ++m_text;
            }
            if (*m_text == 0) {
                return *m_pattern == 0;
            }
            if (*m_pattern == '*') {
                if (m_pattern[1] == 0) {
                    return true;
                }
                if (star == nullptr && !endMatches()) {
                    return false;
                }
                if (m_pattern == m_lastStar) {
                    return m_text <= m_end;
                }
                star = m_pattern + 1;
                tried = m_text;
            } else if (star != nullptr) {
                ++tried;
            } else {
                return false;
            }
            m_pattern = star;
            m_text = tried = *star == '?' || *star == '*' ? tried : find(*star, tried);
        }
    }

private:
    bool equal(Character inPattern, Character inText) const
    {
        return inPattern == '?' || mapped(inPattern, m_map) == mapped(inText, m_map);
    }

    Character const *find(Character wanted, Character const *text) const
    {
        auto const code = mapped(wanted, m_map);
        while (*text != 0 && mapped(*text, m_map) != code) {
            ++text;
        }
        return text;
    }

    // What follows the last star takes one character each: it fits at the end of the text or nowhere, which
    // is soon told.
    bool endMatches()
    {
        Character const *pattern = m_pattern;
        for (; *pattern != 0; ++pattern) {
            m_lastStar = *pattern == '*' ? pattern : m_lastStar;
        }
        auto needed = static_cast<std::size_t>(pattern - m_lastStar) - 1;
        std::size_t const there = std::char_traits<Character>::length(m_text);
        if (there < needed) {
            return false;
        }
        m_end = m_text + (there - needed);
        for (; needed > 0; --needed) {
            if (!equal(m_lastStar[needed], m_end[needed - 1])) {
                return false;
            }
        }
        return true;
    }

    Character const *m_pattern;
    Character const *m_text;
    unsigned char const *m_map;
    Character const *m_lastStar = nullptr; // of the pattern
    Character const *m_end = nullptr;      // in the text, where what follows the last star matches
};

// The own tables as arithmetic, which a whole block of characters goes through at once. Mapping twice changes
// nothing, so the last block may overlap the one before it, in place too.
struct LowerMap {
    template <typename Bytes>
    static Bytes of(Bytes c)
    {
        auto const upper = (c - 'A' < 26) | (c == 0xC4) | (c == 0xD6) | (c == 0xDC);
        return c + (reinterpret_cast<Bytes const &>(upper) & 0x20);
    }
};

struct PathMap {
    template <typename Bytes>
    static Bytes of(Bytes c)
    {
        auto const backslash = c == '\\';
        return LowerMap::of(c) - (reinterpret_cast<Bytes const &>(backslash) & ('\\' - '/'));
    }
};

template <typename Map, std::size_t size>
class Block {
public:
    explicit Block(char const *src)
    {
        std::memcpy(&m_bytes, src, size);
        m_bytes = Map::of(m_bytes);
    }

    void store(char *dest) const { std::memcpy(dest, &m_bytes, size); }

    bool operator==(Block const &other) const
    {
        Bytes const difference = m_bytes ^ other.m_bytes;
        std::uint64_t words[size / 8];
        std::memcpy(words, &difference, size);
        return (words[0] | words[size / 8 - 1]) == 0;
    }

private:
    using Bytes [[gnu::vector_size(size)]] = unsigned char;

    Bytes m_bytes;
};

template <typename Map, std::size_t size>
void remapBlocks(char *dest, char const *src, std::size_t length)
{
    std::size_t at = 0;
    for (; at + size <= length; at += size) {
        Block<Map, size>(src + at).store(dest + at);
    }
    if (at < length) {
        Block<Map, size>(src + (length - size)).store(dest + (length - size));
    }
}

template <typename Map>
void remapOwn(char *dest, char const *src, unsigned char const *map)
{
    std::size_t const length = std::strlen(src);
    if (length >= 16) {
        remapBlocks<Map, 16>(dest, src, length);
    } else if (length >= 8) {
        remapBlocks<Map, 8>(dest, src, length);
    } else {
        for (std::size_t i = 0; i < length; ++i) {
            dest[i] = static_cast<char>(mapped(src[i], map));
        }
    }
    dest[length] = 0;
}

// How many characters from the start, terminators among them, are equal for certain: whole blocks, or all up
// to the end of the shorter text.
template <typename Map, std::size_t size>
std::size_t equalBlocks(char const *a, char const *b, std::size_t length)
{
    auto const equal = [a, b](std::size_t at) {
        return Block<Map, size>(a + at) == Block<Map, size>(b + at);
    };
    std::size_t at = 0;
    while (at + size <= length) {
        if (!equal(at)) {
            return at;
        }
        at += size;
    }
    return at < length && equal(length - size) ? length : at;
}

template <typename Map>
std::size_t equalOwn(char const *a, char const *b)
{
    std::size_t const length = std::min(std::strlen(a), std::strlen(b)) + 1;
    if (length >= 16) {
        return equalBlocks<Map, 16>(a, b, length);
    }
    return length >= 8 ? equalBlocks<Map, 8>(a, b, length) : 0;
}

template <typename Character>
void remapText(Character *dest, Character const *src, unsigned char const *map)
{
    for (; *src != 0; ++src, ++dest) {
        *dest = static_cast<Character>(mapped(*src, map));
    }
    *dest = 0;
}

char const *orEmpty(char const *text)
{
    return text != nullptr ? text : "";
}

} // namespace

void StringTools::init()
{
}

void StringTools::deinit()
{
}

unsigned char const *StringTools::getMapTable(MapTableType type)
{
    switch (type) {
    case MAP_LOWER:
        return lowerTable.data();
    case MAP_PATH:
        return pathTable.data();
    default:
        return identityTable.data();
    }
}

bool StringTools::wcMatch(char const *pattern, char const *text, unsigned char const *map)
{
    return WildcardMatch(orEmpty(pattern), orEmpty(text), mapOr(map)).run();
}

bool StringTools::wcMatch(wchar_t const *pattern, wchar_t const *text, unsigned char const *map)
{
    return WildcardMatch(pattern != nullptr ? pattern : L"", text != nullptr ? text : L"", mapOr(map)).run();
}

void StringTools::remap(char *dest, char const *src, unsigned char const *map)
{
    if (src == nullptr) {
        return;
    }
    if (map == lowerTable.data()) {
        remapOwn<LowerMap>(dest, src, map);
    } else if (map == pathTable.data()) {
        remapOwn<PathMap>(dest, src, map);
    } else {
        remapText(dest, src, mapOr(map));
    }
}

void StringTools::remap(wchar_t *dest, wchar_t const *src, unsigned char const *map)
{
    if (src != nullptr) {
        remapText(dest, src, mapOr(map));
    }
}

void StringTools::toLower(char *text)
{
    remap(text, text, lowerTable.data());
}

void StringTools::toLower(wchar_t *text)
{
    remap(text, text, lowerTable.data());
}

std::uint32_t StringTools::calcHash(char const *text)
{
    return hashName(orEmpty(text)).hash;
}

std::uint32_t StringTools::calcHash(char const *text, unsigned char const *map)
{
    return hashName(orEmpty(text), mapOr(map)).hash;
}

int StringTools::compare(char const *a, char const *b)
{
    int const difference = std::strcmp(orEmpty(a), orEmpty(b));
    return (difference > 0) - (difference < 0);
}

int StringTools::compare(char const *a, char const *b, unsigned char const *map)
{
    a = orEmpty(a);
    b = orEmpty(b);
    map = mapOr(map);
    bool const own = map == lowerTable.data() || map == pathTable.data();
    if (own && mapped(*a, map) == mapped(*b, map)) {
        std::size_t const equal =
            map == lowerTable.data() ? equalOwn<LowerMap>(a, b) : equalOwn<PathMap>(a, b);
        if (equal > 0 && a[equal - 1] == 0) {
            return 0;
        }
        a += equal;
        b += equal;
    }
    for (;; ++a, ++b) {
        unsigned char const inA = map[static_cast<unsigned char>(*a)];
        unsigned char const inB = map[static_cast<unsigned char>(*b)];
        if (inA != inB) {
            return static_cast<std::int8_t>(inA - inB);
        }
        if (*a == 0 || *b == 0) {
            return 0;
        }
    }
}

unsigned int StringTools::strCpy(void *dest, unsigned int size, char const *src)
{
    auto *const out = static_cast<char *>(dest);
    src = orEmpty(src);
    for (unsigned int written = 0; written < size; ++written) {
        out[written] = src[written];
        if (src[written] == 0) {
            return written + 1;
        }
    }
    return 0;
}

} // namespace Qel
