#include "Support/OS/sharedBlock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>

namespace os {

namespace {

constexpr std::size_t longestName = 200; // the folder takes 255, and the prefix needs some of it
constexpr int attempts = 1000;           // each one fails only when another user goes at that very moment

// Everything but letters and digits is written as its number, so that no name leaves the folder.
std::string fileName(char kind, char const *name)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    std::uint64_t hash = 0xcbf29ce484222325u; // FNV-1a, for the names that do not fit
    for (char const *at = name; *at != '\0'; ++at) {
        unsigned char const byte = static_cast<unsigned char>(*at);
        hash = (hash ^ byte) * 0x100000001b3u;
        if (text.size() >= longestName) {
            continue;
        }
        if ((byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z')) {
            text += *at;
        } else {
            text += {'_', digits[byte >> 4], digits[byte & 15]};
        }
    }
    if (text.size() >= longestName) {
        text.resize(longestName - 20);
        text += "__" + std::to_string(hash);
    }
    return "/dev/shm/qel-" + std::to_string(geteuid()) + '-' + kind + '-' + text;
}

bool lockFile(int handle, int operation)
{
    int result = 0;
    do {
        result = flock(handle, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

} // namespace

SharedBlock::SharedBlock(std::string path, int handle, std::size_t size)
    : m_path(std::move(path)), m_handle(handle), m_size(size), m_process(getpid())
{
}

std::shared_ptr<SharedBlock> SharedBlock::open(char kind, char const *name, std::size_t size, Prepare prepare)
{
    static std::mutex lock;
    static std::map<std::string, std::weak_ptr<SharedBlock>> opened;

    std::string const path = fileName(kind, name);
    std::lock_guard const guard(lock);
    std::erase_if(opened, [](auto const &entry) { return entry.second.expired(); });
    std::weak_ptr<SharedBlock> &known = opened[path];
    std::shared_ptr<SharedBlock> block = known.lock();
    if (block == nullptr || block->m_process != getpid()) {
        block = openFile(path, size, prepare);
        known = block;
    }
    return block;
}

std::shared_ptr<SharedBlock> SharedBlock::openFile(std::string const &path, std::size_t size, Prepare prepare)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        int const handle = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (handle < 0) {
            return nullptr;
        }
        std::shared_ptr<SharedBlock> block(new SharedBlock(path, handle, size));
        if (block->enter(prepare)) {
            return block;
        }
        if (block->isNamed()) {
            return nullptr; // a real failure, and not a file that its last user took away meanwhile
        }
    }
    return nullptr;
}

// Does the name still lead to the file that is open here?
bool SharedBlock::isNamed() const
{
    struct stat opened {};
    struct stat named {};
    return fstat(m_handle, &opened) == 0 && lstat(m_path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

bool SharedBlock::enter(Prepare prepare)
{
    struct stat file {};
    if (fstat(m_handle, &file) != 0 || !S_ISREG(file.st_mode) || file.st_uid != geteuid()) {
        return false;
    }

    bool const first = lockFile(m_handle, LOCK_EX | LOCK_NB);
    if (!first && !lockFile(m_handle, LOCK_SH)) {
        return false;
    }
    if (!isNamed()) {
        return false;
    }
    if (first && (ftruncate(m_handle, 0) != 0 || ftruncate(m_handle, static_cast<off_t>(m_size)) != 0)) {
        return false;
    }
    // A shorter file would turn the first access into a bus error.
    if (fstat(m_handle, &file) != 0 || file.st_size < static_cast<off_t>(m_size)) {
        return false;
    }

    void *const memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_handle, 0);
    if (memory == MAP_FAILED) {
        return false;
    }
    m_memory = memory;
    if (first && !prepare(m_memory)) {
        return false;
    }
    // Turning the lock into a shared one may let another first user in between. It then prepares the block
    // anew before anybody has used it.
    return !first || lockFile(m_handle, LOCK_SH);
}

SharedBlock::~SharedBlock()
{
    if (m_memory != nullptr) {
        munmap(m_memory, m_size);
    }
    if (m_process == getpid() && lockFile(m_handle, LOCK_EX | LOCK_NB) && isNamed()) {
        unlink(m_path.c_str());
    }
    close(m_handle);
}

} // namespace os
