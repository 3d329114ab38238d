#include "System/Codec/codecs/codec_lz77.h"

#include "System/Codec/codecs/bitOrder.h"
#include "System/Codec/codecs/bytes.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr int smaller = 0;
constexpr int larger = 1;

// Eight bytes as a number that compares as they do.
std::uint64_t loadKey(unsigned char const *from)
{
    return __builtin_bswap64(load64(from));
}

// A child is kept as its distance from the first node in bytes, of which each has 16: a search adds it to the
// address of the tree and has nothing to multiply.
constexpr std::uint16_t linkTo(int node)
{
    return static_cast<std::uint16_t>(node << 4);
}

constexpr int nodeOf(std::uint32_t link)
{
    return static_cast<int>(link >> 4);
}

// How many of 9 bytes are the same; the difference of the first two that are not.
int compareBehind(unsigned char const *left, unsigned char const *right, int &delta)
{
    int const equal = std::countr_zero(load64(left) ^ load64(right)) / 8;
    delta = left[equal] - right[equal];
    return equal + (equal == 8 && delta == 0);
}

// Up to 17 bytes, forwards. Writes 17 in any case, unless source and target overlap: what is too much is
// written over by what follows.
inline void copyMatch(unsigned char *to, unsigned char const *from, std::uint32_t length)
{
    if (to - from >= 17) [[likely]] {
        std::uint64_t const first = load64(from);
        std::uint64_t const second = load64(from + 8);
        unsigned char const last = from[16];
        store64(to, first);
        store64(to + 8, second);
        to[16] = last;
        return;
    }
    for (std::uint32_t i = 0; i < length; ++i) {
        to[i] = from[i];
    }
}

/// The input byte by byte, and the output in memory, with room for all that was read.
class Feed {
public:
    Feed(cFile &in, cFile const &out) : bits(nullptr), m_source(in, out) { makeRoom(0); }

    bool ok() const { return m_ok && m_source.ok(); } ///< Was there memory?

    /// @return false at the end, or when there is no memory for what follows
    bool next(unsigned char &byte)
    {
        if (m_next == m_end && !refill()) [[unlikely]] {
            return false;
        }
        byte = *m_next++;
        return true;
    }

    void writeTo(cFile &out)
    {
        std::size_t const size = static_cast<std::size_t>(bits.finish() - m_bytes.get());
        if (m_ok && size <= std::numeric_limits<std::uint32_t>::max()) {
            out.write(m_bytes.get(), static_cast<unsigned int>(size));
        }
    }

    BitWriter bits;

private:
    bool refill()
    {
        std::span<unsigned char const> const run = m_ok ? m_source.next() : std::span<unsigned char const>();
        if (run.empty() || !makeRoom(run.size())) {
            return false;
        }
        m_next = run.data();
        m_end = m_next + run.size();
        return true;
    }

    // 9 bits for a byte, when all of them are literals, and the end. Up to 17 bytes read are not yet coded.
    bool makeRoom(std::size_t more)
    {
        std::size_t const used = m_bytes ? static_cast<std::size_t>(bits.place() - m_bytes.get()) : 0;
        std::size_t const wanted = used + more + more / 8 + 64;
        if (wanted > m_room) {
            m_room = std::max(2 * m_room, wanted);
            PoolBytes fresh = makePoolBytes(m_room);
            if (!fresh) {
                m_ok = false;
                return false;
            }
            if (used > 0) {
                std::memcpy(fresh.get(), m_bytes.get(), used);
            }
            bits.moveTo(fresh.get() + used);
            m_bytes = std::move(fresh);
        }
        return true;
    }

    ByteSource m_source;
    PoolBytes m_bytes;
    std::size_t m_room = 0;
    unsigned char const *m_next = nullptr;
    unsigned char const *m_end = nullptr;
    bool m_ok = true;
};

} // namespace

void cCodecLZ77::setByte(int at, unsigned char byte)
{
    window[at] = byte;
    if (static_cast<std::size_t>(at) < sizeof(window) - windowSize) {
        window[at + windowSize] = byte;
    }
}

void cCodecLZ77::InitTree(int r)
{
    std::memset(tree, 0, sizeof(tree));
    tree[treeRoot].child[larger] = linkTo(r);
    tree[r].parent = treeRoot;
    tree[r].key = loadKey(window + r);
}

