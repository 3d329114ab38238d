// Tables, listeners and parameters, against std::unordered_map over std::string.

#include "System/System/paramCommand.h"
#include "System/System/stringConverter.h"
#include "System/System/stringInterface.h"
#include "System/System/tableManager.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using namespace Qel;

// Names as game data has them, 10 to 20 characters.
std::vector<std::string> names(std::size_t count)
{
    static char const *const things[] = {"health", "armour", "position", "owner", "spawnDelay", "team"};
    std::vector<std::string> made;
    for (std::size_t i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "%s.%zu", things[i % 6], 1000 + i * 7);
        made.emplace_back(name);
    }
    std::shuffle(made.begin(), made.end(), std::mt19937(5));
    return made;
}

// Every name is asked for in an order that the processor cannot learn.
std::vector<std::uint32_t> askOrder(std::size_t count)
{
    std::mt19937 random(9);
    std::vector<std::uint32_t> order(1 << 14);
    for (std::uint32_t &index : order) {
        index = static_cast<std::uint32_t>(random() % count);
    }
    return order;
}

struct Table {
    cVarTable &table = cTableManager::Instance().Create("benchmark");
    ~Table() { table.Release(); }
};

template <typename Ask>
void askAll(benchmark::State &state, Ask const &ask)
{
    std::vector<std::uint32_t> const order = askOrder(static_cast<std::size_t>(state.range(0)));
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(ask(order[i++ & (order.size() - 1)]));
    }
}

void BM_VarTable_GetByText(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    Table t;
    for (auto const &key : keys) {
        t.table.Set(key.c_str(), 1);
    }
    askAll(state, [&](std::uint32_t index) { return t.table.Get(keys[index].c_str()).toI32(); });
}

// The peer is asked as the table is, with a plain text.
void BM_UnorderedMap_GetByText(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    std::unordered_map<std::string, int> map;
    for (auto const &key : keys) {
        map.emplace(key, 1);
    }
    askAll(state, [&](std::uint32_t index) { return map.find(keys[index].c_str())->second; });
}

// The peer is given its own key type, made beforehand.
void BM_UnorderedMap_GetByString(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    std::unordered_map<std::string, int> map;
    for (auto const &key : keys) {
        map.emplace(key, 1);
    }
    askAll(state, [&](std::uint32_t index) { return map.find(keys[index])->second; });
}

void BM_VarTable_GetByNumber(benchmark::State &state)
{
    Table t;
    for (int key = 0; key < state.range(0); ++key) {
        t.table.Set(key, 1);
    }
    askAll(state, [&](std::uint32_t index) { return t.table.Get(index).toI32(); });
}

void BM_UnorderedMap_GetByNumber(benchmark::State &state)
{
    std::unordered_map<std::string, int> map;
    std::vector<std::string> keys;
    for (int key = 0; key < state.range(0); ++key) {
        keys.push_back(std::to_string(key));
        map.emplace(keys.back(), 1);
    }
    askAll(state, [&](std::uint32_t index) { return map.find(keys[index])->second; });
}

