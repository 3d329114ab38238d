#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

struct inotify_event;

namespace os {

enum class FolderChange {
    Modified, ///< content, size or time of change
    Added,
    RenamedOld, ///< comes right before RenamedNew, which has the new name
    RenamedNew,
    Removed,
};

/// Collects what happens to the files of a folder, from open() on.
///
/// Folders themselves are not told of; a recursive watch follows those that come, move and go, and tells of
/// the files in one that comes as added. Links to folders are files to it. What it watches is the folder that
/// was opened, wherever that is moved; once it is removed nothing more happens in it.
///
/// The time of change of every file is remembered, since the system tells of times and of rights alike.
///
/// The system keeps a limited number of changes. When it had to drop some, the watch finds its way again in
/// the tree as it is then; files of folders that are new to it are told of, other changes are lost.
///
/// @par Threads  One at a time.
class QEL_API FolderWatch {
public:
    /// @param path  through systemPath()
    /// @return null if the folder cannot be watched, or not all that is below it for want of room
    static std::unique_ptr<FolderWatch> open(char const *path, bool recursive);
    ~FolderWatch();

    FolderWatch(FolderWatch const &) = delete;
    FolderWatch &operator=(FolderWatch const &) = delete;

    /// Takes the next change. Where a file has left the tree it waits for a moment, since the other half of a
    /// renaming may be on its way.
    /// @param name  of the file, relative to the folder
    /// @return false if there is none now
    bool next(FolderChange &change, std::string &name);

    /// Once there is something to take, queues @p call for the calling thread, to be made in its next
    /// alertable sleep. Good for one call, and forgotten if that thread ends first.
    /// @return false if the system has no means left for that
    bool callOnChange(std::function<void()> call);

private:
    struct Moved {
        std::uint32_t pair; // the same number in both halves of a renaming
        std::string name;
        bool isFolder;
    };
    struct Folder {
        std::string path;                                    // "" or one that ends with a separator
        std::unordered_map<std::string, std::int64_t> times; // of its files, in nanoseconds
    };
    using Folders = std::unordered_map<int, Folder>;

    FolderWatch() = default;
    std::string reach(std::string const &folder) const;
    bool addTree(std::string const &folder, bool tellFiles, Folders const *known);
    bool noteTime(Folder &folder, std::string const &name) const;
    void forgetTree(std::string const &folder);
    void moveTree(std::string const &from, std::string const &to);
    void findWayAgain();
    bool readEvents();
    void translate(inotify_event const &event, char const *name);
    void cameOrWent(inotify_event const &event, std::string const &name);
    void tell(FolderChange change, std::string const &name);
    void settleUnpaired();
    void settleMoved(std::function<bool(Moved const &)> const &which);
    void settleName(std::string const &name);
    void settleAll();

    int m_events = -1; // where the system puts the changes
    int m_root = -1;   // the folder itself, under whatever name it goes
    bool m_recursive = false;
    Folders m_folders; // by watch
    std::deque<std::pair<FolderChange, std::string>> m_ready;
    std::vector<Moved> m_moved;               // names that went and may yet come
    std::unordered_set<std::string> m_listed; // files told of whose own event may still come
    std::size_t m_at = 0;                     // in m_buffer
    std::size_t m_filled = 0;
    alignas(8) char m_buffer[4096];
};

} // namespace os
