#pragma once

#include "Tests/Fuzz/fuzzTarget.h"
#include "Tests/Tools/testParticles.h"

#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A file without a folder, for readers that want a path.
class FuzzFile {
public:
    FuzzFile() : m_handle(memfd_create("fuzz", 0)), m_path("/proc/self/fd/" + std::to_string(m_handle)) {}
    ~FuzzFile() { close(m_handle); }

    FuzzFile(FuzzFile const &) = delete;
    FuzzFile &operator=(FuzzFile const &) = delete;

    void set(void const *data, std::size_t size)
    {
        if (ftruncate(m_handle, 0) != 0 || pwrite(m_handle, data, size, 0) != static_cast<ssize_t>(size)) {
            std::abort();
        }
    }
    char const *path() const { return m_path.c_str(); }

private:
    int m_handle;
    std::string m_path;
};

/// All templates as the system's own streams, and what a few steps make of a system of each.
std::string stateOf(Qel::ParticleSystemMgr &manager);
