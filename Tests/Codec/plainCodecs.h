#pragma once

#include <string>

/// The codecs in their simplest form, bit by bit and node by node: what the library's are held against.
namespace plain {

std::string encodeHuffman(std::string const &data);
std::string decodeHuffman(std::string const &stream); ///< nothing if the tree is not there in full

std::string encodeLz77(std::string const &data);
std::string decodeLz77(std::string const &stream);

std::string encodeLzw(std::string const &data);
std::string decodeLzw(std::string const &stream); ///< stops where no encoder could have written what comes

std::string encodeMtf(std::string const &data);
std::string decodeMtf(std::string const &stream);

} // namespace plain
