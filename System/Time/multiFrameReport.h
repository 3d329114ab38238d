#pragma once

#include "System/Time/multiFrameProfiler.h"

#include <cstdio>
#include <span>
#include <vector>

namespace Qel {

/// Turns the events of a capture into the text of the report.
class MultiFrameReport {
public:
    /// @param file       written to; not owned
    /// @param startTick  the time that the report counts from
    /// @param frequency  counts per second, above 0
    MultiFrameReport(std::FILE *file, std::int64_t startTick, std::int64_t frequency)
        : m_file(file), m_startTick(startTick), m_frequency(static_cast<double>(frequency))
    {
    }

    void write(std::span<sProfileEvent const> events);

private:
    using Index = std::uint32_t;
    static constexpr Index none = 0xFFFFFFFF;

    // The root has neither event, a thread's node only the first.
    struct Node {
        sProfileEvent const *begin = nullptr;
        sProfileEvent const *end = nullptr;
        Index child = none;
        Index sibling = none;
    };

    // The way to where a thread's next event goes: the last node of each level so far.
    struct Step {
        Index node;
        std::int64_t earliestEnd; // of this node and all above it
    };

    struct Thread {
        std::uint32_t id;
        Index node;
        std::vector<Step> path;
    };

    bool buildTree(std::span<sProfileEvent const> events);
    void insert(sProfileEvent const &begin, sProfileEvent const &end);
    Thread &threadOf(sProfileEvent const &event);
    Index newNode(sProfileEvent const *begin, sProfileEvent const *end);

    void error(char const *format, char const *name);
    void printTree(bool summary);
    void printNode(Node const &node, std::size_t depth);
    void printEvent(Node const &node, std::size_t depth);
    void printHeading();
    void printDashes();
    double microseconds(std::int64_t tick) const;

    std::FILE *m_file;
    std::int64_t m_startTick;
    double m_frequency;
    std::vector<Node> m_nodes;     // the root is the first
    std::vector<Thread> m_threads; // in the order in which they came
    std::uint32_t m_frame = 0;     // the next frame's number
};

} // namespace Qel
