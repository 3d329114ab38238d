#include "options.h"

#include "pack.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace {

// "zip" stands for "CODEC_ZIP".
std::string fullName(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return name.rfind("CODEC_", 0) == 0 ? name : "CODEC_" + name;
}

std::vector<std::string> codecsOf(std::string const &list)
{
    std::vector<std::string> codecs;
    std::istringstream names(list);
    for (std::string name; std::getline(names, name, ',');) {
        codecs.push_back(fullName(name));
    }
    return codecs;
}

} // namespace

std::optional<Options> readOptions(int argc, char **argv, int &exitCode)
{
    Options options;
    std::string direction;
    std::string codecs;

    CLI::App app("Packs and unpacks a file with a codec of the library, or with a chain of them.", "qelpack");
    app.add_option("DIRECTION", direction, "encode or decode")
        ->required()
        ->check(CLI::IsMember({"encode", "decode"}));
    app.add_option("CODECS", codecs,
                   "One, or several with commas: huffman, lz77, lzw, mtf, zip; for decode in the same order "
                   "as for encode")
        ->required();
    app.add_option("IN", options.in, "File to read, less than 4 GiB")->required();
    app.add_option("OUT", options.out, "File to write; it appears when it is whole")->required();
    auto *const level = app.add_option("--level", options.level, "zip alone: 0 stores, 1 is fast, 9 is small")
                            ->check(CLI::Range(0u, 9u))
                            ->capture_default_str();
    app.add_flag("--extended", options.extended, "zip alone: blocks with their size, one after another");
    app.add_flag("!--no-verify", options.verify, "encode: do not decode the result to compare");
    app.add_option("--limit", options.limit, "decode: MiB of output that may be out of proportion to IN")
        ->check(CLI::Range(1u, 4095u))
        ->capture_default_str();
    app.add_flag("-q,--quiet", options.quiet, "Say nothing but errors");
    app.footer("Exit codes: 0 done, 1 damaged data or a chain that does not give the file back,\n"
               "2 mistake in the command line, 3 a file cannot be read or written.");
    try {
        app.parse(argc, argv);
        options.encode = direction == "encode";
        options.codecs = codecsOf(codecs);
        bool const zipAlone = options.codecs == std::vector<std::string>{"CODEC_ZIP"};
        if (!zipAlone && (options.extended || level->count() > 0)) {
            throw CLI::ValidationError("--level and --extended", "for zip alone, not for a chain");
        }
        if (options.codecs.empty()) {
            throw CLI::ValidationError("CODECS", "no codec is named");
        }
        for (std::string const &name : options.codecs) {
            if (!isKnownCodec(name)) {
                throw CLI::ValidationError("CODECS", "there is no codec \"" + name + "\"");
            }
        }
    } catch (CLI::ParseError const &mistake) {
        exitCode = app.exit(mistake) == 0 ? exitDone : exitUsage;
        return std::nullopt;
    }
    return options;
}
