// A host whose static object is older than the library, dies after the library's own, and only then lets go
// of what it holds. It loads the library through lateModule.cpp, so it calls the loader itself.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace {

using Step = bool (*)();

class LastOut {
public:
    ~LastOut()
    {
        if (letGo != nullptr && !letGo()) {
            std::fputs("what outlives the library's static objects does not work any more\n", stderr);
            std::_Exit(1);
        }
    }

    Step letGo = nullptr;
};

LastOut lastOut;

} // namespace

int main(int argc, char **argv)
{
    void *const module = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL) : nullptr;
    if (module == nullptr) {
        std::fprintf(stderr, "no module: %s\n", dlerror());
        return 2;
    }
    auto const hold = reinterpret_cast<Step>(dlsym(module, "hold"));
    auto const letGo = reinterpret_cast<Step>(dlsym(module, "letGo"));
    if (hold == nullptr || letGo == nullptr || !hold()) {
        return 3;
    }
    lastOut.letGo = letGo;
    return 0;
}
