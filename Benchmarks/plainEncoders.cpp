#include "plainEncoders.h"

#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

namespace plain {

namespace {

using Qel::cFileBit;
using Qel::cFileBitOld;

template <class Bits>
std::string content(Bits &bits)
{
    return {reinterpret_cast<char const *>(bits.getData()), bits.getNumBytes()};
}

template <class Bits>
Bits bitsOf(std::string const &stream)
{
    return Bits(std::vector<unsigned char>(stream.begin(), stream.end()));
}

std::string number(std::uint32_t value)
{
    return {reinterpret_cast<char const *>(&value), sizeof(value)};
}

unsigned byteAt(std::string const &data, std::size_t at)
{
    return static_cast<unsigned char>(data[at]);
}

struct Node {
    int symbol = -1;
    std::int64_t count = 0;
    std::vector<bool> bits;
    Node *child[2] = {nullptr, nullptr};

    void addBit(bool bit)
    {
        bits.insert(bits.begin(), bit);
        for (Node *const below : child) {
            if (below != nullptr) {
                below->addBit(bit);
            }
        }
    }
    void save(cFileBitOld &to) const
    {
        to.write_bit(symbol < 0);
        if (symbol < 0) {
            child[0]->save(to);
            child[1]->save(to);
        } else {
            auto const byte = static_cast<unsigned char>(symbol);
            to.write(&byte, 1);
        }
    }
};

struct Nodes {
    std::vector<std::unique_ptr<Node>> all;

    Node *make(int symbol)
    {
        all.push_back(std::make_unique<Node>());
        all.back()->symbol = symbol;
        return all.back().get();
    }
    // Null for a tree that ends too early or has more than 256 leaves.
    Node *load(cFileBitOld &from)
    {
        Node *const node = make(-1);
        if (all.size() > 511) {
            return nullptr;
        }
        if (from.read_bit()) {
            bool const whole = (node->child[0] = load(from)) != nullptr && (node->child[1] = load(from));
            return whole ? node : nullptr;
        }
        bool const isThere = (from.tell() + 7) / 8 * 8 + 8 <= from.size();
        unsigned char byte = 0;
        from.read(&byte, 1);
        node->symbol = byte;
        return isThere ? node : nullptr;
    }
};

} // namespace

std::string encodeHuffman(std::string const &data)
{
    Nodes nodes;
    std::vector<Node *> leaves;
    for (int symbol = 0; symbol < 256; ++symbol) {
        leaves.push_back(nodes.make(symbol));
    }
    for (std::size_t i = 0; i < data.size(); ++i) {
        ++leaves[byteAt(data, i)]->count;
    }
    std::vector<Node *> table = leaves;
    while (table.size() > 1 && table.back()->count == 0) {
        table.pop_back();
    }
    while (table.size() > 1) {
        Node *const inner = nodes.make(-1);
        for (int side = 0; side < 2; ++side) {
            inner->child[side] = table.back();
            table.pop_back();
            inner->child[side]->addBit(side == 1);
            inner->count += inner->child[side]->count;
        }
        auto at = table.begin();
        while (at != table.end() && (*at)->count >= inner->count) {
            ++at;
        }
        table.insert(at, inner);
    }
    cFileBitOld bits;
    table[0]->save(bits);
    for (std::size_t i = 0; i < data.size(); ++i) {
        for (bool const bit : leaves[byteAt(data, i)]->bits) {
            bits.write_bit(bit);
        }
    }
    return number(static_cast<std::uint32_t>(data.size())) + content(bits);
}

namespace {

constexpr int windowSize = 4096;
constexpr int lookAhead = 17;
constexpr int anchor = windowSize;

struct Tree {
    struct Place {
        int parent, smaller, larger;
    };

    unsigned char window[windowSize] = {};
    Place tree[windowSize + 1] = {};