// Puts a child, or none, in the place of its parent. What is noted at the place 0, which is no node, is never
// looked at: to ask would cost more than to write.
void cCodecLZ77::ContractNode(int old_node, int new_node)
{
    int const parent = tree[old_node].parent;
    tree[new_node].parent = static_cast<std::uint16_t>(parent);
    tree[parent].child[tree[parent].child[larger] == linkTo(old_node)] = linkTo(new_node);
    tree[old_node].parent = 0;
}

// Puts a node that is not in the tree in the place of one that is.
void cCodecLZ77::ReplaceNode(int old_node, int new_node)
{
    int const parent = tree[old_node].parent;
    tree[parent].child[tree[parent].child[smaller] != linkTo(old_node)] = linkTo(new_node);
    std::memcpy(tree[new_node].child, tree[old_node].child, sizeof(tree[new_node].child));
    tree[new_node].parent = static_cast<std::uint16_t>(parent);
    for (std::uint16_t const child : tree[new_node].child) {
        tree[nodeOf(child)].parent = static_cast<std::uint16_t>(new_node);
    }
    tree[old_node].parent = 0;
}

int cCodecLZ77::matchLength(int node, int other) const
{
    std::uint64_t const difference = tree[node].key ^ tree[other].key;
    if (difference != 0) {
        return std::countl_zero(difference) / 8;
    }
    int delta = 0;
    return 8 + compareBehind(window + node + 8, window + other + 8, delta);
}

// The largest of the strings that are smaller.
int cCodecLZ77::FindNextNode(int node) const
{
    int next = nodeOf(tree[node].child[smaller]);
    while (tree[next].child[larger] != 0) {
        next = nodeOf(tree[next].child[larger]);
    }
    return next;
}

void cCodecLZ77::DeleteString(int p)
{
    if (p == 0 || tree[p].parent == 0) {
        return;
    }
    int const left = nodeOf(tree[p].child[smaller]);
    int const right = nodeOf(tree[p].child[larger]);
    if (std::min(left, right) == 0) {
        ContractNode(p, left + right);
    } else {
        int const replacement = FindNextNode(p);
        ContractNode(replacement, nodeOf(tree[replacement].child[smaller]));
        ReplaceNode(p, replacement);
    }
}

// Adds the string at a place of the window and finds the longest match among those that are in the tree. Of
// equal ones the last that is met counts.
//
// On the way down the strings that are smaller come closer and closer, and so do those that are larger: the
// longest match is the last one on either side, and lengths need not be known before the end.
int cCodecLZ77::AddString(int new_node, int *match_position)
{
    if (new_node == 0) {
        return 0;
    }
    std::uint64_t const key = loadKey(window + new_node);
    tree[new_node].key = key;
    auto *const base = reinterpret_cast<unsigned char *>(tree);
    std::uintptr_t last[2] = {0, 0}; // of those that are larger, and of those that are smaller
    std::uintptr_t test = 0;
    std::uintptr_t side = 0;
    for (std::uintptr_t next = tree[treeRoot].child[larger]; next != 0;) {
        test = next;
        sNode const &node = *reinterpret_cast<sNode const *>(base + test);
        std::uint64_t const testKey = node.key;
        side = std::uintptr_t{0} - (testKey < key); // all bits or none: one instruction makes it so
        if (testKey == key) [[unlikely]] {
            int delta = 0;
            int const place = nodeOf(static_cast<std::uint32_t>(test));
            if (compareBehind(window + new_node + 8, window + place + 8, delta) + 8 == lookAhead) {
                ReplaceNode(place, new_node);
                *match_position = place;
                return lookAhead;
            }
            side = std::uintptr_t{0} - (delta > 0);
        }
        last[side & 1] = test;
        // Both children are at hand before the side is known, and no branch is guessed on it.
        std::uintptr_t const left = node.child[smaller];
        std::uintptr_t const both = left ^ node.child[larger];
        next = left ^ (both & side);
    }
    sNode &parent = *reinterpret_cast<sNode *>(base + test);
    parent.child[side & 1] = linkTo(new_node);
    tree[new_node].child[smaller] = 0;
    tree[new_node].child[larger] = 0;
    int const met = nodeOf(static_cast<std::uint32_t>(test));
    int const across = nodeOf(static_cast<std::uint32_t>(last[~side & 1]));
    tree[new_node].parent = static_cast<std::uint16_t>(met);
    int const ofMet = matchLength(new_node, met);
    int const ofAcross = across == 0 ? 0 : matchLength(new_node, across);
    *match_position = ofAcross > ofMet ? across : met;
    return std::max(ofAcross, ofMet);
}

