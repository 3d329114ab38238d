#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <stdlib.h>

namespace test {

/// An empty folder that is the working folder while the object lives, and is gone after that.
class TempFolder {
public:
    TempFolder() : m_before(std::filesystem::current_path())
    {
        std::string name = (std::filesystem::temp_directory_path() / "qelXXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = name;
        std::filesystem::current_path(m_path);
    }

    ~TempFolder()
    {
        std::filesystem::current_path(m_before);
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    TempFolder(TempFolder const &) = delete;
    TempFolder &operator=(TempFolder const &) = delete;

    std::filesystem::path const &path() const { return m_path; }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

inline std::string readFile(std::filesystem::path const &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void writeFile(std::filesystem::path const &path, std::string const &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace test
