#include "mediaJob.h"

#include "settings.h"

#include "System/File/archive.h"
#include "System/File/archiveManager.h"
#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/math/crc32.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace {

constexpr auto timePerFrame = std::chrono::milliseconds(4);
constexpr auto patience = std::chrono::seconds(1); // with a streamer that delivers nothing
constexpr std::uint64_t unlimitedShare = 64u << 20;

double msSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

bool MediaJob::canMount(MediaPlaces const &places)
{
    auto const &types = Qel::ArchiveManager::Instance().getArchiveFactories();
    return !places.list.empty() && types.contains("FILESYSTEM") && types.contains("ZIP");
}

MediaJob::MediaJob(MediaPlaces places, bool quiet)
    : m_places(std::move(places)), m_progress(quiet), m_manager(*this)
{
    mount(m_places.folder, "FILESYSTEM");
    mount(m_places.zip, "ZIP"); // wins where both have a file
    if (!m_places.list.empty()) {
        m_list.addList(m_places.list);
    } else {
        if (!m_places.folder.empty()) {
            m_list.addFolder(m_places.folder);
        }
        if (!m_places.zip.empty()) {
            m_list.addZip(m_places.zip);
        }
    }
    findFiles();
    followBudget();
    m_budgetFrames = static_cast<int>(m_recent.size()); // nothing is loaded that an earlier one allowed
}

void MediaJob::mount(std::string const &path, char const *type)
{
    if (path.empty()) {
        return;
    }
    Qel::iArchive *const archive = Qel::ArchiveManager::Instance().load(Qel::String(path), type);
    if (archive == nullptr) {
        throw std::runtime_error(path + ": no plugin for archives of type " + type);
    }
    if (!archive->isLoaded()) {
        throw std::runtime_error(path + ": cannot be mounted as " + type + ", the log says why");
    }
    m_manager.addArchive(*archive);
    m_mounted.push_back({path, type, static_cast<std::size_t>(archive->getNumFiles()), 0, 0, archive});
}

void MediaJob::findFiles()
{
    Qel::StringVector names;
    m_manager.getFileListSelf(names, "*");
    std::size_t known = 0;
    for (Qel::String const &name : names) {
        Qel::FileInfo info;
        if (!m_manager._findResource(name.c_str(), &info)) {
            m_mistakes.push_back(std::string(name) + ": listed and not found");
            continue;
        }
        for (Mounted &mounted : m_mounted) {
            if (mounted.archive == info.archive) {
                ++mounted.found;
                mounted.bytes += info.size;
            }
        }
        known += m_list.holds(std::string(name)) ? 1 : 0;
        m_longest = std::max(m_longest, info.size);
        if (info.size == 0) {
            ++m_emptyFiles;
            continue;
        }
        m_byName.emplace(name, m_files.size());
        m_files.push_back({name, info.size});
    }
    m_leftOut = m_list.size() - known;
    if (m_leftOut > 0 && !m_places.list.empty()) {
        m_mistakes.push_back("files of the list that are not found: " + std::to_string(m_leftOut));
    }
    if (m_files.empty()) {
        m_mistakes.push_back("there is nothing to load");
    }
}

bool MediaJob::canKeepBudget() const
{
    return m_budget <= 0 || m_longest <= static_cast<std::uint64_t>(m_budget);
}

bool MediaJob::isRight() const
{
    bool const isAllCompared = m_notCompared == 0 || m_places.list.empty();
    return m_mistakes.empty() && m_compared > 0 && isAllCompared && (m_isBudgetKept || !canKeepBudget());
}

void MediaJob::followBudget()
{
    if (m_budget != settings::budget) {
        m_budget = settings::budget;
        m_budgetFrames = 0;
        m_peak = 0;
        m_manager.setMemoryBudget(static_cast<unsigned>(std::max(0, m_budget)));
    }
}

// What may be asked for in three frames.
std::uint64_t MediaJob::share() const
{
    return m_budget <= 0 ? unlimitedShare : static_cast<std::uint64_t>(m_budget) * 3 / 4;
}

void MediaJob::watchBudget()
{
    if (m_budgetFrames < static_cast<int>(m_recent.size())) {
        return; // what is there an earlier budget has allowed
    }
    std::uint64_t const usage = m_manager.getMemoryUsage();
    m_peak = std::max(m_peak, usage);
    if (m_budget > 0 && usage > static_cast<std::uint64_t>(m_budget)) {
        m_isBudgetKept = false;
    }
}

bool MediaJob::hasRoomFor(File const &file) const
{
    std::uint64_t const inUse = std::accumulate(m_recent.begin(), m_recent.end(), m_underWay);
    return inUse == 0 || inUse + file.size <= share();
}

