// Texts, their map tables, the wildcard match and number formatting, each beside what a program would use
// without this library.
#include "System/System/string.h"
#include "System/System/stringConverter.h"
#include "System/System/stringTools.h"

#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <strings.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace Qel;

namespace {

std::vector<std::string> fileNames()
{
    std::mt19937 random(1);
    std::vector<std::string> names;
    for (int i = 0; i < 256; ++i) {
        std::string name = "Data\\Textures\\";
        for (std::size_t length = 4 + random() % 20; length > 0; --length) {
            name += static_cast<char>((random() % 4 == 0 ? 'A' : 'a') + random() % 26);
        }
        names.push_back(name + (i % 2 == 0 ? ".TGA" : ".dds"));
    }
    return names;
}

template <typename Text>
void makeAndDestroy(benchmark::State &state)
{
    std::string const source(static_cast<std::size_t>(state.range(0)), 'x');
    char const *text = source.c_str();
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        Text made(text);
        benchmark::DoNotOptimize(made.data());
    }
}
BENCHMARK(makeAndDestroy<String>)->Arg(8)->Arg(24)->Arg(64);
BENCHMARK(makeAndDestroy<std::string>)->Arg(8)->Arg(24)->Arg(64);

// Runs an operation over all names; reported per name.
template <typename Operation>
void overNames(benchmark::State &state, Operation operation)
{
    std::vector<std::string> const names = fileNames();
    std::int64_t count = 0;
    for (auto _ : state) {
        for (std::string const &name : names) {
            benchmark::DoNotOptimize(operation(name.c_str()));
        }
        count += static_cast<std::int64_t>(names.size());
    }
    state.SetItemsProcessed(count);
}

void remapPath(benchmark::State &state)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    char dest[64];
    overNames(state, [&](char const *name) {
        StringTools::remap(dest, name, map);
        return dest[0];
    });
}
BENCHMARK(remapPath);

void remapPathByHand(benchmark::State &state)
{
    char dest[64];
    overNames(state, [&](char const *name) {
        char *to = dest;
        for (; *name != 0; ++name) {
            char const c = *name;
            *to++ = c == '\\' ? '/' : c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        }
        *to = 0;
        return dest[0];
    });
}
BENCHMARK(remapPathByHand);

// Each name against its own lower-cased form: all characters are compared.
template <typename Compare>
void compareNames(benchmark::State &state, Compare compare)
{
    std::vector<std::string> const names = fileNames();
    std::vector<std::string> lowered = names;
    for (std::string &name : lowered) {
        StringTools::toLower(name.data());
    }
    std::int64_t count = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            benchmark::DoNotOptimize(compare(names[i].c_str(), lowered[i].c_str()));
        }
        count += static_cast<std::int64_t>(names.size());
    }
    state.SetItemsProcessed(count);
}

void compareMapped(benchmark::State &state)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_LOWER);
    compareNames(state, [map](char const *a, char const *b) { return StringTools::compare(a, b, map); });
}
BENCHMARK(compareMapped);

void compareStrcasecmp(benchmark::State &state)
{
    compareNames(state, [](char const *a, char const *b) { return strcasecmp(a, b); });
}
BENCHMARK(compareStrcasecmp);

void hashLower(benchmark::State &state)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_LOWER);
    overNames(state, [map](char const *name) { return StringTools::calcHash(name, map); });
}
BENCHMARK(hashLower);

char const *const patterns[] = {"*.TGA", "Data*Tex*.dds", "*a*b*c*.tga", "Data?Textures?A*"};

void wildcard(benchmark::State &state)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_LOWER);
    char const *const pattern = patterns[state.range(0)];
    overNames(state, [=](char const *name) { return StringTools::wcMatch(pattern, name, map); });
}
BENCHMARK(wildcard)->DenseRange(0, 3);

void wildcardFnmatch(benchmark::State &state)
{
    char const *const pattern = patterns[state.range(0)];
    overNames(state, [=](char const *name) { return fnmatch(pattern, name, FNM_NOESCAPE | FNM_CASEFOLD); });
}
BENCHMARK(wildcardFnmatch)->DenseRange(0, 3);

void wildcardManyStars(benchmark::State &state)
{
    std::string const pattern = std::string(4096, '*') + "b";
    std::string const text(4096, 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringTools::wcMatch(pattern.c_str(), text.c_str(), nullptr));
    }
}
BENCHMARK(wildcardManyStars);

void wildcardWorstCase(benchmark::State &state)
{
    std::string const pattern = "*" + std::string(2048, 'a') + "b*a";
    std::string const text(4096, 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringTools::wcMatch(pattern.c_str(), text.c_str(), nullptr));
    }
}
BENCHMARK(wildcardWorstCase);

// Numbers as scripts and reports hold them: 0 to 100000 with up to five decimals; and any float at all.
std::vector<float> numbers(bool any)
{
    std::mt19937 random(2);
    std::vector<float> values;
    for (int i = 0; i < 256; ++i) {
        auto const figure = static_cast<float>(random() % 100000);
        values.push_back(any ? std::ldexp(figure, static_cast<int>(random() % 200) - 120)
                             : figure / std::pow(10.0f, static_cast<float>(random() % 6)));
    }
    return values;
}

template <typename Value, typename Operation>
void overNumbers(benchmark::State &state, std::vector<Value> const &values, Operation operation)
{
    std::int64_t count = 0;
    for (auto _ : state) {
        for (Value const value : values) {
            benchmark::DoNotOptimize(operation(value));
        }
        count += static_cast<std::int64_t>(values.size());
    }
    state.SetItemsProcessed(count);
}

void formatFloat(benchmark::State &state)
{
    overNumbers(state, numbers(state.range(0) != 0),
                [](float value) { return StringConverter::toString(value); });
}
BENCHMARK(formatFloat)->Arg(0)->Arg(1);

void formatFloatSnprintf(benchmark::State &state)
{
    overNumbers(state, numbers(state.range(0) != 0), [](float value) {
        std::array<char, 32> text;
        std::snprintf(text.data(), text.size(), "%g", static_cast<double>(value));
        return text;
    });
}
BENCHMARK(formatFloatSnprintf)->Arg(0)->Arg(1);

void formatFloatToChars(benchmark::State &state)
{
    overNumbers(state, numbers(state.range(0) != 0), [](float value) {
        std::array<char, 32> text;
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6);
        return text;
    });
}
BENCHMARK(formatFloatToChars)->Arg(0)->Arg(1);

std::vector<int> integers()
{
    std::mt19937 random(3);
    std::vector<int> values;
    for (int i = 0; i < 256; ++i) {
        values.push_back(static_cast<int>(random()) >> random() % 28);
    }
    return values;
}

void formatInt(benchmark::State &state)
{
    overNumbers(state, integers(), [](int value) { return StringConverter::toString(value); });
}
BENCHMARK(formatInt);

void formatIntSnprintf(benchmark::State &state)
{
    overNumbers(state, integers(), [](int value) {
        std::array<char, 16> text;
        std::snprintf(text.data(), text.size(), "%d", value);
        return text;
    });
}
BENCHMARK(formatIntSnprintf);

} // namespace
