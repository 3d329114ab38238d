#include "options.h"
#include "pack.h"

int main(int argc, char **argv)
{
    int exitCode = exitDone;
    std::optional<Options> const options = readOptions(argc, argv, exitCode);
    return options ? pack(*options) : exitCode;
}
