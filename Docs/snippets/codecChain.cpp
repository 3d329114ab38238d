#include "System/Codec/codecManager.h"
#include "System/Codec/codecs/codec_multi.h"
#include "System/File/fileMem.h"

#include <cstring>

int main()
{
    Qel::CodecManager codecs; // a host with a Root has one already
    char const text[] = "to be or not to be, that is to be or not to be";

    Qel::cCodecMulti chain;
    chain.addCodec("CODEC_LZ77");
    chain.addCodec("CODEC_HUFFMAN");

    Qel::cFileMem plain(sizeof(text), reinterpret_cast<unsigned char const *>(text));
    Qel::cFileMem packed;
    chain.encode(plain, packed);

    packed.seek(0);
    Qel::cFileMem back;
    chain.decode(packed, back); // the same names in the same order
    return back.size() == sizeof(text) && std::memcmp(back.getData(), text, sizeof(text)) == 0 ? 0 : 1;
}
