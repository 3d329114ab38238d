#include "Support/OS/folderWatch.h"

#include "Support/OS/file.h"
#include "Support/OS/folder.h"
#include "Support/OS/readyCalls.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace os {

namespace {

constexpr std::uint32_t wantedEvents = IN_CREATE | IN_DELETE | IN_MODIFY | IN_ATTRIB | IN_MOVED_FROM |
                                       IN_MOVED_TO | IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;

// Both halves of a renaming come out of one system call.
constexpr int renamingMs = 5;

} // namespace

std::unique_ptr<FolderWatch> FolderWatch::open(char const *path, bool recursive)
{
    std::unique_ptr<FolderWatch> watch(new FolderWatch);
    watch->m_recursive = recursive;
    watch->m_root = ::open(systemPath(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    watch->m_events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch->m_root < 0 || watch->m_events < 0 || !watch->addTree("", false, nullptr) ||
        watch->m_folders.empty()) {
        return nullptr;
    }
    return watch;
}

FolderWatch::~FolderWatch()
{
    if (m_events >= 0) {
        ReadyCalls::forget(m_events);
        close(m_events);
    }
    if (m_root >= 0) {
        close(m_root);
    }
}

bool FolderWatch::callOnChange(std::function<void()> call)
{
    return ReadyCalls::add(m_events, std::move(call));
}

// A path that leads through the open folder, so that neither its name nor the working folder matters.
std::string FolderWatch::reach(std::string const &folder) const
{
    std::string path = "/proc/self/fd/" + std::to_string(m_root) + "/" + (folder.empty() ? "." : folder);
    if (path.back() == pathSeparator) {
        path.pop_back(); // else a link in the last place would be followed
    }
    return path;
}

// Watches a folder and what is below it.
// @param known  folders whose files need not be told of; null for none
// @return false if the system can watch no more
bool FolderWatch::addTree(std::string const &folder, bool tellFiles, Folders const *known)
{
    std::vector<std::string> waiting{folder};
    std::vector<FolderEntry> entries;
    while (!waiting.empty()) {
        std::string const path = std::move(waiting.back());
        waiting.pop_back();
        int const watch = inotify_add_watch(m_events, reach(path).c_str(), wantedEvents);
        if (watch < 0) {
            if (errno == ENOSPC || errno == ENOMEM) {
                return false;
            }
            continue; // gone again, or not ours to see
        }
        auto const [place, inserted] = m_folders.insert_or_assign(watch, Folder{path, {}});
        bool const isNew = inserted && (known == nullptr || known->count(watch) == 0);
        if (!listFolder(reach(path).c_str(), entries)) {
            continue;
        }
        for (FolderEntry const &entry : entries) {
            std::string name = path + entry.name;
            if (entry.kind == FileKind::Folder && !entry.isLink) {
                if (m_recursive) {
                    waiting.push_back(std::move(name) + pathSeparator);
                }
                continue;
            }
            noteTime(place->second, entry.name);
            if (tellFiles && isNew) {
                tell(FolderChange::Added, name);
                m_listed.insert(std::move(name));
            }
        }
    }
    return true;
}

// @return is it another one than was known? Of a file that is gone nobody can tell, so it may be
bool FolderWatch::noteTime(Folder &folder, std::string const &name) const
{
    struct stat status {};
    if (fstatat(m_root, (folder.path + name).c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return true;
    }
    std::int64_t const time = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    auto const [place, isNew] = folder.times.try_emplace(name, time);
    return std::exchange(place->second, time) != time || isNew;
}

void FolderWatch::forgetTree(std::string const &folder)
{
    for (auto it = m_folders.begin(); it != m_folders.end();) {
        if (it->second.path.compare(0, folder.size(), folder) == 0) {
            inotify_rm_watch(m_events, it->first);
            it = m_folders.erase(it);
        } else {
            ++it;
        }
    }
}

void FolderWatch::moveTree(std::string const &from, std::string const &to)
{
    for (auto &[watch, folder] : m_folders) {
        if (folder.path.compare(0, from.size(), from) == 0) {
            folder.path.replace(0, from.size(), to);
        }
    }
}

// After changes were dropped, folders may have come, moved or gone.
void FolderWatch::findWayAgain()
{
    settleAll();
    Folders const before = std::exchange(m_folders, {});
    addTree("", true, &before);
    for (auto const &[watch, folder] : before) {
        if (m_folders.count(watch) == 0) {
            inotify_rm_watch(m_events, watch);
        }
    }
}

bool FolderWatch::next(FolderChange &change, std::string &name)
{
    while (m_ready.empty()) {
        if (m_at == m_filled && !readEvents()) {
            if (m_ready.empty()) {
                return false;
            }
            break;
        }
        inotify_event event;
        std::memcpy(&event, m_buffer + m_at, sizeof event);
        char const *const text = m_buffer + m_at + sizeof event;
        m_at += sizeof event + event.len;
        translate(event, event.len > 0 ? text : "");
    }
    change = m_ready.front().first;
    name = std::move(m_ready.front().second);
    m_ready.pop_front();
    return true;
}

bool FolderWatch::readEvents()
{
    for (;;) {
        ssize_t const size = read(m_events, m_buffer, sizeof m_buffer);
        if (size > 0) {
            m_at = 0;
            m_filled = static_cast<std::size_t>(size);
            settleUnpaired();
            return true;
        }
        if (size < 0 && errno == EINTR) {
            continue;
        }
        pollfd wait{m_events, POLLIN, 0};
        if (m_moved.empty() || poll(&wait, 1, renamingMs) <= 0) {
            break;
        }
    }
    // Everything that happened before the folders were listed has come.
    m_listed.clear();
    settleAll();
    return false;
}

void FolderWatch::translate(inotify_event const &event, char const *name)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        findWayAgain();
        return;
    }
    if ((event.mask & IN_IGNORED) != 0) {
        m_folders.erase(event.wd);
        return;
    }
    auto const folder = m_folders.find(event.wd);
    if (folder == m_folders.end() || *name == 0) {
        return; // of a folder that has left the tree, or of the folder itself
    }
    std::string const path = folder->second.path + name;
    bool isOther = false;
    if ((event.mask & (IN_DELETE | IN_MOVED_FROM)) != 0) {
        folder->second.times.erase(name);
    } else if ((event.mask & IN_ISDIR) == 0) {
        isOther = noteTime(folder->second, name);
    }
    if ((event.mask & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO)) != 0) {
        cameOrWent(event, path);
    } else if (isOther || (event.mask & (IN_MODIFY | IN_ISDIR)) == IN_MODIFY) {
        tell(FolderChange::Modified, path);
    }
}

