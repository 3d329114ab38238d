#include "System/File/archiveContainer.h"

#include "System/File/archive.h"
#include "System/File/archiveManager.h"
#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/System/logManager.h"
#include "System/System/memtrackAllocator.h"
#include "System/System/pluginMgr.h"
#include "System/math/nameHash.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <numeric>

namespace Qel {

namespace {

constexpr std::size_t nameRoom = 260;            // of a lookup, with the terminator
constexpr int namesTrusted = 65536;              // entries that room is taken for on an archive's word
constexpr int namelessTrusted = 65536;           // entries without a name in a row before the count is a lie
constexpr std::uint32_t tailFilled = 0x00100000; // bytes that a file may come short of

// Neither has to be destroyed, so archives and containers may die in any order.
constinit cArchiveContainer *firstContainer = nullptr;
constinit thread_local char threadMark = 0;

bool askArchive(iArchive &archive, HashConstCharPtr const &file, FileInfo &info)
{
    if (!archive.findFile(file.text, &info, file.hash)) {
        return false;
    }
    info.name[sizeof info.name - 1] = '\0';
    return true;
}

// The archive of last resort is asked though it may not list the file.
bool askInternals(iArchive &archive, HashConstCharPtr const &file, FileInfo *info)
{
    if (info != nullptr) {
        return askArchive(archive, file, *info);
    }
    return archive.exists(file) || archive.findFile(file.text, nullptr, file.hash);
}

iArchive *loadArchive(String const &name, String const &type)
{
    ArchiveManager *const manager = ArchiveManager::InstancePtr();
    return manager == nullptr ? nullptr : manager->load(name, type);
}

} // namespace

cArchiveContainer cArchiveContainer::mCommonArchives;
iArchive *cArchiveContainer::mExternals = nullptr;
iArchive *cArchiveContainer::mInternals = nullptr;
iArchiveStreaming *cArchiveContainer::streamer = nullptr;
bool cArchiveContainer::mEnableStreaming = true;

// While one exists, the calling thread changes the container. Changes may nest on one thread.
class cArchiveContainer::ChangeScope {
public:
    explicit ChangeScope(cArchiveContainer &container) : m_container(container)
    {
        container.checkNotChanging();
        m_before = container.m_changedBy.exchange(&threadMark, std::memory_order_relaxed);
    }
    ~ChangeScope() { m_container.m_changedBy.store(m_before, std::memory_order_relaxed); }

    ChangeScope(ChangeScope const &) = delete;
    ChangeScope &operator=(ChangeScope const &) = delete;

private:
    cArchiveContainer &m_container;
    void const *m_before;
};

inline void cArchiveContainer::checkNotChanging() const
{
    [[maybe_unused]] void const *const changer = m_changedBy.load(std::memory_order_relaxed);
    QEL_ASSERT(changer == nullptr || changer == &threadMark);
}

bool cArchiveContainer::sFileEntry::operator<(sFileEntry const &other) const
{
    return hash != other.hash ? hash < other.hash : std::strcmp(text, other.text) < 0;
}

cArchiveContainer::cArchiveContainer() : m_names(0, 4096, stringMemoryContext), m_next(firstContainer)
{
    if (m_next != nullptr) {
        m_next->m_previous = this;
    }
    firstContainer = this;
}

cArchiveContainer::~cArchiveContainer()
{
    if (m_next != nullptr) {
        m_next->m_previous = m_previous;
    }
    (m_previous != nullptr ? m_previous->m_next : firstContainer) = m_next;
}

void cArchiveContainer::addArchive(iArchive &archive)
{
    ChangeScope const changing(*this);
    int const count = archive.getNumFiles();
    std::vector<sFileEntry> fresh;
    fresh.reserve(static_cast<std::size_t>(std::clamp(count, 0, namesTrusted)));

    // The table stays as it is meanwhile: an archive may look something up while it is asked.
    int nameless = 0;
    for (int i = 0; i < count && nameless < namelessTrusted; ++i) {
        HashConstCharPtr const file = archive.getFile(i);
        if (file.text == nullptr) {
            ++nameless;
            continue;
        }
        nameless = 0;
        iArchive *const owner = mExternals != nullptr && mExternals->exists(file) ? mExternals : &archive;
        sFileEntry entry{nullptr, file.hash, 0, owner, {}};
        Wanted const wanted = wantedOf(file, entry.head);
        if (sFileEntry *const known = findFileEntry(wanted)) {
            known->archive = owner;
        } else if (char const *const text = m_names.str_add(file.text)) {
            entry.text = text;
            entry.length = wanted.length;
            // It may be there already.
            std::memmove(entry.head, wanted.head, sizeof entry.head);
            fresh.push_back(entry);
        }
    }

    m_archives.push_back(&archive);
    // By their numbers and not in place: the room that the standard library takes for the latter is not
    // aligned as the entries are.
    std::vector<std::uint32_t> order(fresh.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return fresh[a] < fresh[b]; });
    std::vector<sFileEntry> files;
    files.reserve(m_files.size() + fresh.size());
    auto known = m_files.begin();
    for (std::uint32_t const next : order) {
        auto const before = std::upper_bound(known, m_files.end(), fresh[next]);
        files.insert(files.end(), known, before);
        files.push_back(fresh[next]);
        known = before;
    }
    files.insert(files.end(), known, m_files.end());
    m_files.swap(files);
    indexFiles();
}

