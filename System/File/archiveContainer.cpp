#include "System/File/archiveContainer.h"

#include "System/File/archive.h"
#include "System/File/archiveManager.h"
#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/System/logManager.h"
#include "System/System/memtrackAllocator.h"
#include "System/System/pluginMgr.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace Qel {

namespace {

constexpr std::size_t nameRoom = 260;            // of a lookup, with the terminator
constexpr int namesTrusted = 65536;              // entries that room is taken for on an archive's word
constexpr int namelessTrusted = 65536;           // entries without a name in a row before the count is a lie
constexpr std::uint32_t tailFilled = 0x00100000; // bytes that a file may come short of

// Neither has to be destroyed, so archives and containers may die in any order.
constinit cArchiveContainer *firstContainer = nullptr;
constinit thread_local char threadMark = 0;

// A name in normal form. Only names that are not looked up by users can be longer than the room.
class NormalName {
public:
    explicit NormalName(char const *name)
    {
        char *normal = m_short;
        if (strnlen(name, nameRoom) == nameRoom) {
            m_long = name;
            normal = m_long.data();
        }
        StringTools::remap(normal, name, StringTools::getMapTable(MAP_PATH));
        m_text = normal;
    }

    NormalName(NormalName const &) = delete;
    NormalName &operator=(NormalName const &) = delete;

    char const *text() const { return m_text; }

private:
    char m_short[nameRoom];
    String m_long;
    char const *m_text;
};

bool askArchive(iArchive &archive, HashConstCharPtr const &file, FileInfo &info)
{
    if (!archive.findFile(file.text, &info, file.hash)) {
        return false;
    }
    info.name[sizeof info.name - 1] = '\0';
    return true;
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

void cArchiveContainer::checkNotChanging() const
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
        std::size_t const length = std::strlen(file.text);
        if (sFileEntry *const known = findFileEntry({file.text, file.hash, length, true})) {
            known->archive = owner;
        } else if (char const *const text = m_names.str_add(file.text)) {
            fresh.push_back({text, file.hash, static_cast<std::uint32_t>(length), owner});
        }
    }

    m_archives.push_back(&archive);
    std::stable_sort(fresh.begin(), fresh.end());
    auto const sorted = static_cast<std::ptrdiff_t>(m_files.size());
    m_files.insert(m_files.end(), fresh.begin(), fresh.end());
    std::inplace_merge(m_files.begin(), m_files.begin() + sorted, m_files.end());
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

// A name as it was written is compared as it stands: to bring it to normal form first would make each search
// wait for what it has just stored. And how much is compared is the name's own length, so that the processor
// can begin the next search while the entry and its text still come from memory.
bool cArchiveContainer::Wanted::operator==(sFileEntry const &entry) const
{
    if (entry.length != length) {
        return false;
    }
    if (isNormal) {
        return std::memcmp(entry.text, text, length) == 0;
    }
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    unsigned different = 0;
    for (std::size_t i = 0; i < length; ++i) {
        different |= map[static_cast<unsigned char>(text[i])] ^ static_cast<unsigned char>(entry.text[i]);
    }
    return different == 0;
}

cArchiveContainer::sFileEntry *cArchiveContainer::findFileEntry(Wanted const &wanted)
{
    HashIndex::Range const range = m_index.find(wanted.hash);
    sFileEntry *const first = m_files.data() + range.first;
    sFileEntry *const last = m_files.data() + range.last;
    if (last - first > 8) {
        // Names that were made to have one hash would make a long way through them, so it halves.
        NormalName const normal(wanted.text);
        sFileEntry const key{normal.text(), wanted.hash, 0, nullptr};
        sFileEntry *const place = std::lower_bound(first, last, key);
        return place != last && !(key < *place) ? place : nullptr;
    }
    sFileEntry *const found =
        std::find_if(first, last, [&](sFileEntry const &entry) { return wanted == entry; });
    return found != last ? found : nullptr;
}

bool cArchiveContainer::_findResource(char const *name, FileInfo *info)
{
    std::size_t const length = name == nullptr ? nameRoom : strnlen(name, nameRoom);
    if (length == nameRoom) {
        return false;
    }
    std::uint32_t const hash = StringTools::calcHash(name, StringTools::getMapTable(MAP_PATH));
    return findWanted({name, hash, length, false}, info);
}

bool cArchiveContainer::_findResource(HashConstCharPtr const &file, FileInfo *info)
{
    return file.text != nullptr && findWanted({file.text, file.hash, std::strlen(file.text), true}, info);
}

bool cArchiveContainer::findWanted(Wanted const &wanted, FileInfo *info)
{
    if (this != &mCommonArchives && mCommonArchives.findWanted(wanted, info)) {
        return true;
    }
    checkNotChanging();
    if (sFileEntry const *const entry = findFileEntry(wanted)) {
        return info == nullptr || askArchive(*entry->archive, {entry->text, entry->hash}, *info);
    }
    if (mInternals == nullptr) {
        return false;
    }
    NormalName const normal(wanted.text);
    HashConstCharPtr const file(normal.text(), wanted.hash);
    if (info == nullptr) {
        return mInternals->exists(file) || mInternals->findFile(file.text, nullptr, file.hash);
    }
    return askArchive(*mInternals, file, *info);
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
