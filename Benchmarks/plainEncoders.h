#pragma once

#include <string>

/// The encoders in their simplest form, bit by bit and node by node: peers of the library's.
namespace plain {

std::string encodeHuffman(std::string const &data);
std::string encodeLz77(std::string const &data);
std::string encodeLzw(std::string const &data);
std::string encodeMtf(std::string const &data);

} // namespace plain
