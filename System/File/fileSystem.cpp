#include "System/File/fileSystem.h"

#include "Support/OS/file.h"
#include "Support/OS/folder.h"
#include "Support/OS/text.h"
#include "System/File/fileInfo.h"
#include "System/System/stringTools.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

namespace Qel {

namespace {

constexpr char separators[] = "/\\";
constexpr int deepest = 256;

/// One listing of a folder and everything below it.
class Walk {
public:
    enum class Wanted { Files, Folders };

    Walk(Wanted wanted, String const &wildcard, String const &pattern, bool ignoreCase,
         std::vector<String> &out)
        : m_wanted(wanted), m_wildcard(wildcard), m_pattern(pattern), m_ignoreCase(ignoreCase), m_out(out)
    {
    }

    bool matches(String const &name) const
    {
        bool const found = m_wildcard == "*.*" || m_wildcard == "*" || name.match(m_wildcard, m_ignoreCase);
        return found && name.match(m_pattern, m_ignoreCase);
    }

    /// @param folder  ends with a separator, or is empty
    bool run(String const &folder)
    {
        os::FileStatus status;
        if (os::fileStatus(folder.empty() ? "." : folder.c_str(), status)) {
            m_seen.insert(status.id);
        }
        if (!list(folder, 0)) {
            return false;
        }
        // A link is followed last, so that what is in the tree itself is found where it lies.
        for (std::size_t next = 0; next < m_links.size(); ++next) {
            auto const [path, depth] = m_links[next];
            descend(path, depth);
        }
        return true;
    }

private:
    bool list(String const &folder, int depth)
    {
        std::vector<os::FolderEntry> entries;
        if (!os::listFolder(folder.c_str(), entries)) {
            return false;
        }
        for (os::FolderEntry const &entry : entries) {
            String const name(entry.name);
            bool const isFolder = entry.kind == os::FileKind::Folder;
            bool const isWanted = m_wanted == Wanted::Folders ? isFolder : entry.kind == os::FileKind::File;
            if (isWanted && matches(name)) {
                m_out.push_back(folder + name);
            }
            if (!isFolder || depth == deepest) {
                continue;
            }
            String const path = folder + name + os::pathSeparator;
            if (entry.isLink) {
                m_links.emplace_back(path, depth + 1);
            } else {
                descend(path, depth + 1);
            }
        }
        return true;
    }

    void descend(String const &folder, int depth)
    {
        os::FileStatus status;
        if (os::fileStatus(folder.c_str(), status) && m_seen.insert(status.id).second) {
            list(folder, depth);
        }
    }

