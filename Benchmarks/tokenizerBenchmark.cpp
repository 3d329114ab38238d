// Tokens of 1 MiB of script in memory, beside the lexer that re2c makes from the same grammar.
#include "Benchmarks/tokenizerPeer.h"
#include "System/File/fileMem.h"
#include "System/File/textTokenizer.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>

namespace {

constexpr std::size_t scriptSize = 1024 * 1024;

std::string script()
{
    static char const *const names[] = {"quota",         "particle_width",     "angle",
                                        "emission_rate", "time_to_live",       "velocity_min",
                                        "velocity_max",  "colour_range_start", "direction"};
    std::mt19937 random(5);
    std::string text;
    char line[200];
    while (text.size() < scriptSize) {
        auto const number = static_cast<unsigned>(random() % 1000);
        std::snprintf(line, sizeof line,
                      "// smoke of fire %u\nsystem smoke_%u\n{\n\tmaterial \"fx/smoke_%u.tga\"\n", number,
                      number, number);
        text += line;
        for (int emitter = 0; emitter < 3; ++emitter) {
            text += "\temitter Point\n\t{\n";
            for (char const *const name : names) {
                auto const low = static_cast<double>(random() % 10000) / 100;
                auto const high = static_cast<int>(random() % 200) - 100;
                std::snprintf(line, sizeof line, "\t\t%s %.2f %d 0.5 1;\n", name, low, high);
                text += line;
            }
            text += "\t}\n";
        }
        text += "}\n/* next */\n";
    }
    text.resize(scriptSize);
    return text;
}

void BM_TextTokenizer_getNextToken(benchmark::State &state)
{
    std::string const text = script();
    Qel::cFileMem file(static_cast<unsigned>(text.size()),
                       reinterpret_cast<unsigned char const *>(text.data()));
    std::int64_t tokens = 0;
    for (auto _ : state) {
        file.seek(0);
        Qel::TextTokenizer tokenizer(file);
        tokenizer.skipComment_oneLine(true);
        tokenizer.skipComment_block(true);
        for (;;) {
            Qel::TextToken const token = tokenizer.getNextToken();
            if (token.isEnd()) {
                break;
            }
            benchmark::DoNotOptimize(token.getExactText().data());
            ++tokens;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(tokens);
}
BENCHMARK(BM_TextTokenizer_getNextToken);

void BM_TextTokenizer_re2c(benchmark::State &state)
{
    std::string const text = script();
    std::int64_t tokens = 0;
    for (auto _ : state) {
        peer::Lexer lexer{text.data(), text.data() + text.size()};
        for (;;) {
            peer::Token const token = lexer.next();
            if (token.type == Qel::TOK_END && token.text.empty()) {
                break;
            }
            benchmark::DoNotOptimize(token.text.data());
            ++tokens;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(tokens);
}
BENCHMARK(BM_TextTokenizer_re2c);

} // namespace