// The strictest peer: a map of numbers.
void BM_UnorderedMap_GetByNumberOfItsOwn(benchmark::State &state)
{
    std::unordered_map<std::uint32_t, int> map;
    for (int key = 0; key < state.range(0); ++key) {
        map.emplace(static_cast<std::uint32_t>(key), 1);
    }
    askAll(state, [&](std::uint32_t index) { return map.find(index)->second; });
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(10)->Arg(100)->Arg(10'000);
}

BENCHMARK(BM_VarTable_GetByText)->Apply(sizes);
BENCHMARK(BM_UnorderedMap_GetByText)->Apply(sizes);
BENCHMARK(BM_UnorderedMap_GetByString)->Apply(sizes);
BENCHMARK(BM_VarTable_GetByNumber)->Apply(sizes);
BENCHMARK(BM_UnorderedMap_GetByNumber)->Apply(sizes);
BENCHMARK(BM_UnorderedMap_GetByNumberOfItsOwn)->Apply(sizes);

void BM_VarTable_Build(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Table t;
        for (auto const &key : keys) {
            t.table.Set(key.c_str(), 1);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_UnorderedMap_Build(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::unordered_map<std::string, int> map;
        for (auto const &key : keys) {
            map.emplace(key.c_str(), 1);
        }
        benchmark::DoNotOptimize(map.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The rule that the table follows, done in the plain way: all is sorted at each eighth new key.
void BM_PlainSort_Build(benchmark::State &state)
{
    auto const keys = names(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::vector<cVarTable::KeyVal> items;
        for (auto const &key : keys) {
            items.push_back({cVarTable::sKey(key.c_str()), 1});
            if (items.size() % 8 == 0) {
                std::sort(items.begin(), items.end(),
                          [](auto const &a, auto const &b) { return a.key.hash < b.key.hash; });
            }
        }
        benchmark::DoNotOptimize(items.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_VarTable_Build)->Arg(100)->Arg(1000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_UnorderedMap_Build)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PlainSort_Build)->Arg(100)->Arg(1000)->Arg(10'000)->Unit(benchmark::kMicrosecond);

void hear(sMsgNotify const &message)
{
    ++*static_cast<std::uint64_t *>(message.user);
}

// Each Set() changes the value; the argument is the number of listeners.
void BM_VarTable_Set(benchmark::State &state)
{
    Table t;
    for (auto const &key : names(30)) {
        t.table.Set(key.c_str(), 0);
    }
    std::string const key = names(30)[7];
    std::uint64_t heard = 0;
    for (int i = 0; i < state.range(0); ++i) {
        cTableManager::Instance().AddListener(&hear, &heard, &t.table);
    }
    int value = 0;
    for (auto _ : state) {
        t.table.Set(key.c_str(), ++value);
    }
    cTableManager::Instance().RemoveListener(&hear, &heard);
    benchmark::DoNotOptimize(heard);
}

void BM_UnorderedMap_Set(benchmark::State &state)
{
    std::unordered_map<std::string, int> map;
    for (auto const &key : names(30)) {
        map.emplace(key, 0);
    }
    std::string const key = names(30)[7];
    int value = 0;
    for (auto _ : state) {
        map[key.c_str()] = ++value;
    }
    benchmark::DoNotOptimize(map.size());
}

BENCHMARK(BM_VarTable_Set)->Arg(0)->Arg(10);
BENCHMARK(BM_UnorderedMap_Set);

class Emitter : public StringInterface {
public:
    struct Cmd : ParamCommand {
        String doGet(void const *target) override
        {
            return StringConverter::toString(static_cast<Emitter const *>(target)->value);
        }
        void doSet(void *target, String const &text) override
        {
            static_cast<Emitter *>(target)->value = StringConverter::parseReal(text);
        }
    };

    explicit Emitter(char const *className)
    {
        static Cmd cmd;
        if (createParamDictionary(className)) {
            for (auto const &name : names(30)) {
                getParamDictionary()->addParameter({name, "", PARAM_FLOAT}, &cmd);
            }
        }
    }

    float value = 0;
};

void setParameters(benchmark::State &state, Emitter &emitter)
{
    std::vector<String> parameters;
    for (auto const &name : names(30)) {
        parameters.emplace_back(name);
    }
    String const value = "12.5";
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(emitter.setParameter(parameters[i], value));
        i = i + 1 < parameters.size() ? i + 1 : 0;
    }
}

// Twenty classes, as a host with its plugins has them.
void fillClasses()
{
    for (int i = 0; i < 20; ++i) {
        Emitter const any((String("Emitter") + String(i)).c_str());
    }
}

void BM_StringInterface_setParameter(benchmark::State &state)
{
    fillClasses();
    Emitter emitter("Emitter7");
    setParameters(state, emitter);
}

class OtherCase : public Emitter {
public:
    OtherCase() : Emitter("EMITTER7")
    {
        msDictionary.erase("EMITTER7"); // so that only the name in other letters is left
    }
};

void BM_StringInterface_setParameterInOtherCase(benchmark::State &state)
{
    fillClasses();
    OtherCase emitter;
    setParameters(state, emitter);
}

// The floor: the command alone.
void BM_ParamCommand_doSet(benchmark::State &state)
{
    Emitter emitter("Emitter7");
    Emitter::Cmd cmd;
    ParamCommand *command = &cmd;
    benchmark::DoNotOptimize(command);
    String const value = "12.5";
    for (auto _ : state) {
        command->doSet(&emitter, value);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_StringInterface_setParameter);
BENCHMARK(BM_StringInterface_setParameterInOtherCase);
BENCHMARK(BM_ParamCommand_doSet);

} // namespace
