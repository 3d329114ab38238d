#pragma once

#include "System/Codec/codecFactory.h"
#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <map>
#include <memory>

namespace Qel {

class CodecManager;
extern template class QEL_API tSingleton<CodecManager>;

/// Knows the codecs by name and makes each of them when it is first asked for.
///
/// The library's own are "CODEC_MTF", "CODEC_HUFFMAN", "CODEC_LZ77", "CODEC_LZW" and "CODEC_ZIP"; plugins add
/// theirs. Root has one of these; it can also be made without Root.
///
/// @code
/// CodecManager codecs;
/// cFileMem text, packed;
/// text.open("readme.txt");
/// codecs.getCodec("CODEC_HUFFMAN")->encode(text, packed);
/// @endcode
///
/// @par Ownership  Owns the codecs, not the factories.
/// @par Threads    One at a time, and so are the codecs it gives: all who ask for a name get the same object.
class QEL_API CodecManager : public tSingleton<CodecManager> {
public:
    CodecManager();          ///< registers the library's own factories
    virtual ~CodecManager(); ///< destroys the codecs

    CodecManager(CodecManager const &) = delete;
    CodecManager &operator=(CodecManager const &) = delete;

    /// Registers a factory under its getType(). If the name is taken, the first factory keeps it; the call is
    /// logged all the same.
    /// @param factory  not owned; must live as long as the manager, or until removeFactory(). Null does
    ///                 nothing
    void addFactory(CodecFactory *factory);

    /// Takes a factory out and destroys the codec that it made. What a plugin registered while it started is
    /// taken out when that fails. Does nothing with one that is not registered.
    void removeFactory(CodecFactory const *factory);

    /// The codec of that name, made now if nobody has asked for it before.
    /// @return owned by the manager. Null for an unknown name, which is logged, or if the factory could not
    ///         make one
    iCodec *getCodec(String const &name);

private:
    std::map<String, CodecFactory *> factories;
    std::map<String, std::unique_ptr<iCodec>> codecs;
};

} // namespace Qel
