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

constexpr std::uint32_t largestSlotBits = 16; // twice as many slots as there are codes
constexpr std::uint32_t smallestSlotBits = 10;
constexpr std::size_t storageBytes = sizeof(std::uint64_t) << largestSlotBits;
constexpr std::uint32_t firstWidth = 9;

} // namespace

cCodecLZW::~cCodecLZW()
{
    PoolHeap::std_free(dict);
}

void cCodecLZW::InitializeStorage()
{
    if (dict == nullptr) {
        dict = static_cast<std::uint64_t *>(PoolHeap::std_alloc(storageBytes));
    }
    if (dict == nullptr) {
        throw Exception(Exception::InternalFailure, "Error allocating dictionary space",
                        "cCodecLZW::InitializeStorage", "System/Codec/codecs/codec_lzw", __LINE__);
    }
}

void cCodecLZW::InitializeDictionary()
{
    std::memset(dict, 0, sizeof(dict[0]) << m_slotBits);
    next_code = FIRST_CODE;
    current_code_bits = firstWidth;
    next_bump_code = (1u << firstWidth) - 1;
}

// As many slots as keep half of them free.
void cCodecLZW::useSlots(std::size_t inputBytes)
{
    m_slotBits = std::clamp(static_cast<std::uint32_t>(std::bit_width(2 * inputBytes)), smallestSlotBits,
                            largestSlotBits);
}

unsigned int cCodecLZW::find_child_node(int parent_code, int child_character) const
{
    std::uint32_t const key =
        static_cast<std::uint32_t>(parent_code) << 8 | static_cast<std::uint32_t>(child_character);
    std::uint32_t const mask = (1u << m_slotBits) - 1;
    std::uint32_t index = key * 0x9E3779B1u >> (32 - m_slotBits);
    while (dict[index] != 0 && dict[index] >> 32 != key) {
        index = (index + 1) & mask;
    }
    return index;
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
    while (from < end) {
        unsigned char const c = *from++;
        std::uint64_t &slot = dict[find_child_node(static_cast<int>(string_code), c)];
        if (slot != 0) {
            string_code = slot & 0xFFFF;
            continue;
        }
        slot = std::uint64_t{string_code << 8 | c} << 32 | next_code++;
        writer.putField(string_code, current_code_bits);
        string_code = c;
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
void cCodecLZW::addString(std::uint32_t old_code, unsigned char character)
{
    std::uint64_t const piece = old_code < FIRST_CODE ? old_code : dict[2 * old_code];
    std::uint64_t const rest = old_code < FIRST_CODE ? 1 : dict[2 * old_code + 1];
    auto const length = static_cast<std::uint32_t>(rest);
    std::uint32_t const at = length % 8;
    dict[2 * next_code] = (at == 0 ? 0 : piece) | std::uint64_t{character} << (8 * at);
    dict[2 * next_code + 1] = at == 0 ? std::uint64_t{old_code} << 32 | (length + 1) : rest + 1;
    ++next_code;
}

unsigned int cCodecLZW::decode_string(unsigned int count, unsigned int code)
{
    if (code < FIRST_CODE) {
        if (count < TABLE_SIZE) {
            decode_stack[count++] = static_cast<unsigned char>(code);
        }
        return count;
    }
    std::uint64_t rest = dict[2 * code + 1];
    auto const length = static_cast<std::uint32_t>(rest);
    if (length > TABLE_SIZE - count) {
        return count;
    }
    unsigned char *const to = decode_stack + count;
    store64(to + (length - 1) / 8 * 8, dict[2 * code]);
    for (std::uint32_t at = (length - 1) / 8 * 8; at > 0;) {
        code = static_cast<std::uint32_t>(rest >> 32);
        rest = dict[2 * code + 1];
        at -= 8;
        store64(to + at, dict[2 * code]);
    }
    return count + length;
}

bool cCodecLZW::decode(cFile &in, cFile &out, ...)
{
    InitializeStorage();
    RestOfStream const rest(in, out);
    if (!rest.ok()) {
        return false;
    }
    BitReader reader(rest.data(), rest.size());
    std::uint64_t allowed = outputBound(rest.size());
    std::uint32_t count = 0; // bytes in decode_stack
    bool whole = true;       // all of them written, and allowed
    auto const writeOut = [&] {
        auto const some = static_cast<unsigned int>(std::min<std::uint64_t>(count, allowed));
        whole = out.write(decode_stack, some) == some && some == count;
        allowed -= some;
        count = 0;
        return whole;
    };
    m_slotBits = 0; // nothing to clear: a code is looked up only after it was entered
    for (bool flushed = true; flushed && whole;) {
        flushed = false;
        InitializeDictionary();
        if (reader.bitsLeft() < firstWidth) {
            break;
        }
        std::uint32_t old_code = reader.field(firstWidth);
        if (old_code == END_OF_STREAM) {
            return writeOut();
        }
        if (old_code >= END_OF_STREAM) {
            break;
        }
        auto character = static_cast<unsigned char>(old_code);
        if (count == TABLE_SIZE && !writeOut()) {
            return false;
        }
        decode_stack[count++] = character;
        while (reader.bitsLeft() >= current_code_bits) {
            std::uint32_t const new_code = reader.field(current_code_bits);
            if (new_code - END_OF_STREAM < FIRST_CODE - END_OF_STREAM) {
                if (new_code == END_OF_STREAM) {
                    return writeOut();
                }
                if (new_code == FLUSH_CODE) {
                    flushed = true;
                    break;
                }
                if (++current_code_bits > MAX_BITS) {
                    break;
                }
                continue;
            }
            if (new_code > next_code || next_code > MAX_CODE) {
                break;
            }
            // A code that the encoder has only just made is the last string and its own first byte.
            bool const justMade = new_code == next_code;
            if (justMade) {
                addString(old_code, character);
            }
            std::uint32_t before = count;
            count = decode_string(count, new_code);
            if (count == before) {
                if (!writeOut()) {
                    return false;
                }
                before = 0;
                count = decode_string(0, new_code);
            }
            character = decode_stack[before];
            if (!justMade) {
                addString(old_code, character);
            }
            old_code = new_code;
        }
    }
    writeOut();
    return false;
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
