#include "System/System/stringTools.h"

#include "System/math/crc32Table.h"

#include <array>
#include <cstring>
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
bool wildcardMatch(Character const *pattern, Character const *text, unsigned char const *map)
{
    Character const *star = nullptr;
    Character const *tried = nullptr;
    for (;;) {
        if (*pattern == 0 && *text == 0) {
            return true;
        }
        if (*text == 0) {
            return false;
        }
        if (*pattern != 0 && (*pattern == '?' || mapped(*pattern, map) == mapped(*text, map))) {
            ++pattern;
            ++text;
        } else if (*pattern == '*') {
            if (pattern[1] == 0) {
                return true;
            }
            star = ++pattern;
            tried = text;
        } else if (star != nullptr) {
            pattern = star;
            text = ++tried;
        } else {
            return false;
        }
    }
}

template <typename Character>
void remapText(Character *dest, Character const *src, unsigned char const *map)
{
    if (src == nullptr) {
        return;
    }
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
    return wildcardMatch(orEmpty(pattern), orEmpty(text), mapOr(map));
}

bool StringTools::wcMatch(wchar_t const *pattern, wchar_t const *text, unsigned char const *map)
{
    return wildcardMatch(pattern != nullptr ? pattern : L"", text != nullptr ? text : L"", mapOr(map));
}

void StringTools::remap(char *dest, char const *src, unsigned char const *map)
{
    remapText(dest, src, mapOr(map));
}

void StringTools::remap(wchar_t *dest, wchar_t const *src, unsigned char const *map)
{
    remapText(dest, src, mapOr(map));
}

void StringTools::toLower(char *text)
{
    remapText(text, text, lowerTable.data());
}

void StringTools::toLower(wchar_t *text)
{
    remapText(text, text, lowerTable.data());
}

std::uint32_t StringTools::calcHash(char const *text)
{
    return calcHash(text, identityTable.data());
}

std::uint32_t StringTools::calcHash(char const *text, unsigned char const *map)
{
    map = mapOr(map);
    std::uint32_t hash = 0xFFFFFFFF;
    for (text = orEmpty(text); *text != 0; ++text) {
        hash = hash >> 8 ^ crc32Table[(hash & 255) ^ map[static_cast<unsigned char>(*text)]];
    }
    return hash;
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