void FolderWatch::cameOrWent(inotify_event const &event, std::string const &name)
{
    bool const isFolder = (event.mask & IN_ISDIR) != 0;
    if (isFolder && !m_recursive) {
        return;
    }
    if ((event.mask & IN_MOVED_FROM) != 0) {
        m_listed.erase(name);
        m_moved.push_back({event.cookie, name, isFolder});
        if (m_at != m_filled) {
            settleUnpaired();
        }
        return;
    }
    if ((event.mask & IN_DELETE) != 0) {
        m_listed.erase(name);
        if (!isFolder) {
            settleName(name);
            tell(FolderChange::Removed, name);
        }
        return;
    }
    if ((event.mask & IN_MOVED_TO) != 0) {
        auto const from = std::find_if(m_moved.begin(), m_moved.end(),
                                       [&](Moved const &moved) { return moved.pair == event.cookie; });
        if (from != m_moved.end()) {
            Moved const moved = std::move(*from);
            m_moved.erase(from);
            settleName(name);
            if (isFolder) {
                moveTree(moved.name + pathSeparator, name + pathSeparator);
            } else {
                tell(FolderChange::RenamedOld, moved.name);
                tell(FolderChange::RenamedNew, name);
            }
            return;
        }
    }
    settleName(name);
    if (isFolder) {
        addTree(name + pathSeparator, true, nullptr);
    } else if (m_listed.erase(name) == 0) {
        tell(FolderChange::Added, name);
    }
}

void FolderWatch::tell(FolderChange change, std::string const &name)
{
    m_ready.emplace_back(change, name);
}

// Both halves of a renaming come close together. Where events follow the first half and the second is not
// among them, it is no longer waited for, so that everything is told in its order.
void FolderWatch::settleUnpaired()
{
    if (m_moved.empty()) {
        return;
    }
    std::unordered_set<std::uint32_t> pairs;
    for (std::size_t at = m_at; at < m_filled;) {
        inotify_event event;
        std::memcpy(&event, m_buffer + at, sizeof event);
        if ((event.mask & IN_MOVED_TO) != 0) {
            pairs.insert(event.cookie);
        }
        at += sizeof event + event.len;
    }
    settleMoved([&](Moved const &moved) { return pairs.count(moved.pair) == 0; });
}

// What went and did not come again has left the tree.
void FolderWatch::settleMoved(std::function<bool(Moved const &)> const &which)
{
    std::vector<Moved> left;
    for (Moved &moved : m_moved) {
        if (!which(moved)) {
            left.push_back(std::move(moved));
        } else if (moved.isFolder) {
            forgetTree(moved.name + pathSeparator);
        } else {
            tell(FolderChange::Removed, moved.name);
        }
    }
    m_moved = std::move(left);
}

// Before something else takes a name.
void FolderWatch::settleName(std::string const &name)
{
    if (!m_moved.empty()) {
        settleMoved([&](Moved const &moved) { return moved.name == name; });
    }
}

void FolderWatch::settleAll()
{
    settleMoved([](Moved const &) { return true; });
}

} // namespace os
