#include "System/Codec/codecManager.h"

#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lz77.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"
#include "System/Codec/codecs/codec_zip.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include <algorithm>

namespace Qel {

template class tSingleton<CodecManager>;

namespace {

CodecMtfFactory mtfFactory;
CodecHuffmanFactory huffmanFactory;
CodecLz77Factory lz77Factory;
CodecLzwFactory lzwFactory;
CodecZipFactory zipFactory;

} // namespace

CodecManager::CodecManager()
{
    addFactory(&mtfFactory);
    addFactory(&huffmanFactory);
    addFactory(&lz77Factory);
    addFactory(&lzwFactory);
    addFactory(&zipFactory);
}

CodecManager::~CodecManager() = default;

void CodecManager::addFactory(CodecFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const name = factory->getType();
    bool const isFree = factories.try_emplace(name, factory).second;
    logMessage("Codec type '" + name + "' registered.\n", 2);
    if (!isFree) {
        return;
    }
    PluginMgr::registered(factory, [factory] {
        if (CodecManager *const manager = InstancePtr()) {
            manager->removeFactory(factory);
        }
    });
}

void CodecManager::removeFactory(CodecFactory const *factory)
{
    auto const at = std::find_if(factories.begin(), factories.end(),
                                 [factory](auto const &entry) { return entry.second == factory; });
    if (at != factories.end()) {
        codecs.erase(at->first);
        factories.erase(at);
        PluginMgr::unregistered(factory);
    }
}

iCodec *CodecManager::getCodec(String const &name)
{
    auto const known = codecs.find(name);
    if (known != codecs.end()) {
        return known->second.get();
    }
    auto const factory = factories.find(name);
    if (factory == factories.end()) {
        logMessage("Codec type '" + name + "' Unknown!\n", 2);
        return nullptr;
    }
    std::unique_ptr<iCodec> codec(factory->second->createInstance(name));
    if (!codec) {
        return nullptr;
    }
    return codecs.insert_or_assign(name, std::move(codec)).first->second.get();
}

} // namespace Qel
