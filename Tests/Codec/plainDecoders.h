#pragma once

#include <string>

/// The decoders in their simplest form, bit by bit and node by node: what the library's make of a broken
/// stream is held against them.
namespace plain {

std::string decodeHuffman(std::string const &stream); ///< nothing if the tree is not there in full
std::string decodeLz77(std::string const &stream);
std::string decodeLzw(std::string const &stream); ///< stops where no encoder could have written what comes
std::string decodeMtf(std::string const &stream);

} // namespace plain