    Wanted m_wanted;
    String const &m_wildcard;
    String const &m_pattern;
    bool m_ignoreCase;
    std::vector<String> &m_out;
    std::set<os::FileId> m_seen;
    std::vector<std::pair<String, int>> m_links;
};

bool walk(Walk::Wanted wanted, String const &search, std::vector<String> &out, String const &pattern,
          bool ignoreCase)
{
    std::size_t const last = search.find_last_of(separators);
    std::size_t const split = last == String::npos ? 0 : last + 1;
    String const folder(search, 0, split);
    String const wildcard(search, split, String::npos);
    Walk walking(wanted, wildcard, pattern, ignoreCase, out);
    if (wildcard.find_first_of("*?") != String::npos) {
        return walking.run(folder);
    }

    // One name, which stands for itself.
    os::FileStatus status;
    if (wildcard.empty()) {
        errno = ENOENT;
        return false;
    }
    if (!os::fileStatus(search.c_str(), status)) {
        return false;
    }
    auto const kind = wanted == Walk::Wanted::Files ? os::FileKind::File : os::FileKind::Folder;
    if (status.kind == kind && wildcard.match(pattern, ignoreCase)) {
        out.push_back(search);
    }
    return true;
}

// Counts up a number of any length, written in digits; it gets longer when it has to.
void increment(String &digits)
{
    for (std::size_t i = digits.size(); i > 0; --i) {
        if (digits[i - 1] != '9') {
            ++digits[i - 1];
            return;
        }
        digits[i - 1] = '0';
    }
    digits.insert(digits.begin(), '1');
}

} // namespace

bool FileSystem::getFiles(String const &search, std::vector<String> &out, String const &pattern,
                          bool ignoreCase)
{
    return walk(Walk::Wanted::Files, search, out, pattern, ignoreCase);
}

bool FileSystem::getDirectories(String const &search, std::vector<String> &out, String const &pattern,
                                bool ignoreCase)
{
    return walk(Walk::Wanted::Folders, search, out, pattern, ignoreCase);
}

String FileSystem::buildRelativePath(String const &target, String const &base)
{
    std::vector<String> to;
    std::vector<String> from;
    target.split(to, separators, 0);
    base.split(from, separators, 0);
    std::size_t common = 0;
    for (; common < to.size() && common < from.size(); ++common) {
        to[common].toLowerCase();
        from[common].toLowerCase();
        if (to[common] != from[common]) {
            break;
        }
    }

    String result;
    for (std::size_t i = common; i < from.size(); ++i) {
        result += "..\\";
    }
    for (std::size_t i = common; i < to.size(); ++i) {
        if (to[i].size() == 2 && to[i][1] == ':') {
            result.clear();
        }
        result += to[i];
        if (i + 1 < to.size()) {
            result += '\\';
        }
    }
    return result;
}

bool FileSystem::fileExist(String const &path)
{
    os::FileStatus status;
    return os::fileStatus(path.c_str(), status);
}

long long FileSystem::fileSize(String const &path)
{
    os::FileStatus status;
    return os::fileStatus(path.c_str(), status) ? static_cast<long long>(status.size) : 0;
}

String FileSystem::getNextUniqueFilename(String const &directory, String const &fileName)
{
    // Up to the first zero byte, where the system sees the ends of both.
    String const folder(directory.c_str());
    String const name(fileName.c_str());
    std::size_t const dot = std::min(name.rfind('.'), name.size());
    String stem(name, 0, dot);
    String const extension(name, dot, String::npos);

    String path = folder + stem + extension;
    while (fileExist(path)) {
        std::size_t const last = stem.find_last_not_of("0123456789");
        if (last == String::npos) {
            stem += '0';
        } else {
            String number(stem, last + 1, String::npos);
            increment(number);
            stem.erase(last + 1);
            stem += number;
        }
        path = folder + stem + extension;
    }
    return path;
}

bool FileSystem::getFileInfo(String const &path, FileInfo &info, unsigned int)
{
    os::FileStatus status;
    if (!os::fileStatus(path.c_str(), status)) {
        return false;
    }
    if (status.size > std::numeric_limits<std::uint32_t>::max()) {
        errno = EOVERFLOW;
        return false;
    }
    info.reset();
    info.setName(path.c_str());
    info.packedSize = info.size = static_cast<std::uint32_t>(status.size);
    info.modTime = status.modTime;
    return true;
}

bool FileSystem::deleteFile(String const &path)
{
    return os::removeFile(path.c_str());
}

bool FileSystem::copyFile(String const &from, String const &to, bool failIfExists)
{
    return os::copyFile(from.c_str(), to.c_str(), failIfExists);
}

bool FileSystem::moveFile(String const &from, String const &to)
{
    return os::moveFile(from.c_str(), to.c_str());
}

void FileSystem::prepareFileName(char *out, char const *in)
{
    StringTools::remap(out, in, StringTools::getMapTable(MAP_PATH));
}

void FileSystem::prepareFileName(String &path)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    for (char &c : path) {
        c = static_cast<char>(map[static_cast<unsigned char>(c)]);
    }
}

WString FileSystem::getLastError()
{
    return WString(os::toWide(os::lastErrorText()));
}

bool FileSystem::touch(String const &path)
{
    return os::touchFile(path.c_str());
}

} // namespace Qel
