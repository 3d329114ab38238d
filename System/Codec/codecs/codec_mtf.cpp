#include "System/Codec/codecs/codec_mtf.h"

#include "System/Codec/codecs/bytes.h"
#include "System/Codec/codecs/moveToFront.h"

#include <algorithm>

namespace Qel {

namespace {

constexpr std::size_t blockSize = 64 * 1024;

template <class Table>
bool transform(cFile &in, cFile &out,
               void (Table::*step)(unsigned char const *, unsigned char *, std::size_t))
{
    ByteSource source(in, out);
    PoolBytes const block = makePoolBytes(blockSize);
    if (!source.ok() || !block) {
        return false;
    }
    Table table;
    for (std::span<unsigned char const> run = source.next(); !run.empty(); run = source.next()) {
        while (!run.empty()) {
            std::size_t const count = std::min(run.size(), blockSize);
            (table.*step)(run.data(), block.get(), count);
            auto const bytes = static_cast<unsigned int>(count);
            if (out.write(block.get(), bytes) != bytes) {
                return false;
            }
            run = run.subspan(count);
        }
    }
    return true;
}

} // namespace

bool cCodecMTF::encode(cFile &in, cFile &out, ...)
{
    return transform(in, out, &MoveToFront::encode);
}

bool cCodecMTF::decode(cFile &in, cFile &out, ...)
{
    return transform(in, out, &MoveToFront::decode);
}

bool cCodecMTF::decode(void *dest, void const *source, unsigned int size)
{
    if (dest == nullptr || source == nullptr) {
        return false;
    }
    MoveToFront table;
    table.decode(static_cast<unsigned char const *>(source), static_cast<unsigned char *>(dest), size);
    return true;
}

String CodecMtfFactory::getType() const
{
    return "CODEC_MTF";
}

iCodec *CodecMtfFactory::createInstance(String const &)
{
    return std::make_unique<cCodecMTF>().release();
}

} // namespace Qel