void cArchiveContainer::indexFiles()
{
    m_index.build(m_files, [](sFileEntry const &entry) { return entry.hash; });
}

void cArchiveContainer::addArchive(String const &name, String const &type)
{
    std::printf("addArchive(%s,%s)\n", name.c_str(), type.c_str());
    std::fflush(stdout);
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("cArchiveContainer::addArchive(\"%s\",%s)\n", name.c_str(), type.c_str());
    }
    if (iArchive *const archive = loadArchive(name, type)) {
        addArchive(*archive);
    }
}

void cArchiveContainer::addCommonArchive(String const &name, String const &type)
{
    mCommonArchives.addArchive(name, type);
}

void cArchiveContainer::setInternals(String const &name, String const &type)
{
    mInternals = loadArchive(name, type);
}

void cArchiveContainer::refreshExternals(String const &path)
{
    if (mExternals != nullptr) {
        mExternals->refresh();
    } else {
        mExternals = loadArchive(path, "FILESYSTEM");
    }
}

void cArchiveContainer::refreshArchive()
{
    std::vector<iArchive *> const mounted = m_archives;
    cleanupArchives();
    for (iArchive *const archive : mounted) {
        archive->refresh();
        addArchive(*archive);
    }
}

void cArchiveContainer::refreshCommonArchive()
{
    mCommonArchives.refreshArchive();
}

void cArchiveContainer::cleanupArchives()
{
    if (streamer != nullptr) {
        streamer->flushRequests();
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("cArchiveContainer::cleanupArchives() vfs=%d arcfs=%d\n",
                                    static_cast<int>(m_archives.size()), static_cast<int>(m_files.size()));
    }
    ChangeScope const changing(*this);
    m_archives.clear();
    m_files.clear();
    m_index.clear();
    m_names.clear();
}

void cArchiveContainer::setStreamingMgr(iArchiveStreaming *manager)
{
    if (streamer != nullptr && streamer != manager) {
        PluginMgr::unregistered(streamer);
    }
    streamer = manager;
    if (manager != nullptr) {
        PluginMgr::registered(manager, [manager] {
            if (streamer == manager) {
                streamer = nullptr;
            }
        });
    }
}

void cArchiveContainer::_forgetArchive(iArchive &archive)
{
    if (mExternals == &archive) {
        mExternals = nullptr;
    }
    if (mInternals == &archive) {
        mInternals = nullptr;
    }
    for (cArchiveContainer *container = firstContainer; container != nullptr; container = container->m_next) {
        container->forget(archive);
    }
}

void cArchiveContainer::forget(iArchive &archive)
{
    // Loose files have entries in containers that never mounted their archive, so all tables are looked at.
    std::erase(m_archives, &archive);
    if (std::erase_if(m_files, [&](sFileEntry const &entry) { return entry.archive == &archive; }) > 0) {
        ChangeScope const changing(*this);
        indexFiles();
    }
}

// What a lookup compares has one size, so that the processor can go on to the next name while the entry still
// comes from memory.
inline bool cArchiveContainer::Wanted::operator==(sFileEntry const &entry) const
{
    constexpr std::size_t headSize = sizeof entry.head;
    std::uint64_t mine[headSize / 8];
    std::uint64_t its[headSize / 8];
    std::memcpy(mine, head, headSize);
    std::memcpy(its, entry.head, headSize);
    std::uint64_t different = length ^ entry.length;
    for (std::size_t i = 0; i < headSize / 8; ++i) {
        different |= mine[i] ^ its[i];
    }
    return different == 0 && (length <= headSize ||
                              std::memcmp(entry.text + headSize, text + headSize, length - headSize) == 0);
}

