#pragma once

#include "System/Graphics/image/image.h"

#include <cstddef>
#include <string>
#include <vector>

/// The pictures of a folder, read with the library's formats.
class Pictures {
public:
    struct Picture {
        std::string name;
        std::string kind;    ///< "TGA" and so on
        std::string trouble; ///< why it was not read; empty if it was
        Qel::cImage image;   ///< A8R8G8B8, in the colours that were meant
        int bits = 0;        ///< of a pixel as it was read
        double ms = 0.0;     ///< to read it from memory
    };

    /// @param folder  with all folders below it; an empty name is none
    explicit Pictures(std::string const &folder);

    std::vector<Picture> const &all() const { return m_pictures; }
    std::size_t numRead() const;

    /// All that were read, in their order, each as large as its place allows.
    /// @return A8R8G8B8; without pixels if there is no memory
    Qel::cImage contactSheet() const;

private:
    std::vector<Picture> m_pictures;
};