bool cCodecLZ77::encode(cFile &in, cFile &out, ...)
{
    Feed feed(in, out);
    if (!feed.ok()) {
        return false;
    }
    std::memset(window, 0, sizeof(window));
    int current_position = 1;
    int look_ahead_bytes = 0;
    for (unsigned char byte = 0; look_ahead_bytes < lookAhead && feed.next(byte); ++look_ahead_bytes) {
        setByte(current_position + look_ahead_bytes, byte);
    }
    InitTree(current_position);
    int match_length = 0;
    int match_position = 0;
    while (look_ahead_bytes > 0) {
        match_length = std::min(match_length, look_ahead_bytes);
        int replace_count = 1;
        if (match_length < shortestMatch) {
            feed.bits.put(1u | std::uint32_t{reversedByte[window[current_position]]} << 1, 9);
        } else {
            feed.bits.putField(static_cast<std::uint32_t>(match_position), indexBits + 1);
            feed.bits.putField(static_cast<std::uint32_t>(match_length - shortestMatch), lengthBits);
            replace_count = match_length;
        }
        for (int i = 0; i < replace_count; ++i) {
            int const behind = (current_position + lookAhead) % windowSize;
            DeleteString(behind);
            unsigned char byte = 0;
            if (feed.next(byte)) {
                setByte(behind, byte);
            } else {
                --look_ahead_bytes;
            }
            current_position = (current_position + 1) % windowSize;
            if (look_ahead_bytes > 0) {
                match_length = AddString(current_position, &match_position);
            }
        }
    }
    feed.bits.putField(endOfStream, indexBits + 1);
    feed.writeTo(out);
    return false;
}

bool cCodecLZ77::decode(cFile &in, cFile &out, ...)
{
    constexpr std::size_t blockSize = 64 * 1024;
    RestOfStream const rest(in, out);
    // The window stands in front of the block: a place in it is a distance back. It starts with zeros.
    PoolBytes const bytes = makePoolBytes(windowSize + blockSize + 32);
    if (!rest.ok() || !bytes) {
        return false;
    }
    std::memset(bytes.get(), 0, windowSize);
    unsigned char *const block = bytes.get() + windowSize;
    unsigned char *const blockEnd = block + blockSize;
    unsigned char *to = block;
    // The place in the window of the byte at `to`, less what `to` tells.
    std::uintptr_t place = 1 - reinterpret_cast<std::uintptr_t>(block);
    BitReader reader(rest.data(), rest.size());
    for (;;) {
        auto const bits = static_cast<std::uint32_t>(reader.peek());
        if ((bits & 1) != 0) {
            *to++ = reversedByte[bits >> 1 & 0xFF];
            reader.skip(9);
        } else {
            std::uint32_t const field = reversed16(bits >> 1);
            std::uint32_t const match_position = field >> lengthBits;
            if (match_position == endOfStream) {
                break;
            }
            reader.skip(1 + indexBits + lengthBits);
            std::uint32_t const length = (field & ((1u << lengthBits) - 1)) + shortestMatch;
            auto const current = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(to) + place);
            std::uint32_t const distance = (current - match_position - 1) % windowSize + 1;
            copyMatch(to, to - distance, length);
            to += length;
        }
        if (to >= blockEnd) {
            auto const size = static_cast<unsigned int>(to - block);
            if (out.write(block, size) != size) {
                return false;
            }
            std::memmove(bytes.get(), to - windowSize, windowSize);
            place += size;
            to = block;
        }
    }
    out.write(block, static_cast<unsigned int>(to - block));
    return false;
}

String CodecLz77Factory::getType() const
{
    return "CODEC_LZ77";
}

iCodec *CodecLz77Factory::createInstance(String const &)
{
    return std::make_unique<cCodecLZ77>().release();
}

} // namespace Qel
