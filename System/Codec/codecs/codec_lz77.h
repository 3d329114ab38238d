#pragma once

#include "System/Codec/codecFactory.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// "CODEC_LZ77": a sliding window of 4096 bytes, searched through a binary tree.
///
/// A stream is a sequence of literals, a 1 and 8 bits, and of matches, a 0, 12 bits for a place in the window
/// and 4 bits for a length of 2 to 17. A match with the place 0 ends it; so does the end of the data.
///
/// Published by J. Ziv and A. Lempel, "A Universal Algorithm for Sequential Data Compression", 1977; the tree
/// by T. Bell, "Better OPM/L Text Compression", 1986.
class QEL_API cCodecLZ77 : public iCodec {
public:
    bool encode(cFile &in, cFile &out, ...) override; ///< @return false, always

    /// Also a damaged stream ends: at the latest with the data, which are as if followed by zeros.
    /// @return false, always
    bool decode(cFile &in, cFile &out, ...) override;

private:
    static constexpr int indexBits = 12;
    static constexpr int lengthBits = 4;
    static constexpr int windowSize = 1 << indexBits;
    static constexpr int shortestMatch = 2;
    static constexpr int lookAhead = (1 << lengthBits) - 1 + shortestMatch;
    static constexpr int treeRoot = windowSize;
    static constexpr int endOfStream = 0;

    /// A place in the window as a node of the tree; 0 stands for none, so the place 0 is never in the tree.
    /// A search reads nothing but nodes as long as strings differ in their first bytes.
    struct sNode {
        std::uint64_t key;      // the string's first 8 bytes, as a number that compares as they do
        std::uint16_t child[2]; // of smaller strings, of larger ones; as bytes from the first node
        std::uint16_t parent;
    };
    static_assert(sizeof(sNode) == 16);

    void InitTree(int r);
    void ContractNode(int old_node, int new_node);
    void ReplaceNode(int old_node, int new_node);
    int matchLength(int node, int other) const;
    int FindNextNode(int node) const;
    void DeleteString(int p);
    int AddString(int new_node, int *match_position);
    void setByte(int at, unsigned char byte);

    unsigned char window[windowSize + 24] = {}; // its first bytes stand again behind its end
    sNode tree[windowSize + 1] = {};            // the last one is the anchor: its larger child is the top
};

/// Makes cCodecLZ77.
class QEL_API CodecLz77Factory : public CodecFactory {
public:
    String getType() const override;
    iCodec *createInstance(String const &name) override;
};

} // namespace Qel
