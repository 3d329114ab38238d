#include "System/File/diskName.h"

#include "System/System/stringTools.h"

#include "Support/OS/rootedFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace Qel {

namespace {

String normalForm(std::string const &text)
{
    String normal(text);
    StringTools::remap(normal.data(), text.c_str(), StringTools::getMapTable(MAP_PATH));
    return normal;
}

// Goes on from `found`, which is a folder with a separator behind, or empty for the working folder.
bool findRest(std::string &found, std::string_view rest)
{
    while (!rest.empty() && rest.front() == '/') {
        rest.remove_prefix(1);
    }
    if (rest.empty()) {
        return true;
    }
    std::string const element(rest.substr(0, rest.find('/')));
    std::string_view const behind = rest.substr(element.size());
    std::size_t const length = found.size();

    std::vector<std::string> candidates{element};
    std::vector<std::string> names;
    if (os::listNames(found.empty() ? "." : found.c_str(), names)) {
        String const wanted = normalForm(element);
        for (std::string const &name : names) {
            if (name != element && normalForm(name) == wanted) {
                candidates.push_back(name);
            }
        }
    }
    for (std::string const &candidate : candidates) {
        found += candidate;
        if (os::pathExists(found.c_str())) {
            if (!behind.empty()) {
                found += '/';
            }
            if (findRest(found, behind)) {
                return true;
            }
        }
        found.resize(length);
    }
    return false;
}

} // namespace

String findDiskName(char const *name)
{
    String path(name);
    path.replaceAll("\\", "/");
    if (path.empty() || os::pathExists(path.c_str())) {
        return path;
    }
    std::string found(path[0] == '/' ? "/" : "");
    return findRest(found, std::string_view(path.data(), path.size())) ? String(found) : String();
}

} // namespace Qel
