#pragma once

#include <thread>
#include <vector>

namespace test {

/// Does the same work on so many threads at once and waits for all of them.
/// @param work gets the number of its thread, from 0
template <class Work>
void inThreads(int count, Work const &work)
{
    std::vector<std::jthread> threads;
    for (int index = 0; index < count; ++index) {
        threads.emplace_back([&work, index] { work(index); });
    }
}

} // namespace test