bool MediaJob::frameStarted(Qel::FrameEvent const &)
{
    watchBudget();
    followBudget();
    if (m_phase == Phase::done) {
        return true;
    }
    pass().hasRun = true;
    if (m_phase == Phase::forced) {
        loadAtOnce();
    } else {
        loadInBackground();
    }
    m_progress.show(pass().name, m_ended, m_files.size(), "files");
    if (m_ended == m_files.size()) {
        endPass();
    }
    return true;
}

bool MediaJob::frameEnded(Qel::FrameEvent const &)
{
    watchBudget();
    std::rotate(m_recent.begin(), m_recent.end() - 1, m_recent.end());
    m_recent[0] = 0;
    if (m_underWay <= share()) {
        ++m_budgetFrames;
    }
    return true;
}

void MediaJob::loadAtOnce()
{
    Clock::time_point const start = Clock::now();
    while (m_next < m_files.size() && hasRoomFor(m_files[m_next]) && Clock::now() - start < timePerFrame) {
        File &file = m_files[m_next++];
        file.isAsked = true;
        file.asked = Clock::now();
        m_manager.streamResourceByName(file.name, Qel::PRIORITY_MOST_URGENT, nullptr);
        if (!file.isThere) {
            file.isAsked = false; // the manager may have asked the streamer, too
            ++m_ended;
            m_mistakes.push_back(std::string(file.name) + ": could not be loaded at once");
        }
    }
}

void MediaJob::loadInBackground()
{
    if (m_underWay > 0 && Clock::now() - m_lastLoad > patience) {
        giveUpOnMissing();
    }
    while (m_next < m_files.size() && hasRoomFor(m_files[m_next])) {
        File &file = m_files[m_next++];
        if (m_underWay == 0) {
            m_lastLoad = Clock::now();
        }
        m_underWay += file.size;
        file.isAsked = true;
        file.asked = Clock::now();
        m_manager.streamResourceByName(file.name, Qel::PRIORITY_MIDDLE, nullptr);
    }
}

// A streamer is silent about a file that it cannot read.
void MediaJob::giveUpOnMissing()
{
    Qel::cArchiveContainer::streamer->flushRequests();
    for (std::size_t i = 0; i < m_next; ++i) {
        File &file = m_files[i];
        if (file.isAsked && !file.isThere) {
            file.isAsked = false;
            ++m_ended;
            m_mistakes.push_back(std::string(file.name) + ": could not be loaded in the background");
        }
    }
    m_underWay = 0;
}

void MediaJob::endPass()
{
    bool const hasStreamer = Qel::cArchiveContainer::streamer != nullptr;
    m_phase = m_phase == Phase::forced && hasStreamer ? Phase::streamed : Phase::done;
    if (m_phase == Phase::streamed) {
        m_manager.clear();
        m_next = 0;
        m_ended = 0;
        for (File &file : m_files) {
            file.isAsked = false;
            file.isThere = false;
        }
    }
}

void MediaJob::loaded(Qel::String const &name, PoolBlk const &bytes)
{
    watchBudget();
    auto const place = m_byName.find(std::string(name));
    if (place == m_byName.end() || !m_files[place->second].isAsked || m_files[place->second].isThere) {
        return;
    }
    File &file = m_files[place->second];
    double const ms = msSince(file.asked);
    m_lastLoad = Clock::now();
    file.isThere = true;
    ++m_ended;
    if (m_phase == Phase::streamed) {
        m_underWay -= file.size;
    }
    m_recent[0] += bytes.size();

    Pass &now = pass();
    ++now.loads;
    now.bytes += bytes.size();
    now.msInAll += ms;
    now.longestMs = std::max(now.longestMs, ms);
    compare(name, bytes);
}

void MediaJob::unloaded(Qel::String const &)
{
    if (m_phase != Phase::done) {
        ++pass().evictions;
    }
}

void MediaJob::compare(Qel::String const &name, PoolBlk const &bytes)
{
    std::optional<MediaList::Contents> const wanted = m_list.find(std::string(name));
    if (!wanted) {
        ++m_notCompared;
        return;
    }
    ++m_compared;
    Qel::cCRC32 crc;
    std::uint32_t const is = ~crc.calcCRC(static_cast<unsigned char const *>(bytes.data()), bytes.size());
    if (is != wanted->crc || bytes.size() != wanted->size) {
        char text[128];
        std::snprintf(text, sizeof text, ": %u bytes with checksum %08x, should be %llu with %08x",
                      bytes.size(), is, static_cast<unsigned long long>(wanted->size), wanted->crc);
        m_mistakes.push_back(std::string(name) + text);
    }
}
