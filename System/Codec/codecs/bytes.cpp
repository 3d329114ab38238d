#include "System/Codec/codecs/bytes.h"

#include "System/Codec/codec.h"
#include "System/File/fileMem.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

// Bit streams count in bits and give zeros for ever, so their own end says how many bytes are left.
std::uint64_t bytesLeft(cFile const &in)
{
    std::uint64_t const size = in.size();
    std::uint64_t const at = in.tell();
    std::uint64_t const left = size > at ? size - at : 0;
    switch (in.getType()) {
    case FILECLASS_BIT:
        return (left + 7) / 8;
    case FILECLASS_BITOLD:
        return left / 8;
    default:
        return std::numeric_limits<std::uint64_t>::max();
    }
}

} // namespace

void PoolBytesFree::operator()(unsigned char *bytes) const
{
    poolheap_free(bytes);
}

PoolBytes makePoolBytes(std::size_t size)
{
    return PoolBytes(static_cast<unsigned char *>(poolheap_malloc(size)));
}

cFileMem *asMemory(cFile &file)
{
    return file.getType() == FILECLASS_MEM ? dynamic_cast<cFileMem *>(&file) : nullptr;
}

ByteSource::ByteSource(cFile &in, cFile const &out)
    : m_in(in), m_memory(&in != &out ? asMemory(in) : nullptr), m_left(bytesLeft(in))
{
    if (m_memory == nullptr) {
        m_chunk = makePoolBytes(chunkSize);
    }
}

std::span<unsigned char const> ByteSource::next()
{
    if (m_memory != nullptr) {
        unsigned int const at = m_memory->tell();
        unsigned int const size = m_memory->size();
        if (at >= size) {
            return {};
        }
        m_memory->seek(size);
        return {m_memory->getData() + at, size - at};
    }
    auto const wanted = static_cast<unsigned int>(std::min<std::uint64_t>(chunkSize, m_left));
    unsigned int const got = wanted == 0 ? 0 : std::min(wanted, m_in.read(m_chunk.get(), wanted));
    m_left -= got;
    return {m_chunk.get(), got};
}

RestOfStream::RestOfStream(cFile &in, cFile const &out)
{
    ByteSource source(in, out);
    m_ok = source.ok();
    if (!m_ok) {
        return;
    }
    if (&in != &out && asMemory(in) != nullptr) {
        m_bytes = source.next();
        return;
    }
    std::size_t size = 0;
    std::size_t room = 0;
    for (std::span<unsigned char const> run = source.next(); !run.empty(); run = source.next()) {
        if (size + run.size() > room) {
            room = std::max(2 * room, size + run.size());
            PoolBytes larger = makePoolBytes(room);
            if (!larger) {
                m_ok = false;
                return;
            }
            if (size > 0) {
                std::memcpy(larger.get(), m_own.get(), size);
            }
            m_own = std::move(larger);
        }
        std::memcpy(m_own.get() + size, run.data(), run.size());
        size += run.size();
    }
    m_bytes = {m_own.get(), size};
}

std::uint64_t outputBound(std::uint64_t inputBytes)
{
    constexpr std::uint64_t symbolsPerByte = 8;
    return std::max<std::uint64_t>(iCodec::getOutputLimit(), inputBytes * symbolsPerByte);
}

} // namespace Qel
