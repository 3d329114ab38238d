#pragma once

#include "Tests/Tools/tempFolder.h"

#include <filesystem>
#include <string>

namespace modelFuzz {

/// A file of any bytes, since models are read by name; gone when the program ends.
class InputFile {
public:
    InputFile()
    {
        std::string folder = (std::filesystem::temp_directory_path() / "qelXXXXXX").string();
        m_folder = mkdtemp(folder.data()) == nullptr ? "." : folder;
        m_name = (m_folder / "input").string();
    }
    ~InputFile()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    InputFile(InputFile const &) = delete;
    InputFile &operator=(InputFile const &) = delete;

    char const *name() const { return m_name.c_str(); }
    std::string content() const { return test::readFile(m_name); }
    void fill(unsigned char const *data, std::size_t size) const
    {
        test::writeFile(m_name, std::string(reinterpret_cast<char const *>(data), size));
    }

private:
    std::filesystem::path m_folder;
    std::string m_name;
};

/// Adds the bytes of a value to an answer.
template <class Value>
void add(std::string &answer, Value const &value)
{
    answer.append(reinterpret_cast<char const *>(&value), sizeof value);
}

} // namespace modelFuzz
