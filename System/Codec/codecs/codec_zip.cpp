#include "System/Codec/codecs/codec_zip.h"

#include "System/Codec/codecs/bytes.h"
#include "System/File/fileMem.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint32_t tooLarge = 0x4000000;
constexpr std::uint32_t slack = 256;
constexpr std::uint64_t largestFile = std::numeric_limits<std::uint32_t>::max();

cFileMem &memoryOrThrow(cFile &file)
{
    if (cFileMem *const memory = asMemory(file)) {
        return *memory;
    }
    throw Exception(Exception::InvalidCall, "Only cFileMem supported!", "cCodecZIP::encode",
                    "System/Codec/codecs/codec_zip", __LINE__);
}

bool failed(char const *operation, int error)
{
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("cCodecZIP::%s(): Error %d\n", operation, error);
    }
    return false;
}

bool isInvalid(char const *operation)
{
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("cCodecZIP::%s(): invalid uncompressed size - memory corrupt?\n",
                                    operation);
    }
    return false;
}

std::uint32_t bytesLeft(cFile const &file)
{
    return file.size() > file.tell() ? file.size() - file.tell() : 0;
}

/// Room behind a stream's position that zlib writes into. The stream is not made shorter before it is known
/// how much came.
class Target {
public:
    Target(cFileMem &out, std::uint64_t header, std::uint64_t room)
        : m_out(out), m_oldSize(out.size()), m_start(out.tell() + header)
    {
        std::uint64_t const end = m_start + room;
        m_ok = end <= largestFile && !out.isShared() && // that one is only read
               out.resize(static_cast<unsigned int>(std::max<std::uint64_t>(end, m_oldSize)));
    }

    bool ok() const { return m_ok; }
    unsigned char *data() const { return m_out.getData() + m_start; }

    /// Makes the bytes that came the last ones, and goes behind them.
    void keep(std::uint64_t written)
    {
        m_out.resize(static_cast<unsigned int>(m_start + written));
        m_out.seek(m_out.size());
    }

    /// Leaves nothing in the new room that was never written.
    void clearBehind(std::uint64_t written)
    {
        std::uint64_t const end = written == 0 ? m_out.tell() : m_start + written;
        std::uint64_t const from = std::max(m_oldSize, end);
        if (from < m_out.size()) {
            std::memset(m_out.getData() + from, 0, m_out.size() - from);
        }
    }

private:
    cFileMem &m_out;
    std::uint64_t m_oldSize;
    std::uint64_t m_start;
    bool m_ok;
};

bool compressInto(cFileMem &in, cFileMem &out, int level, bool withCompressedSize)
{
    std::uint32_t const sourceLength = bytesLeft(in);
    std::uint32_t const header = withCompressedSize ? 8 : 4;
    if (&in == &out) {
        return failed("encode", Z_STREAM_ERROR);
    }
    uLongf destLength = compressBound(sourceLength) + slack;
    Target target(out, header, destLength);
    if (!target.ok()) {
        return failed("encode", Z_MEM_ERROR);
    }
    int const error = compress2(target.data(), &destLength, in.getData() + in.tell(), sourceLength, level);
    if (error != Z_OK) {
        target.clearBehind(0);
        return failed("encode", error);
    }
    if (out.write_32(sourceLength) != sizeof(sourceLength) ||
        (withCompressedSize &&
         out.write_32(static_cast<std::uint32_t>(destLength)) != sizeof(std::uint32_t))) {
        return failed("encode", Z_BUF_ERROR);
    }
    target.keep(destLength);
    in.seek(in.size());
    return true;
}

bool decompressInto(cFileMem &in, cFileMem &out, std::uint32_t uncompressedSize, std::uint32_t sourceLength)
{
    if (uncompressedSize >= tooLarge) {
        return isInvalid("decode");
    }
    if (&in == &out || sourceLength > bytesLeft(in)) {
        return failed("decode", &in == &out ? Z_STREAM_ERROR : Z_BUF_ERROR);
    }
    uLongf destLength = uncompressedSize + slack;
    Target target(out, 0, destLength);
    if (!target.ok()) {
        return failed("decode", Z_MEM_ERROR);
    }
    int const error = uncompress(target.data(), &destLength, in.getData() + in.tell(), sourceLength);
    if (error != Z_OK) {
        target.clearBehind(destLength);
        return failed("decode", error);
    }
    in.seek(in.tell() + sourceLength);
    target.keep(destLength);
    return true;
}

} // namespace

bool cCodecZIP::_encode(cFile &in, cFile &out, int level)
{
    cFileMem &memoryIn = memoryOrThrow(in);
    return compressInto(memoryIn, memoryOrThrow(out), level, false);
}

bool cCodecZIP::encode(cFile &in, cFile &out, ...)
{
    return _encode(in, out, 5);
}

bool cCodecZIP::encode(cFile &in, cFile &out, CodecParamsZip params)
{
    return _encode(in, out, params.level);
}

bool cCodecZIP::encodeEx(cFile &in, cFile &out, CodecParamsZip params)
{
    cFileMem &memoryIn = memoryOrThrow(in);
    return compressInto(memoryIn, memoryOrThrow(out), params.level, true);
}

bool cCodecZIP::decode(cFile &in, cFile &out, ...)
{
    cFileMem &memoryIn = memoryOrThrow(in);
    return decode(memoryIn, memoryOrThrow(out));
}

bool cCodecZIP::decode(cFileMem &in, cFileMem &out)
{
    std::uint32_t uncompressedSize = 0;
    if (!in.read_32(uncompressedSize)) {
        uncompressedSize = tooLarge;
    }
    return decompressInto(in, out, uncompressedSize, bytesLeft(in));
}

bool cCodecZIP::decodeEx(cFileMem &in, cFileMem &out)
{
    std::uint32_t uncompressedSize = 0;
    std::uint32_t compressedSize = 0;
    if (!in.read_32(uncompressedSize) || !in.read_32(compressedSize)) {
        uncompressedSize = tooLarge;
    }
    return decompressInto(in, out, uncompressedSize, compressedSize);
}

unsigned int cCodecZIP::getUncompressedSize(cFile &in) const
{
    unsigned int const position = in.tell();
    std::uint32_t size = 0;
    bool const whole = in.read_32(size);
    in.seek(position);
    if (!whole || size >= tooLarge) {
        isInvalid("getUncompressedSize");
        return 0;
    }
    return size;
}

String CodecZipFactory::getType() const
{
    return "CODEC_ZIP";
}

iCodec *CodecZipFactory::createInstance(String const &)
{
    return std::make_unique<cCodecZIP>().release();
}

} // namespace Qel
