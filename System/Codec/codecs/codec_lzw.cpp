#include "System/Codec/codecs/codec_lzw.h"

#include "System/Codec/codecs/bitOrder.h"
#include "System/Codec/codecs/bytes.h"
#include "System/System/exception.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint32_t smallestSlotBits = 10;
constexpr std::uint32_t firstWidth = 9;
constexpr std::uint32_t firstString = 259; // code of a string of two bytes or more

// To encode, the keys of all codes lie in front of the slots; to decode, two words for each code.
constexpr std::size_t keyBytes = sizeof(std::uint32_t) << 15;
constexpr std::size_t storageBytes = 2 * sizeof(std::uint64_t) << 15;

constexpr std::uint32_t keyOf(std::uint32_t parent, unsigned char byte)
{
    return parent << 8 | byte;
}

/// The hash of a string and one byte more.
constexpr std::uint32_t hashOf(std::uint32_t ofString, unsigned char byte)
{
    return (ofString + byte + 1) * 0x9E3779B1u;
}

/// The strings to encode with. A slot is found by the bytes of its string and not by codes, so the slots of
/// longer and longer strings are looked up ahead, and none waits for the one before to come from the cache. A
/// slot holds no more than a code, so that many of them share a line of the cache; whose code it is, its key
/// tells, and the guess that it is the right one mostly holds.
struct Strings {
    Strings(std::uint64_t *storage, std::uint32_t slotBits)
        : keys(reinterpret_cast<std::uint32_t *>(storage)),
          slots(reinterpret_cast<std::uint16_t *>(storage + keyBytes / sizeof(*storage))),
          shift(32 - slotBits)
    {
    }

    std::uint32_t find(std::uint32_t key, std::uint32_t hash) const
    {
        std::uint32_t const mask = 0xFFFFFFFFu >> shift;
        std::uint32_t index = hash >> shift;
        while (slots[index] != 0 && keys[slots[index]] != key) {
            index = (index + 1) & mask;
        }
        return index;
    }

    /// As the encoder has it, from a code made since the last flush.
    std::uint32_t hashOfCode(std::uint32_t code) const
    {
        std::uint32_t hash = 0;
        std::uint32_t power = hashOf(0, 0);
        for (; code >= firstString; code = keys[code] >> 8) {
            hash += ((keys[code] & 0xFF) + 1) * power;
            power *= hashOf(0, 0);
        }
        return hash + (code + 1) * power;
    }

    std::uint32_t *keys;  // of each code: its parent's code and its last byte
    std::uint16_t *slots; // 0 if free
    std::uint32_t shift;
};

} // namespace

cCodecLZW::~cCodecLZW()
{
    PoolHeap::std_free(dict);
}

void cCodecLZW::InitializeStorage()
{
    static_assert(keyBytes + (sizeof(std::uint16_t) << LARGEST_SLOT_BITS) <= storageBytes);
    if (dict == nullptr) {
        dict = static_cast<std::uint64_t *>(PoolHeap::std_alloc(storageBytes));
        if (dict != nullptr) {
            std::memset(dict, 0, storageBytes);
        }
    }
    if (dict == nullptr) {
        throw Exception(Exception::InternalFailure, "Error allocating dictionary space",
                        "cCodecLZW::InitializeStorage", "System/Codec/codecs/codec_lzw", __LINE__);
    }
}

void cCodecLZW::InitializeDictionary()
{
    std::memset(dict + keyBytes / sizeof(dict[0]), 0, sizeof(std::uint16_t) << m_slotBits);
    next_code = FIRST_CODE;
    current_code_bits = firstWidth;
    next_bump_code = (1u << firstWidth) - 1;
}

// As many slots as keep half of them free.
void cCodecLZW::useSlots(std::size_t inputBytes)
{
    m_slotBits = std::clamp(static_cast<std::uint32_t>(std::bit_width(2 * inputBytes)), smallestSlotBits,
                            LARGEST_SLOT_BITS);
}

unsigned int cCodecLZW::find_child_node(int parent_code, int child_character) const
{
    Strings const strings(dict, m_slotBits);
    auto const c = static_cast<unsigned char>(child_character);
    auto const parent = static_cast<std::uint32_t>(parent_code);
    return strings.find(keyOf(parent, c), hashOf(strings.hashOfCode(parent), c));
}

