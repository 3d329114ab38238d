// Registers of bytes with one block's pixels in each 128 bits, and images taken apart into them. Included
// into the unnamed namespace of one level's source, behind its Lanes; so nothing here is shared with another
// level, and nothing of the standard library is called that the linker could share.

struct Table16 {
    alignas(16) unsigned char bytes[16];
};

Lanes each(Table16 const &table)
{
    return eachBlock(table.bytes);
}

Lanes all8(int value)
{
    return QEL_OP(set1_epi8)(static_cast<char>(value));
}

Lanes zero()
{
    return all8(0);
}

Lanes inverse(Lanes a)
{
    return exclusive(a, all8(0xFF));
}

Lanes min8(Lanes a, Lanes b)
{
    return QEL_OP(min_epu8)(a, b);
}

Lanes max8(Lanes a, Lanes b)
{
    return QEL_OP(max_epu8)(a, b);
}

Lanes gap8(Lanes a, Lanes b)
{
    return QEL_OP(sub_epi8)(max8(a, b), min8(a, b));
}

Lanes add8(Lanes a, Lanes b)
{
    return QEL_OP(add_epi8)(a, b);
}

Lanes shuffle8(Lanes a, Lanes places)
{
    return QEL_OP(shuffle_epi8)(a, places);
}

// The first byte of a block in all of its bytes.
Lanes spread8(Lanes a)
{
    return shuffle8(a, zero());
}

constexpr Table16 swapWords = {{2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13}};
constexpr Table16 swapBytes = {{1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14}};

// The smallest byte, or 16-bit number, of a block in all places.
Lanes smallest8(Lanes a)
{
    a = min8(a, swap64(a));
    a = min8(a, swap32(a));
    a = min8(a, shuffle8(a, each(swapWords)));
    return min8(a, shuffle8(a, each(swapBytes)));
}

Lanes largest8(Lanes a)
{
    return inverse(smallest8(inverse(a)));
}

Lanes smallest16(Lanes a)
{
    a = QEL_OP(min_epu16)(a, swap64(a));
    a = QEL_OP(min_epu16)(a, swap32(a));
    return QEL_OP(min_epu16)(a, shuffle8(a, each(swapWords)));
}

// All ones in a block whose bytes are all ones, else 0.
Lanes isAll(Lanes mask)
{
    Lanes const halves = same64(mask, all8(0xFF));
    return both(halves, swap64(halves));
}

// A third of each 16-bit number below 1 000.
Lanes third16(Lanes a)
{
    return QEL_OP(mulhi_epu16)(a, QEL_OP(set1_epi16)(21846));
}

// A third of a byte that fills its block.
Lanes third8(Lanes a)
{
    return spread8(third16(both(a, QEL_OP(set1_epi16)(0xFF))));
}

// Two sums of 16 bytes each, as 64-bit numbers.
Lanes sums(Lanes sad0, Lanes sad1)
{
    return QEL_OP(add_epi64)(QEL_OP(unpacklo_epi64)(sad0, sad1), QEL_OP(unpackhi_epi64)(sad0, sad1));
}

Lanes sad(Lanes a)
{
    return QEL_OP(sad_epu8)(a, zero());
}

/// Pixels by channel; byte i of a block's 16 belongs to its pixel i.
struct Channels {
    Lanes blue, green, red, alpha;
};

Channels loadChannels(unsigned char const *src, std::size_t pitch)
{
    constexpr Table16 byChannel = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}};
    Lanes const order = each(byChannel);
    Lanes const row0 = shuffle8(load(src), order);
    Lanes const row1 = shuffle8(load(src + pitch), order);
    Lanes const row2 = shuffle8(load(src + 2 * pitch), order);
    Lanes const row3 = shuffle8(load(src + 3 * pitch), order);
    Lanes const blueGreen01 = QEL_OP(unpacklo_epi32)(row0, row1);
    Lanes const blueGreen23 = QEL_OP(unpacklo_epi32)(row2, row3);
    Lanes const redAlpha01 = QEL_OP(unpackhi_epi32)(row0, row1);
    Lanes const redAlpha23 = QEL_OP(unpackhi_epi32)(row2, row3);
    return {QEL_OP(unpacklo_epi64)(blueGreen01, blueGreen23),
            QEL_OP(unpackhi_epi64)(blueGreen01, blueGreen23), QEL_OP(unpacklo_epi64)(redAlpha01, redAlpha23),
            QEL_OP(unpackhi_epi64)(redAlpha01, redAlpha23)};
}

/// Calls @p code with the pixels of as many blocks as there are lanes, and with how many of them count.
template <class Code>
void forEachGroup(unsigned char const *src, std::size_t pitch, std::size_t blocks, Code code)
{
    constexpr std::size_t rowBytes = blocksAtOnce * 16;
    for (; blocks >= blocksAtOnce; blocks -= blocksAtOnce, src += rowBytes) {
        code(loadChannels(src, pitch), blocksAtOnce);
    }
    if (blocks != 0) {
        alignas(64) unsigned char rows[4 * rowBytes] = {};
        for (std::size_t row = 0; row < 4; ++row) {
            __builtin_memcpy(rows + row * rowBytes, src + row * pitch, blocks * 16);
        }
        code(loadChannels(rows, rowBytes), blocks);
    }
}
