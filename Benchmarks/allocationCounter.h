#pragma once

#include <cstddef>
#include <cstdint>

/// Counts what the whole program, its libraries included, takes from the system's allocator and from the
/// library's own lists while one of these exists. One at a time; on all threads.
class AllocationCounter {
public:
    AllocationCounter();
    ~AllocationCounter();

    AllocationCounter(AllocationCounter const &) = delete;
    AllocationCounter &operator=(AllocationCounter const &) = delete;

    std::uint64_t count() const; ///< blocks so far

private:
    std::uint64_t m_fromListsBefore;
};