bool cCodecLZW::encode(cFile &in, cFile &out, ...)
{
    InitializeStorage();
    RestOfStream const rest(in, out);
    // 15 bits for a byte at the most, and little for the codes of the dictionary itself.
    PoolBytes const bits = makePoolBytes(2 * rest.size() + 64);
    if (!rest.ok() || !bits) {
        return false;
    }
    useSlots(rest.size());
    InitializeDictionary();
    BitWriter writer(bits.get());
    unsigned char const *from = rest.data();
    unsigned char const *const end = from + rest.size();
    std::uint32_t string_code = from < end ? *from++ : END_OF_STREAM;
    std::uint32_t hash = hashOf(0, static_cast<unsigned char>(string_code));
    Strings const strings(dict, m_slotBits);
    while (from < end) {
        unsigned char const c = *from++;
        std::uint32_t const key = keyOf(string_code, c);
        hash = hashOf(hash, c);
        std::uint16_t &slot = strings.slots[strings.find(key, hash)];
        if (slot != 0) {
            string_code = slot;
            continue;
        }
        slot = static_cast<std::uint16_t>(next_code);
        strings.keys[next_code++] = key;
        writer.putField(string_code, current_code_bits);
        string_code = c;
        hash = hashOf(0, c);
        if (next_code > MAX_CODE) {
            writer.putField(FLUSH_CODE, current_code_bits);
            InitializeDictionary();
        } else if (next_code > next_bump_code) {
            writer.putField(BUMP_CODE, current_code_bits);
            ++current_code_bits;
            next_bump_code = 2 * next_bump_code + 1;
        }
    }
    writer.putField(string_code, current_code_bits);
    writer.putField(END_OF_STREAM, current_code_bits);
    std::size_t const size = static_cast<std::size_t>(writer.finish() - bits.get());
    if (size <= std::numeric_limits<std::uint32_t>::max()) {
        out.write(bits.get(), static_cast<unsigned int>(size));
    }
    return false;
}

// A string is kept in pieces of 8 bytes: the first word holds the last piece, the second one the length, and
// in its upper half the code that ends with the piece before. So a code costs a store for each 8 bytes, and
// no string is ever kept twice.
unsigned int cCodecLZW::decode_string(unsigned int count, unsigned int code)
{
    if (code > MAX_CODE || count > TABLE_SIZE) {
        return 0;
    }
    std::uint64_t rest = dict[2 * code + 1];
    auto const length = static_cast<std::uint32_t>(rest);
    if (length == 0 || length > TABLE_SIZE - count) {
        return count;
    }
    unsigned char *const to = decode_stack + count;
    std::uint32_t at = (length - 1) / 8 * 8;
    store64(to + at, dict[2 * code]);
    while (at > 0) {
        code = static_cast<std::uint32_t>(rest >> 32) & MAX_CODE;
        rest = dict[2 * code + 1];
        at -= 8;
        store64(to + at, dict[2 * code]);
    }
    return count + length;
}

/// The state of one decode().
struct cCodecLZW::Decoder {
    Decoder(cCodecLZW &owner, RestOfStream const &in, cFile &to)
        : codec(owner), reader(in.data(), in.size()), out(to)
    {
        for (std::uint32_t byte = 0; byte < END_OF_STREAM; ++byte) {
            codec.dict[2 * byte] = byte;
            codec.dict[2 * byte + 1] = 1;
        }
    }

    enum Stop { ended, flushed, damaged, full };

    /// Writes what waits. @return false if not all of it could be
    bool writeOut()
    {
        bool const whole = out.write(codec.decode_stack, count) == count;
        count = 0;
        return whole;
    }

    Stop decodeDictionary();

    cCodecLZW &codec;
    BitReader reader;
    cFile &out;
    std::uint32_t count = 0; // bytes in decode_stack
};

