#include "System/File/diskName.h"

#include "System/System/stringTools.h"

#include "Support/OS/folder.h"

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

bool exists(char const *path)
{
    os::FileStatus status;
    return os::fileStatus(path, status);
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
    std::vector<os::FolderEntry> entries;
    os::listFolder(found.c_str(), entries);
    String const wanted = normalForm(element);
    for (os::FolderEntry const &entry : entries) {
        if (entry.name != element && normalForm(entry.name) == wanted) {
            candidates.push_back(entry.name);
        }
    }
    for (std::string const &candidate : candidates) {
        found += candidate;
        if (exists(found.c_str())) {
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
    if (path.empty() || exists(path.c_str())) {
        return path;
    }
    std::string found(path[0] == '/' ? "/" : "");
    return findRest(found, std::string_view(path.data(), path.size())) ? String(found) : String();
}

} // namespace Qel
