#pragma once

#include "System/System/string.h"

#include <cstddef>

struct sf_private_tag;

/// A WAV file of 16 bits that is written bit by bit. What is louder than full is cut.
class WaveFile {
public:
    WaveFile() = default;
    WaveFile(WaveFile const &) = delete;
    WaveFile &operator=(WaveFile const &) = delete;
    ~WaveFile() { close(); }

    bool open(Qel::String const &path, unsigned int rate, unsigned int channels);
    bool isOpen() const { return m_file != nullptr; }

    /// @param samples  interleaved, 1 is full
    /// @return false, and nothing more is written, if it cannot be
    bool write(float const *samples, std::size_t frames);

    void close(); ///< completes its head

private:
    sf_private_tag *m_file = nullptr;
};