// Up to a flush or the end. What is used for each code is kept at hand: the compiler has to take any store of
// a byte for a change of the object.
cCodecLZW::Decoder::Stop cCodecLZW::Decoder::decodeDictionary()
{
    if (reader.bitsLeft() < firstWidth) {
        return damaged;
    }
    std::uint32_t old_code = reader.field(firstWidth);
    if (old_code >= END_OF_STREAM) {
        return old_code == END_OF_STREAM ? ended : damaged;
    }
    BitReader bits = reader;
    std::uint64_t *const words = codec.dict;
    std::uint32_t next = FIRST_CODE;
    std::uint32_t width = firstWidth;
    if (count == TABLE_SIZE && !writeOut()) {
        return full;
    }
    unsigned char *to = codec.decode_stack + count;
    *to++ = static_cast<unsigned char>(old_code);
    unsigned char *const end = codec.decode_stack + TABLE_SIZE;
    std::uint64_t oldPiece = old_code;
    std::uint64_t oldRest = 1;
    std::uint64_t first = old_code; // byte of the last string, in the lowest 8 bits
    Stop stop = damaged;
    while (bits.has(width)) {
        std::uint32_t code = bits.field(width);
        if (code - END_OF_STREAM < FIRST_CODE - END_OF_STREAM) [[unlikely]] {
            if (code == BUMP_CODE && ++width <= MAX_BITS) {
                continue;
            }
            stop = code == END_OF_STREAM ? ended : code == FLUSH_CODE ? flushed : damaged;
            break;
        }
        if (code > next || next > MAX_CODE) [[unlikely]] {
            break;
        }
        // The string made now is the last one and the first byte of this one. If it is this one, that is its
        // own first byte, and the last one's as well.
        bool const justMade = code == next;
        std::uint64_t piece = justMade ? oldPiece : words[2 * code];
        std::uint64_t rest = justMade ? oldRest : words[2 * code + 1];
        std::uint32_t const length = static_cast<std::uint32_t>(rest) + justMade;
        if (static_cast<std::ptrdiff_t>(length) > end - to) [[unlikely]] {
            count = static_cast<std::uint32_t>(to - codec.decode_stack);
            if (!writeOut()) {
                stop = full;
                break;
            }
            to = codec.decode_stack;
        }
        if (!justMade) {
            first = piece;
            if (length > 8) {
                std::uint32_t before = (length - 1) / 8 * 8;
                store64(to + before, piece);
                for (std::uint64_t up = rest; before > 0;) {
                    auto const link = static_cast<std::uint32_t>(up >> 32);
                    before -= 8;
                    up = words[2 * link + 1];
                    first = words[2 * link];
                    store64(to + before, first);
                }
            } else {
                store64(to, piece);
            }
        }
        std::uint32_t const place = static_cast<std::uint32_t>(oldRest) & 7;
        std::uint64_t const newPiece = (place == 0 ? 0 : oldPiece) | (first & 0xFF) << (8 * place);
        std::uint64_t const newRest =
            place == 0 ? std::uint64_t{old_code} << 32 | ((oldRest & 0xFFFFFFFF) + 1) : oldRest + 1;
        words[2 * next] = newPiece;
        words[2 * next + 1] = newRest;
        ++next;
        if (justMade) [[unlikely]] {
            piece = newPiece;
            rest = newRest;
            codec.decode_string(static_cast<std::uint32_t>(to - codec.decode_stack), code);
        }
        to += length;
        old_code = code;
        oldPiece = piece;
        oldRest = rest;
    }
    if (stop != full) {
        count = static_cast<std::uint32_t>(to - codec.decode_stack);
    }
    reader = bits;
    return stop;
}

bool cCodecLZW::decode(cFile &in, cFile &out, ...)
{
    InitializeStorage();
    RestOfStream const rest(in, out);
    if (!rest.ok()) {
        return false;
    }
    Decoder decoder(*this, rest, out);
    Decoder::Stop stop = Decoder::flushed;
    while (stop == Decoder::flushed) {
        stop = decoder.decodeDictionary();
    }
    bool const whole = stop != Decoder::full && decoder.writeOut();
    return whole && stop == Decoder::ended;
}

String CodecLzwFactory::getType() const
{
    return "CODEC_LZW";
}

iCodec *CodecLzwFactory::createInstance(String const &)
{
    return std::make_unique<cCodecLZW>().release();
}

} // namespace Qel
