#include "System/Time/multiFrameReport.h"

#include "System/System/logManager.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace Qel {

namespace {

constexpr std::size_t nameColumns = 70;
constexpr std::size_t dashCount = 119;
constexpr std::size_t deepestIndent = 20;
constexpr std::size_t deepestInSummary = 3;
constexpr char deepIndent[] = "                   *";
static_assert(sizeof deepIndent - 1 == deepestIndent);

constexpr char noEnd[] = "*** Profiling error: end event not found for %s\n";
constexpr char recursion[] = "*** Profiling error: recursion detected for event %s\n";

struct EventKey {
    std::string_view name;
    std::uint32_t threadId;

    bool operator==(EventKey const &) const = default;
};

struct EventKeyHash {
    std::size_t operator()(EventKey const &key) const
    {
        return std::hash<std::string_view>()(key.name) * 31 + key.threadId;
    }
};

bool isBegin(sProfileEvent const &event)
{
    return event.type == sProfileEvent::BEGIN || event.type == sProfileEvent::FRAME_BEGIN;
}

// For each event the next one of the same thread and name, or null.
std::vector<sProfileEvent const *> matches(std::span<sProfileEvent const> events)
{
    std::vector<sProfileEvent const *> next(events.size(), nullptr);
    std::unordered_map<EventKey, sProfileEvent const *, EventKeyHash> seen;
    for (std::size_t index = events.size(); index-- > 0;) {
        sProfileEvent const *&last = seen[{events[index].name, events[index].threadId}];
        next[index] = last;
        last = &events[index];
    }
    return next;
}

} // namespace

void MultiFrameReport::write(std::span<sProfileEvent const> events)
{
    if (!buildTree(events)) {
        std::fputs("Error encountered, no output created!\n", m_file);
        return;
    }
    printHeading();
    printDashes();
    printTree(true);
    printDashes();
    printDashes();
    printHeading();
    printDashes();
    printTree(false);
}

bool MultiFrameReport::buildTree(std::span<sProfileEvent const> events)
{
    m_nodes.reserve(events.size() + 1);
    newNode(nullptr, nullptr);
    std::vector<sProfileEvent const *> const next = matches(events);
    for (std::size_t index = 0; index < events.size(); ++index) {
        if (!isBegin(events[index])) {
            continue;
        }
        if (next[index] == nullptr) {
            error(noEnd, events[index].name);
            continue;
        }
        if (isBegin(*next[index])) {
            error(recursion, events[index].name);
            return false;
        }
        insert(events[index], *next[index]);
    }
    return true;
}

void MultiFrameReport::error(char const *format, char const *name)
{
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): one of the two texts above
    std::fprintf(m_file, format, name);
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage(format, name);
    }
}

MultiFrameReport::Index MultiFrameReport::newNode(sProfileEvent const *begin, sProfileEvent const *end)
{
    m_nodes.push_back({begin, end, none, none});
    return static_cast<Index>(m_nodes.size() - 1);
}

// The thread's node comes after those of all threads that came before.
MultiFrameReport::Thread &MultiFrameReport::threadOf(sProfileEvent const &event)
{
    auto const found =
        std::ranges::find_if(m_threads, [&](Thread const &thread) { return thread.id == event.threadId; });
    if (found != m_threads.end()) {
        return *found;
    }
    Index const node = newNode(&event, nullptr);
    (m_threads.empty() ? m_nodes.front().child : m_nodes[m_threads.back().node].sibling) = node;
    return m_threads.emplace_back(Thread{event.threadId, node, {}});
}

// An event goes below the first one of a level that ends after it begins, level by level, and else behind the
// last one of the level. Events come in the order of their beginnings, so of each level only the last one can
// still contain a new one, and the path of these is all there is to look at.
void MultiFrameReport::insert(sProfileEvent const &begin, sProfileEvent const &end)
{
    Thread &thread = threadOf(begin);
    std::vector<Step> &path = thread.path;
    auto const behind =
        std::ranges::partition_point(path, [&](Step const &step) { return step.earliestEnd > begin.tick; });

    Index const node = newNode(&begin, &end);
    if (behind != path.end()) {
        m_nodes[behind->node].sibling = node;
        path.erase(behind, path.end());
    } else {
        m_nodes[path.empty() ? thread.node : path.back().node].child = node;
    }
    path.push_back({node, path.empty() ? end.tick : std::min(end.tick, path.back().earliestEnd)});
}

void MultiFrameReport::printHeading()
{
    std::fprintf(m_file, "%-70s %5s %10s %10s %10s\n", "Event", "Thd", "Start", "End", "Duration");
}

void MultiFrameReport::printDashes()
{
    static std::string const line = std::string(dashCount, '-') + '\n';
    std::fputs(line.c_str(), m_file);
}

// Without recursion: a tree is as deep as the events nest.
void MultiFrameReport::printTree(bool summary)
{
    m_frame = 0;
    std::vector<Index> open{0};
    while (!open.empty()) {
        Index const index = open.back();
        if (index == none) {
            open.pop_back();
            continue;
        }
        Node const &node = m_nodes[index];
        std::size_t const depth = open.size() - 1;
        printNode(node, depth);
        open.back() = node.sibling;
        if (!summary || depth < deepestInSummary) {
            open.push_back(node.child);
        }
    }
}

void MultiFrameReport::printNode(Node const &node, std::size_t depth)
{
    if (node.begin == nullptr) {
        std::fputs("ROOT\n", m_file);
    } else if (node.end == nullptr) {
        std::fprintf(m_file, " Thread%u\n", node.begin->threadId);
    } else if (node.begin->type == sProfileEvent::FRAME_BEGIN) {
        printDashes();
        printEvent(node, depth);
        printDashes();
    } else {
        printEvent(node, depth);
    }
}

void MultiFrameReport::printEvent(Node const &node, std::size_t depth)
{
    char columns[nameColumns + 1];
    std::memset(columns, ' ', nameColumns);
    columns[nameColumns] = '\0';
    std::size_t const indent = std::min(depth, deepestIndent);
    if (depth > deepestIndent) {
        std::memcpy(columns, deepIndent, deepestIndent);
    }

    char frameName[32];
    char const *name = node.begin->name;
    if (node.begin->type == sProfileEvent::FRAME_BEGIN) {
        std::snprintf(frameName, sizeof frameName, "Frame %04u", m_frame++);
        name = frameName;
    }
    std::memcpy(columns + indent, name, strnlen(name, nameColumns - indent));

    double const start = microseconds(node.begin->tick);
    double const end = microseconds(node.end->tick);
    std::fprintf(m_file, "%s %5u %10.2f %10.2f %10.2f\n", columns, node.begin->threadId, start, end,
                 end - start);
}

double MultiFrameReport::microseconds(std::int64_t tick) const
{
    return static_cast<double>(tick - m_startTick) * 1'000'000.0 / m_frequency;
}

} // namespace Qel
