#include "Support/OS/rootedFolder.h"

#include "Support/OS/file.h"
#include "Support/OS/handle.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <set>
#include <string_view>
#include <utility>

namespace os {

namespace {

constexpr unsigned deepest = 64; // folders below the root

std::atomic<bool> beneathWorks{true};

// Takes the handle over.
bool readNames(int handle, std::vector<std::string> &names)
{
    FolderPtr const folder(handle < 0 ? nullptr : fdopendir(handle));
    if (!folder) {
        if (handle >= 0) {
            ::close(handle);
        }
        return false;
    }
    while (dirent const *const entry = readdir(folder.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return true;
}

// A name in the folder itself, on the way to which there is nothing that could lead out.
bool isPlainName(char const *path)
{
    return std::strchr(path, '/') == nullptr && std::strcmp(path, "..") != 0 && *path != '\0';
}

// @return false if it is no plain file
bool tell(struct stat const &found, RootedFolder::Status &status)
{
    if (!S_ISREG(found.st_mode)) {
        return false;
    }
    status = {static_cast<std::uint64_t>(found.st_size), found.st_mtim.tv_sec};
    return true;
}

// Element by element, through no link.
int openStepByStep(int root, std::string_view path, int flags)
{
    Handle folder(-1);
    for (;;) {
        std::size_t const slash = path.find('/');
        std::string const element(path.substr(0, slash));
        if (element.empty() || element == "..") {
            errno = EINVAL;
            return -1;
        }
        bool const last = slash == std::string_view::npos;
        int const from = folder.get() >= 0 ? folder.get() : root;
        int const next =
            ::openat(from, element.c_str(), O_NOFOLLOW | O_CLOEXEC | (last ? flags : O_RDONLY | O_DIRECTORY));
        if (last || next < 0) {
            return next;
        }
        folder.reset(next);
        path.remove_prefix(slash + 1);
    }
}

} // namespace

RootedFolder::~RootedFolder()
{
    if (m_handle >= 0) {
        ::close(m_handle);
    }
}

bool RootedFolder::open(char const *path)
{
    int const handle = ::open(systemPath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) {
        return false;
    }
    if (m_handle >= 0) {
        ::close(m_handle);
    }
    m_handle = handle;
    return true;
}

int RootedFolder::openInside(char const *path, int flags) const
{
    // Of what is asked to be a folder the system does not tell that it is a link.
    if ((flags & (O_PATH | O_DIRECTORY)) == 0 && isPlainName(path)) {
        int const handle = ::openat(m_handle, path, flags | O_CLOEXEC | O_NOFOLLOW);
        if (handle >= 0 || errno != ELOOP) {
            return handle;
        }
    }
    if (beneathWorks.load(std::memory_order_relaxed)) {
        open_how how{};
        how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
        long const handle = ::syscall(SYS_openat2, m_handle, path, &how, sizeof how);
        // A sandbox that does not know the call says that it is not allowed.
        if (handle >= 0 || (errno != ENOSYS && errno != EPERM)) {
            return static_cast<int>(handle);
        }
    }
    return openStepByStep(m_handle, path, flags);
}

struct RootedFolder::Listing {
    std::vector<File> files;
    std::set<std::pair<dev_t, ino_t>> entered;
};

std::vector<RootedFolder::File> RootedFolder::list() const
{
    Listing listing;
    listInto(listing, std::string(), 0);
    std::sort(listing.files.begin(), listing.files.end(),
              [](File const &a, File const &b) { return a.path < b.path; });
    return std::move(listing.files);
}

// The folder is read and closed before those below it are opened: one handle, however deep.
void RootedFolder::listInto(Listing &listing, std::string const &folder, unsigned depth) const
{
    Handle handle(openInside(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY));
    struct stat own {};
    if (handle.get() < 0 || fstat(handle.get(), &own) != 0 ||
        !listing.entered.insert({own.st_dev, own.st_ino}).second) {
        return;
    }
    std::vector<std::string> names;
    if (!readNames(handle.release(), names)) {
        return;
    }
    for (std::string const &name : names) {
        std::string path = folder;
        if (!path.empty()) {
            path += '/';
        }
        path += name;
        struct stat found {};
        if (fstatat(m_handle, path.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        if (S_ISLNK(found.st_mode)) {
            Handle const target(openInside(path.c_str(), O_RDONLY | O_NONBLOCK));
            if (target.get() < 0 || fstat(target.get(), &found) != 0) {
                continue;
            }
        }
        Status status;
        if (tell(found, status)) {
            listing.files.push_back({std::move(path), status});
        } else if (S_ISDIR(found.st_mode) && depth < deepest) {
            listInto(listing, path, depth + 1);
        }
    }
}

bool RootedFolder::stat(char const *path, Status &status) const
{
    struct stat found {};
    // By its name alone where there are no folders on the way, which could have become links; a name that is
    // a link itself is followed within bounds.
    if (isPlainName(path)) {
        if (fstatat(m_handle, path, &found, AT_SYMLINK_NOFOLLOW) != 0) {
            return false;
        }
        if (!S_ISLNK(found.st_mode)) {
            return tell(found, status);
        }
    }
    Handle const target(openInside(path, O_PATH));
    return target.get() >= 0 && fstat(target.get(), &found) == 0 && tell(found, status);
}

RootedFile::RootedFile(RootedFile &&other) noexcept : m_handle(std::exchange(other.m_handle, -1))
{
}

RootedFile &RootedFile::operator=(RootedFile &&other) noexcept
{
    if (this != &other) {
        close();
        m_handle = std::exchange(other.m_handle, -1);
    }
    return *this;
}

RootedFile::~RootedFile()
{
    close();
}

void RootedFile::close()
{
    if (m_handle >= 0) {
        ::close(std::exchange(m_handle, -1));
    }
}

bool RootedFile::open(RootedFolder const &folder, char const *path)
{
    close();
    // Without waiting: a pipe may have come in the file's place.
    m_handle = folder.openInside(path, O_RDONLY | O_NONBLOCK);
    return isOpen();
}

bool RootedFile::open(RootedFolder const &folder, char const *path, RootedFolder::Status &status)
{
    struct stat found {};
    if (open(folder, path) && fstat(m_handle, &found) == 0 && tell(found, status)) {
        return true;
    }
    close();
    return false;
}

std::size_t RootedFile::read(void *buffer, std::size_t size)
{
    return readFully(buffer, size,
                     [this](char *to, std::size_t room, std::size_t) { return ::read(m_handle, to, room); });
}

NoBeneathScope::NoBeneathScope()
{
    beneathWorks = false;
}

NoBeneathScope::~NoBeneathScope()
{
    beneathWorks = true;
}

} // namespace os
