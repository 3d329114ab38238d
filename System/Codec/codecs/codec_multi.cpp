#include "System/Codec/codecs/codec_multi.h"

#include "System/Codec/codecManager.h"
#include "System/File/fileTempMem.h"
#include "System/System/timerHelper.h"

#include <cstring>
#include <limits>
#include <utility>

namespace Qel {

namespace {

// An empty stream that claims a size: a codec that writes less leaves zeros behind.
bool setZeros(cFileTempMem &file, std::uint64_t size)
{
    file.close();
    if (size > std::numeric_limits<std::uint32_t>::max() ||
        !file.set(static_cast<unsigned int>(size), nullptr)) {
        return false;
    }
    std::memset(file.getData(), 0, file.size());
    return true;
}

} // namespace

void cCodecMulti::addCodec(String const &name)
{
    m_codecs.push_back(name);
}

void cCodecMulti::reset()
{
    m_codecs.clear();
}

bool cCodecMulti::encode(cFile &in, cFile &out, ...)
{
    return Code(in, out, 1, 0, &iCodec::encode);
}

bool cCodecMulti::decode(cFile &in, cFile &out, ...)
{
    return Code(in, out, -1, static_cast<int>(m_codecs.size()) - 1, &iCodec::decode);
}

bool cCodecMulti::Code(cFile &in, cFile &out, int step, int start,
                       bool (iCodec::*method)(cFile &, cFile &, ...))
{
    CodecManager *const manager = CodecManager::InstancePtr();
    int const count = manager != nullptr ? static_cast<int>(m_codecs.size()) : 0;
    cFileTempMem scratch[2];
    cFileTempMem *source = &scratch[0];
    cFileTempMem *target = &scratch[1];
    for (int i = 0; i < count; ++i) {
        String const &name = m_codecs[static_cast<std::size_t>(i * step + start)];
        iCodec *const codec = manager->getCodec(name);
        if (codec == nullptr) {
            continue;
        }
        bool const last = i == count - 1;
        if (!last && !setZeros(*target, std::uint64_t{source->size()} + 200)) {
            return false;
        }
        TimerHelper const timer(("cCodecMulti::Code(" + name + ")").c_str());
        (codec->*method)(i == 0 ? in : *source, last ? out : *target);
        if (!last) {
            std::swap(source, target);
            source->seek(0);
        }
    }
    return true;
}

} // namespace Qel
