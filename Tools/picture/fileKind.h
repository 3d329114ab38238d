#pragma once

#include "System/Graphics/image/imageIO.h"

#include <memory>
#include <string>
#include <string_view>

/// What a picture's file is, by its bytes.
struct FileKind {
    std::string name = {};    ///< "TGA" and so on; empty for bytes that are no picture
    std::string size = {};    ///< "640 x 480" as the head has it; empty if there is none
    std::string details = {}; ///< bits, packing, order of rows, as the head has them
    std::string trouble = {}; ///< why no reader takes it, or what comes out of it that was not meant
    unsigned int pictures = 1;
    bool isReadable = true; ///< the head promises what a reader takes
};

/// @param index  which picture of an icon
FileKind fileKindOf(std::string_view bytes, unsigned int index = 0);

/// @return the reader for a name of fileKindOf(); null if there is none
std::unique_ptr<Qel::iImageIO> readerOf(std::string const &name);
