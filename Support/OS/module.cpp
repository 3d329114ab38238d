#include "Support/OS/module.h"

#include "Support/OS/file.h"

#include <dlfcn.h>
#include <link.h>
#include <strings.h>

#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace os {

namespace {

// The folder with a separator at its end, or an empty text where it cannot be told.
std::string folderOf(std::string const &path)
{
    std::size_t const slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string programFolder()
{
    std::error_code failed;
    std::filesystem::path const program = std::filesystem::read_symlink("/proc/self/exe", failed);
    return failed ? std::string() : folderOf(program.string());
}

std::string libraryFolder()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&libraryFolder), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    std::error_code failed;
    std::filesystem::path const library = std::filesystem::canonical(info.dli_fname, failed);
    return failed ? std::string() : folderOf(library.string());
}

// The same file may be named in two ways on this system: as given, and with its own ending.
std::vector<std::string> spellings(std::string const &name)
{
    constexpr std::string_view foreign = ".dll";
    std::vector<std::string> names{name};
    if (name.size() > foreign.size() &&
        strcasecmp(name.c_str() + name.size() - foreign.size(), foreign.data()) == 0) {
        names.push_back(name.substr(0, name.size() - foreign.size()) + ".so");
    }
    return names;
}

} // namespace

void *openModule(char const *name, std::string &error)
{
    error.clear();
    if (name == nullptr || *name == '\0') {
        error = "no name given"; // the loader would answer an empty name with the program itself
        return nullptr;
    }

    std::string const path = systemPath(name);
    std::vector<std::string> places;
    if (path.find('/') == std::string::npos) {
        // The last, empty place leaves the search to the loader, which does not look into the working
        // directory.
        std::string const library = libraryFolder();
        places = {programFolder(), library};
        if (!library.empty()) {
            places.push_back(library + "qelSystem/plugins/");
        }
        places.insert(places.end(), {"./", ""});
    } else {
        places = {""};
    }

    for (std::string const &place : places) {
        for (std::string const &spelling : spellings(path)) {
            std::string const file = place + spelling;
            // Local symbols, resolved at once: a plugin that lacks something fails here, not in a frame.
            if (void *const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
                error.clear();
                return module;
            }
            if (char const *const why = dlerror()) {
                error += error.empty() ? "" : "; ";
                error += why;
            }
        }
    }
    return nullptr;
}

void *findSymbol(void *module, char const *symbol)
{
    void *const address = module == nullptr ? nullptr : dlsym(module, symbol);
    if (address == nullptr) {
        return nullptr;
    }
    // The loader also finds what the module's own dependencies export.
    link_map *own = nullptr;
    link_map *holder = nullptr;
    Dl_info info{};
    bool const known = dlinfo(module, RTLD_DI_LINKMAP, &own) == 0 &&
                       dladdr1(address, &info, reinterpret_cast<void **>(&holder), RTLD_DL_LINKMAP) != 0;
    return known && own == holder ? address : nullptr;
}

bool closeModule(void *module)
{
    return module != nullptr && dlclose(module) == 0;
}

} // namespace os