// The head is used for a name that is too short to be looked at that far.
cArchiveContainer::Wanted cArchiveContainer::wantedOf(HashConstCharPtr const &file, NameHead &head)
{
    std::size_t const length = std::strlen(file.text);
    Wanted wanted{file.text, file.hash, static_cast<std::uint32_t>(length), file.text};
    if (length < sizeof head) {
        std::memset(head, 0, sizeof head);
        std::memcpy(head, file.text, length);
        wanted.head = head;
    }
    return wanted;
}

inline cArchiveContainer::sFileEntry *cArchiveContainer::findFileEntry(Wanted const &wanted)
{
    HashIndex::Range const range = m_index.find(wanted.hash);
    sFileEntry *const first = m_files.data() + range.first;
    sFileEntry *const last = m_files.data() + range.last;
    if (last - first > 8) {
        // Names that were made to have one hash would make a long way through them, so it halves.
        sFileEntry *const place =
            std::lower_bound(first, last, wanted, [](sFileEntry const &entry, Wanted const &name) {
                return std::strcmp(entry.text, name.text) < 0;
            });
        return place != last && wanted == *place ? place : nullptr;
    }
    for (sFileEntry *entry = first; entry != last; ++entry) {
        if (wanted == *entry) {
            return entry;
        }
    }
    return nullptr;
}

bool cArchiveContainer::_findResource(char const *name, FileInfo *info)
{
    if (name == nullptr) {
        return false;
    }
    alignas(64) char normal[nameRoom];
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    NameHash measured = mapShortName(name, map, normal);
    if (measured.length == shortNameRoom) {
        std::size_t const length = strnlen(name, nameRoom);
        if (length == nameRoom) {
            return false;
        }
        StringTools::remap(normal, name, map);
        measured = hashName(normal);
    }
    return findWanted({normal, measured.hash, measured.length, normal}, info);
}

bool cArchiveContainer::_findResource(HashConstCharPtr const &file, FileInfo *info)
{
    NameHead head;
    return file.text != nullptr && findWanted(wantedOf(file, head), info);
}

inline bool cArchiveContainer::findHere(Wanted const &wanted, FileInfo *info)
{
    checkNotChanging();
    if (sFileEntry const *const entry = findFileEntry(wanted)) {
        return info == nullptr || askArchive(*entry->archive, {entry->text, entry->hash}, *info);
    }
    return mInternals != nullptr && askInternals(*mInternals, {wanted.text, wanted.hash}, info);
}

bool cArchiveContainer::findWanted(Wanted const &wanted, FileInfo *info)
{
    return (this != &mCommonArchives && mCommonArchives.findHere(wanted, info)) || findHere(wanted, info);
}

bool cArchiveContainer::_findResourceData(char const *name, PoolBlk &block, unsigned int memoryContext,
                                          FileInfo *info)
{
    FileInfo own;
    FileInfo &record = info != nullptr ? *info : own;
    return _findResource(name, &record) && _readResourceData(record, block, memoryContext) > 0;
}

unsigned int cArchiveContainer::_readResourceData(FileInfo &info, PoolBlk &block, unsigned int memoryContext)
{
    if (info.archive == nullptr || !block.alloc(info.size, memoryContext)) {
        return 0;
    }
    std::uint32_t const size = block.size();
    std::uint32_t const read = std::min(size, info.archive->readFile(&info, block.data(), size, info.handle));
    std::uint32_t const lacking = size - read;
    if (read == 0 || lacking > tailFilled) {
        return 0;
    }
    std::memset(static_cast<char *>(block.data()) + read, 0, lacking);
    return read;
}

unsigned int cArchiveContainer::getFileList(StringVector &out, char const *pattern) const
{
    getFileListSelf(out, pattern);
    if (this != &mCommonArchives) {
        mCommonArchives.getFileList(out, pattern);
    }
    return static_cast<unsigned int>(out.size());
}

unsigned int cArchiveContainer::getFileListSelf(StringVector &out, char const *pattern) const
{
    checkNotChanging();
    bool const all = pattern == nullptr || std::strcmp(pattern, "*") == 0;
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    for (sFileEntry const &entry : m_files) {
        if (all || StringTools::wcMatch(pattern, entry.text, map)) {
            out.emplace_back(entry.text);
        }
    }
    return static_cast<unsigned int>(out.size());
}

} // namespace Qel
