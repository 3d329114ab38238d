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
    tree[treeRoot].child[larger] = static_cast<std::uint16_t>(r);
    tree[r].parent = treeRoot;
}

// Puts a child, or none, in the place of its parent.
void cCodecLZ77::ContractNode(int old_node, int new_node)
{
    int const parent = tree[old_node].parent;
    if (new_node != 0) {
        tree[new_node].parent = static_cast<std::uint16_t>(parent);
    }
    tree[parent].child[tree[parent].child[larger] == old_node] = static_cast<std::uint16_t>(new_node);
    tree[old_node].parent = 0;
}

// Puts a node that is not in the tree in the place of one that is.
void cCodecLZ77::ReplaceNode(int old_node, int new_node)
{
    int const parent = tree[old_node].parent;
    tree[parent].child[tree[parent].child[smaller] != old_node] = static_cast<std::uint16_t>(new_node);
    tree[new_node] = tree[old_node];
    for (std::uint16_t const child : tree[new_node].child) {
        if (child != 0) {
            tree[child].parent = static_cast<std::uint16_t>(new_node);
        }
    }
    tree[old_node].parent = 0;
}

// The largest of the strings that are smaller.
int cCodecLZ77::FindNextNode(int node) const
{
    int next = tree[node].child[smaller];
    while (tree[next].child[larger] != 0) {
        next = tree[next].child[larger];
    }
    return next;
}

void cCodecLZ77::DeleteString(int p)
{
    if (tree[p].parent == 0) {
        return;
    }
    if (tree[p].child[larger] == 0) {
        ContractNode(p, tree[p].child[smaller]);
    } else if (tree[p].child[smaller] == 0) {
        ContractNode(p, tree[p].child[larger]);
    } else {
        int const replacement = FindNextNode(p);
        DeleteString(replacement);
        ReplaceNode(p, replacement);
    }
}

// Adds the string at a place of the window and finds the longest of those that are in the tree. Of equal ones
// the last that is met counts.
int cCodecLZ77::AddString(int new_node, int *match_position)
{
    if (new_node == 0) {
        return 0;
    }
    std::uint64_t const key = loadKey(window + new_node);
    std::uint64_t const nextKey = loadKey(window + new_node + 8);
    int best = 0;
    int bestNode = *match_position;
    int test = tree[treeRoot].child[larger];
    for (;;) {
        std::uint64_t const testKey = loadKey(window + test);
        int equal = std::countl_zero(key ^ testKey) / 8;
        int side = key > testKey;
        if (equal == 8) [[unlikely]] {
            std::uint64_t const testNext = loadKey(window + test + 8);
            equal += std::countl_zero(nextKey ^ testNext) / 8;
            side = nextKey > testNext;
            if (equal == 16) {
                int const delta = window[new_node + 16] - window[test + 16];
                if (delta == 0) {
                    ReplaceNode(test, new_node);
                    *match_position = test;
                    return lookAhead;
                }
                side = delta > 0;
            }
        }
        bool const better = equal >= best;
        best = better ? equal : best;
        bestNode = better ? test : bestNode;
        std::uint16_t &child = tree[test].child[side];
        if (child == 0) {
            child = static_cast<std::uint16_t>(new_node);
            tree[new_node] = {static_cast<std::uint16_t>(test), {0, 0}};
            *match_position = bestNode;
            return best;
        }
        test = child;
    }
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
            for (std::uint32_t i = 0; i < length; ++i) {
                to[i] = to[static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(distance)];
            }
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
