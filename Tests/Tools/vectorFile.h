#pragma once

#include "System/File/file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// A stream over a vector that fails where a test wants it to and tells what was done to it.
class VectorFile : public Qel::cFile {
public:
    VectorFile() = default;
    explicit VectorFile(std::string const &content) : bytes(content.begin(), content.end()) {}

    unsigned int read(void *buffer, unsigned int size) override
    {
        ++reads;
        std::size_t const left = bytes.size() > position ? bytes.size() - position : 0;
        auto const count = static_cast<unsigned int>(std::min({std::size_t{size}, left, maxRead}));
        if (count > 0) {
            std::memcpy(buffer, bytes.data() + position, count);
        }
        position += count;
        return count;
    }
    unsigned int write(void const *buffer, unsigned int size) override
    {
        ++writes;
        auto const count = static_cast<unsigned int>(std::min<std::size_t>(size, writeLimit));
        writeLimit -= count;
        if (bytes.size() < position + count) {
            bytes.resize(position + count);
        }
        if (count > 0) {
            std::memcpy(bytes.data() + position, buffer, count);
        }
        position += count;
        return count;
    }
    unsigned int seek(unsigned int to) override
    {
        ++seeks;
        position = canPassTheEnd ? to : std::min<std::size_t>(to, bytes.size());
        return 0;
    }
    unsigned int size() const override { return static_cast<unsigned int>(bytes.size()); }
    unsigned int tell() const override { return static_cast<unsigned int>(position); }
    Qel::eFileClass getType() const override { return Qel::FILECLASS_DISK; }

    bool async_read(void *buffer, unsigned int count, AsyncCallback callback, void *user) override
    {
        if (refuseAsync) {
            return false;
        }
        if (!late) {
            return cFile::async_read(buffer, count, callback, user);
        }
        std::size_t const from = position;
        waiting.push_back([=, this] {
            position = from;
            callback(read(buffer, count) + excess, user);
        });
        return true;
    }
    void completeNext()
    {
        auto const next = std::move(waiting.front());
        waiting.pop_front();
        next();
    }

    std::string content() const { return {bytes.begin(), bytes.end()}; }

    std::vector<unsigned char> bytes;
    std::size_t position = 0;
    std::size_t maxRead = SIZE_MAX;    ///< bytes of one read
    std::size_t writeLimit = SIZE_MAX; ///< bytes that will still be taken
    bool canPassTheEnd = true;         ///< as on a disk; else a seek stops there, as in memory
    bool late = false;                 ///< asynchronous reads wait for completeNext()
    bool refuseAsync = false;
    unsigned int excess = 0; ///< what a late read claims too much
    int reads = 0;
    int writes = 0;
    int seeks = 0;
    std::deque<std::function<void()>> waiting;
};

} // namespace test
