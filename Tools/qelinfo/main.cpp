#include "info.h"

#include <CLI/CLI.hpp>

int main(int argc, char **argv)
{
    Options options;
    CLI::App app("Says what a picture's file is by its bytes, and what the library reads from it.",
                 "qelinfo");
    app.add_option("FILE", options.file, "TGA, BMP, PCX, ICO or DDS; others are named at least")->required();
    app.add_option("--convert", options.convert, "Write what was read: a .tga, .bmp, .pcx or .png");
    app.add_option("--index", options.index, "Which picture of an icon")->capture_default_str();
    app.footer("Exit codes: 0 done, 1 no reader takes the file, 2 mistake in the command line,\n"
               "3 a file cannot be read or written.");
    try {
        app.parse(argc, argv);
        if (!options.convert.empty() && !isWritable(options.convert)) {
            throw CLI::ValidationError("--convert", "takes names that end in .tga, .bmp, .pcx or .png");
        }
    } catch (CLI::ParseError const &mistake) {
        return app.exit(mistake) == 0 ? exitDone : exitUsage;
    }
    return inform(options);
}
