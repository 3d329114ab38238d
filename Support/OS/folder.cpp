#include "Support/OS/folder.h"

#include "Support/OS/file.h"
#include "Support/OS/handle.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace os {

namespace {

bool fail(int error)
{
    errno = error;
    return false;
}

FileKind kindOf(mode_t mode)
{
    return S_ISREG(mode) ? FileKind::File : S_ISDIR(mode) ? FileKind::Folder : FileKind::Other;
}

// @return false if the entry leads nowhere
bool classify(DIR *folder, dirent const &found, FolderEntry &entry)
{
    entry.isLink = found.d_type == DT_LNK;
    switch (found.d_type) {
    case DT_REG:
        entry.kind = FileKind::File;
        return true;
    case DT_DIR:
        entry.kind = FileKind::Folder;
        return true;
    case DT_LNK:
    case DT_UNKNOWN:
        break;
    default:
        entry.kind = FileKind::Other;
        return true;
    }
    struct stat status {};
    if (fstatat(dirfd(folder), found.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    entry.isLink = S_ISLNK(status.st_mode);
    if (entry.isLink && fstatat(dirfd(folder), found.d_name, &status, 0) != 0) {
        return false;
    }
    entry.kind = kindOf(status.st_mode);
    return true;
}

bool copyContent(int from, int to, struct stat const &source)
{
    constexpr std::size_t piece = 0x1000000;
    for (;;) {
        ssize_t const sent = sendfile(to, from, nullptr, piece);
        if (sent == 0) {
            break;
        }
        if (sent < 0 && errno != EINTR) {
            return false;
        }
    }
    timespec const times[2] = {{0, UTIME_OMIT}, source.st_mtim};
    return fchmod(to, source.st_mode & 0777) == 0 && futimens(to, times) == 0;
}

// Copies into a file that was made for it, which goes again if that fails.
bool fillOrRemove(int from, Handle &to, std::string const &path, struct stat const &source)
{
    if (copyContent(from, to.get(), source) && to.close()) {
        return true;
    }
    int const error = errno;
    unlink(path.c_str());
    return fail(error);
}

bool replaceByCopy(int from, std::string const &target, struct stat const &source)
{
    std::string aside = target + ".XXXXXX";
    Handle to(mkostemp(aside.data(), O_CLOEXEC));
    if (!to.isOpen() || !fillOrRemove(from, to, aside, source)) {
        return false;
    }
    if (std::rename(aside.c_str(), target.c_str()) == 0) {
        return true;
    }
    int const error = errno;
    unlink(aside.c_str());
    return fail(error);
}

} // namespace

bool fileStatus(char const *path, FileStatus &status)
{
    struct stat found {};
    if (stat(systemPath(path).c_str(), &found) != 0) {
        return false;
    }
    status.kind = kindOf(found.st_mode);
    status.id = {found.st_dev, found.st_ino};
    status.size = status.kind == FileKind::File ? static_cast<std::uint64_t>(found.st_size) : 0;
    status.modTime = found.st_mtim.tv_sec;
    return true;
}

bool listFolder(char const *path, std::vector<FolderEntry> &entries)
{
    entries.clear();
    std::string const name = systemPath(path);
    FolderPtr const folder(opendir(name.empty() ? "." : name.c_str()));
    if (folder == nullptr) {
        return false;
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): only two threads on one open folder would be in each other's way
    while (dirent const *const found = readdir(folder.get())) {
        if (std::strcmp(found->d_name, ".") == 0 || std::strcmp(found->d_name, "..") == 0 ||
            std::strchr(found->d_name, '\\') != nullptr) {
            continue;
        }
        FolderEntry entry;
        if (classify(folder.get(), *found, entry)) {
            entry.name = found->d_name;
            entries.push_back(std::move(entry));
        }
    }
    std::sort(entries.begin(), entries.end(),
              [](FolderEntry const &a, FolderEntry const &b) { return a.name < b.name; });
    return true;
}

bool removeFile(char const *path)
{
    return unlink(systemPath(path).c_str()) == 0;
}

bool copyFile(char const *from, char const *to, bool failIfExists)
{
    std::string const target = systemPath(to);
    // Without waiting for the other end of a pipe.
    Handle const in(::open(systemPath(from).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat source {};
    if (!in.isOpen() || fstat(in.get(), &source) != 0) {
        return false;
    }
    if (!S_ISREG(source.st_mode)) {
        return fail(S_ISDIR(source.st_mode) ? EISDIR : EINVAL);
    }

    struct stat before {};
    bool const exists = lstat(target.c_str(), &before) == 0;
    if (!exists || failIfExists) {
        Handle out(::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        return out.isOpen() && fillOrRemove(in.get(), out, target, source);
    }
    if (S_ISDIR(before.st_mode)) {
        return fail(EISDIR);
    }
    struct stat reached {};
    if (stat(target.c_str(), &reached) != 0) {
        return false;
    }
    if (reached.st_dev == source.st_dev && reached.st_ino == source.st_ino) {
        return fail(EEXIST);
    }
    // Rights and times are set as well, which no device would take well.
    if (!S_ISREG(reached.st_mode)) {
        return fail(EINVAL);
    }
    if (S_ISREG(before.st_mode) && before.st_nlink == 1) {
        if (access(target.c_str(), W_OK) != 0) {
            return false;
        }
        if (replaceByCopy(in.get(), target, source)) {
            return true;
        }
        // Its folder may take no other file.
        if (errno != EACCES || lseek(in.get(), 0, SEEK_SET) != 0) {
            return false;
        }
    }
    Handle out(::open(target.c_str(), O_WRONLY | O_TRUNC | O_NONBLOCK | O_CLOEXEC));
    return out.isOpen() && copyContent(in.get(), out.get(), source) && out.close();
}

bool moveFile(char const *from, char const *to)
{
    std::string const source = systemPath(from);
    std::string const target = systemPath(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    struct stat status {};
    if (errno == EINVAL || errno == ENOSYS) {
        // Not every file system can promise that nothing is replaced; a folder into itself fails again.
        if (lstat(target.c_str(), &status) == 0) {
            return fail(EEXIST);
        }
        return std::rename(source.c_str(), target.c_str()) == 0;
    }
    if (errno != EXDEV) {
        return false;
    }
    if (lstat(source.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return fail(EXDEV);
    }
    if (!copyFile(from, to, true)) {
        return false;
    }
    if (unlink(source.c_str()) == 0) {
        return true;
    }
    int const error = errno;
    unlink(target.c_str());
    return fail(error);
}

bool touchFile(char const *path)
{
    std::string const name = systemPath(path);
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        return fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    timespec const changeOnly[2] = {{0, UTIME_OMIT}, {0, UTIME_NOW}};
    if (utimensat(AT_FDCWD, name.c_str(), changeOnly, 0) == 0) {
        return true;
    }
    // Who may write to a file of somebody else may set both times to now, but not one of them.
    return (errno == EPERM || errno == EACCES) && utimensat(AT_FDCWD, name.c_str(), nullptr, 0) == 0;
}

} // namespace os