    int &linkTo(int node)
    {
        Place &parent = tree[tree[node].parent];
        return parent.larger == node ? parent.larger : parent.smaller;
    }
    void contract(int old, int fresh)
    {
        linkTo(old) = fresh;
        if (fresh != 0) {
            tree[fresh].parent = tree[old].parent;
        }
        tree[old].parent = 0;
    }
    void replace(int old, int fresh)
    {
        linkTo(old) = fresh;
        tree[fresh] = tree[old];
        for (int const child : {tree[fresh].smaller, tree[fresh].larger}) {
            if (child != 0) {
                tree[child].parent = fresh;
            }
        }
        tree[old].parent = 0;
    }
    void remove(int p)
    {
        if (tree[p].parent == 0) {
            return;
        }
        if (tree[p].smaller == 0 || tree[p].larger == 0) {
            contract(p, tree[p].smaller == 0 ? tree[p].larger : tree[p].smaller);
            return;
        }
        int next = tree[p].smaller;
        while (tree[next].larger != 0) {
            next = tree[next].larger;
        }
        remove(next);
        replace(p, next);
    }
    int add(int fresh, int &position)
    {
        if (fresh == 0) {
            return 0;
        }
        int best = 0;
        for (int test = tree[anchor].larger;;) {
            int i = 0;
            int delta = 0;
            for (; i < lookAhead; ++i) {
                delta = window[(fresh + i) % windowSize] - window[(test + i) % windowSize];
                if (delta != 0) {
                    break;
                }
            }
            if (i >= best) {
                best = i;
                position = test;
                if (i >= lookAhead) {
                    replace(test, fresh);
                    return best;
                }
            }
            int &child = delta < 0 ? tree[test].smaller : tree[test].larger;
            if (child == 0) {
                child = fresh;
                tree[fresh] = {test, 0, 0};
                return best;
            }
            test = child;
        }
    }
};

} // namespace

std::string encodeLz77(std::string const &data)
{
    auto const tree = std::make_unique<Tree>();
    cFileBit bits;
    std::size_t next = 0;
    int ahead = 0;
    for (; ahead < lookAhead && next < data.size(); ++ahead) {
        tree->window[1 + ahead] = static_cast<unsigned char>(data[next++]);
    }
    tree->tree[anchor].larger = 1;
    tree->tree[1].parent = anchor;
    int current = 1;
    int length = 0;
    int position = 0;
    while (ahead > 0) {
        length = std::min(length, ahead);
        int count = length;
        if (length <= 1) {
            bits.write_bit(true);
            bits.write_bits(tree->window[current], 8);
            count = 1;
        } else {
            bits.write_bit(false);
            bits.write_bits(static_cast<unsigned>(position), 12);
            bits.write_bits(static_cast<unsigned>(length - 2), 4);
        }
        for (int i = 0; i < count; ++i) {
            int const behind = (current + lookAhead) % windowSize;
            tree->remove(behind);
            if (next < data.size()) {
                tree->window[behind] = static_cast<unsigned char>(data[next++]);
            } else {
                --ahead;
            }
            current = (current + 1) % windowSize;
            if (ahead > 0) {
                length = tree->add(current, position);
            }
        }
    }
    bits.write_bit(false);
    bits.write_bits(0, 12);
    return content(bits);
}

namespace {

constexpr unsigned endOfStream = 256;
constexpr unsigned bumpCode = 257;
constexpr unsigned flushCode = 258;
constexpr unsigned firstCode = 259;
constexpr unsigned slots = 35'023;

struct Dictionary {
    struct Entry {
        int code;
        unsigned parent;
        unsigned char character;
    };
    std::vector<Entry> entries = std::vector<Entry>(slots);
    unsigned next = 0;
    unsigned width = 0;
    unsigned bump = 0;

    void reset()
    {
        for (Entry &entry : entries) {
            entry.code = -1;
        }
        next = firstCode;
        width = 9;
        bump = 511;
    }
    Entry &find(unsigned parent, unsigned char c)
    {
        int index = static_cast<int>(static_cast<unsigned>(c) << 7 ^ parent);
        int const offset = index == 0 ? 1 : static_cast<int>(slots) - index;
        for (;;) {
            Entry &entry = entries[static_cast<std::size_t>(index)];
            if (entry.code == -1 || (entry.parent == parent && entry.character == c)) {
                return entry;
            }
            index -= offset;
            index += index < 0 ? static_cast<int>(slots) : 0;
        }
    }
    std::string text(unsigned code) const
    {
        std::string reversed;
        for (; code > 255; code = entries[code].parent) {
            reversed += static_cast<char>(entries[code].character);
        }
        reversed += static_cast<char>(code);
        return {reversed.rbegin(), reversed.rend()};
    }
};

} // namespace

std::string encodeLzw(std::string const &data)
{
    Dictionary dictionary;
    dictionary.reset();
    cFileBit bits;
    unsigned code = data.empty() ? endOfStream : byteAt(data, 0);
    for (std::size_t i = 1; i < data.size(); ++i) {
        auto const c = static_cast<unsigned char>(data[i]);
        Dictionary::Entry &entry = dictionary.find(code, c);
        if (entry.code != -1) {
            code = static_cast<unsigned>(entry.code);
            continue;
        }
        entry = {static_cast<int>(dictionary.next++), code, c};
        bits.write_bits(code, dictionary.width);
        code = c;
        if (dictionary.next == 32'768) {
            bits.write_bits(flushCode, dictionary.width);
            dictionary.reset();
        } else if (dictionary.next > dictionary.bump) {
            bits.write_bits(bumpCode, dictionary.width);
            ++dictionary.width;
            dictionary.bump = 2 * dictionary.bump + 1;
        }
    }
    bits.write_bits(code, dictionary.width);
    bits.write_bits(endOfStream, dictionary.width);
    return content(bits);
}

namespace {

std::string moveToFront(std::string const &data, bool encoding)
{
    std::array<char, 256> table;
    std::iota(table.begin(), table.end(), '\0');
    std::string result;
    result.reserve(data.size());
    for (char const c : data) {
        std::size_t const place =
            encoding ? static_cast<std::size_t>(std::find(table.begin(), table.end(), c) - table.begin())
                     : static_cast<unsigned char>(c);
        char const symbol = table[place];
        result += encoding ? static_cast<char>(place) : symbol;
        std::memmove(table.data() + 1, table.data(), place);
        table[0] = symbol;
    }
    return result;
}

} // namespace

std::string encodeMtf(std::string const &data)
{
    return moveToFront(data, true);
}

} // namespace plain
