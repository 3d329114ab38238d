#include "Tests/Codec/plainDecoders.h"

#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

namespace plain {

namespace {

template <class Bits>
Bits bitsOf(std::string const &stream)
{
    return Bits(std::vector<unsigned char>(stream.begin(), stream.end()));
}

struct Node {
    int symbol = -1;
    std::unique_ptr<Node> child[2];
};

// Null for a tree that ends too early or has more nodes than are left.
std::unique_ptr<Node> load(Qel::cFileBitOld &from, int &left)
{
    if (--left < 0) {
        return nullptr;
    }
    auto node = std::make_unique<Node>();
    if (from.read_bit()) {
        bool const whole = (node->child[0] = load(from, left)) && (node->child[1] = load(from, left));
        return whole ? std::move(node) : nullptr;
    }
    bool const isThere = (from.tell() + 7) / 8 * 8 + 8 <= from.size();
    unsigned char byte = 0;
    from.read(&byte, 1);
    node->symbol = byte;
    return isThere ? std::move(node) : nullptr;
}

} // namespace

std::string decodeHuffman(std::string const &stream)
{
    std::uint32_t count = 0;
    std::memcpy(&count, stream.data(), sizeof(count));
    auto bits = bitsOf<Qel::cFileBitOld>(stream.substr(sizeof(count)));
    int nodes = 511;
    std::unique_ptr<Node> const root = load(bits, nodes);
    std::string data;
    for (std::uint32_t i = 0; root != nullptr && i < count; ++i) {
        Node const *node = root.get();
        while (node->symbol < 0) {
            node = node->child[bits.read_bit()].get();
        }
        data += static_cast<char>(node->symbol);
    }
    return data;
}

std::string decodeLz77(std::string const &stream)
{
    auto bits = bitsOf<Qel::cFileBit>(stream);
    std::vector<char> window(4096);
    std::string data;
    auto const put = [&](char c) {
        data += c;
        window[data.size() % window.size()] = c;
    };
    for (;;) {
        if (bits.read_bit()) {
            put(static_cast<char>(bits.read_bits(8)));
            continue;
        }
        unsigned const position = bits.read_bits(12);
        if (position == 0) {
            return data;
        }
        unsigned const length = bits.read_bits(4) + 2;
        for (unsigned i = 0; i < length; ++i) {
            put(window[(position + i) % window.size()]);
        }
    }
}

std::string decodeLzw(std::string const &stream)
{
    constexpr unsigned end = 256, bump = 257, flush = 258, first = 259;
    auto bits = bitsOf<Qel::cFileBit>(stream);
    std::string data;
    for (;;) {
        std::vector<std::string> texts; // of the codes from the first on
        unsigned width = 9;
        auto const next = [&] { return bits.size() - bits.tell() >= width ? bits.read_bits(width) : end; };
        unsigned code = next();
        if (code > 255) {
            return data;
        }
        std::string old(1, static_cast<char>(code));
        data += old;
        while ((code = next()) != flush) {
            if (code == bump && ++width <= 15) {
                continue;
            }
            if (code == bump || code == end || code > first + texts.size() || first + texts.size() > 32'767) {
                return data;
            }
            texts.push_back(old);
            std::string const start =
                code < 256 ? std::string(1, static_cast<char>(code)) : texts[code - first];
            texts.back() += start[0];
            old = code < 256 ? start : texts[code - first];
            data += old;
        }
    }
}

std::string decodeMtf(std::string const &stream)
{
    std::string table(256, '\0');
    std::iota(table.begin(), table.end(), '\0');
    std::string data;
    for (char const place : stream) {
        char const symbol = table[static_cast<unsigned char>(place)];
        data += symbol;
        table.erase(static_cast<unsigned char>(place), 1).insert(table.begin(), symbol);
    }
    return data;
}

} // namespace plain
