#pragma once

#include "Tests/Tools/tempFolder.h"

#include <cstddef>
#include <string>

#include <sys/mman.h>

namespace modelFuzz {

/// A file of any bytes in memory, since models are read and written by name, and a disk would take nearly all
/// of the time.
class InputFile {
public:
    char const *name() const { return m_name.c_str(); }
    std::string content() const { return test::readFile(m_name); }
    void fill(unsigned char const *data, std::size_t size) const
    {
        test::writeFile(m_name, std::string(reinterpret_cast<char const *>(data), size));
    }

private:
    std::string m_name = "/proc/self/fd/" + std::to_string(memfd_create("model", MFD_CLOEXEC));
};

/// Adds the bytes of a value to an answer.
template <class Value>
void add(std::string &answer, Value const &value)
{
    answer.append(reinterpret_cast<char const *>(&value), sizeof value);
}

} // namespace modelFuzz
