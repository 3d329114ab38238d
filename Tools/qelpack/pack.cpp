#include "pack.h"

#include "progressFile.h"

#include "System/Codec/codecManager.h"
#include "System/Codec/codecs/codec_multi.h"
#include "System/Codec/codecs/codec_zip.h"

#include "Support/OS/file.h"

#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

using Qel::cCodecMulti;
using Qel::cCodecZIP;
using Qel::cFile;
using Qel::cFileMem;
using Qel::CodecManager;
using Qel::iCodec;

namespace {

bool isMemoryCodec(std::string const &name)
{
    return name == "CODEC_ZIP";
}

/// One run of the chain, or of the codec that it consists of.
class Job {
public:
    Job(Options const &options, bool encode, bool showProgress) : m_options(options), m_encode(encode)
    {
        m_what = showProgress ? "qelpack: " + std::string(encode ? "encoding" : "decoding") : "";
    }

    /// @return false if the codec knows that the data are damaged
    bool run(cFileMem &in, cFileMem &out)
    {
        std::vector<std::string> const &codecs = m_options.codecs;
        if (m_options.extended) {
            return runExtended(in, out);
        }
        std::string const &first = m_encode ? codecs.front() : codecs.back();
        std::string const &last = m_encode ? codecs.back() : codecs.front();
        ProgressFile slowIn(in, m_what);
        ProgressFile slowOut(out, m_what);
        cFile &from = isMemoryCodec(first) ? static_cast<cFile &>(in) : slowIn;
        cFile &to = isMemoryCodec(last) ? static_cast<cFile &>(out) : slowOut;
        return codecs.size() == 1 ? runOne(from, to) : runChain(from, to);
    }

private:
    bool runOne(cFile &in, cFile &out)
    {
        std::string const &name = m_options.codecs.front();
        iCodec *const codec = CodecManager::Instance().getCodec(name);
        if (auto *const zip = dynamic_cast<cCodecZIP *>(codec); zip != nullptr && m_encode) {
            return zip->encode(in, out, static_cast<unsigned char>(m_options.level));
        }
        bool const done = m_encode ? codec->encode(in, out) : codec->decode(in, out);
        // These give false when all is well.
        return done || name == "CODEC_LZ77" || (m_encode && name == "CODEC_LZW");
    }

    bool runChain(cFile &in, cFile &out)
    {
        cCodecMulti chain;
        for (std::string const &name : m_options.codecs) {
            chain.addCodec(name);
        }
        return m_encode ? chain.encode(in, out) : chain.decode(in, out);
    }

    bool runExtended(cFileMem &in, cFileMem &out)
    {
        cCodecZIP zip;
        if (m_encode) {
            return zip.encodeEx(in, out, static_cast<unsigned char>(m_options.level));
        }
        bool done = true;
        while (done && !in.eof()) {
            done = zip.decodeEx(in, out);
        }
        return done;
    }

    Options const &m_options;
    bool m_encode;
    std::string m_what;
};

bool comesBack(Options const &options, cFileMem &packed, cFileMem const &original, bool showProgress)
{
    Qel::iCodec::setOutputLimit(std::numeric_limits<std::uint32_t>::max());
    cFileMem back;
    packed.seek(0);
    return Job(options, false, showProgress).run(packed, back) && back.size() == original.size() &&
           (back.size() == 0 || std::memcmp(back.getData(), original.getData(), back.size()) == 0);
}

bool writeFile(std::string const &name, cFileMem const &content)
{
    return os::replaceFile(name.c_str(), content.getData(), content.size());
}

ExitCode failed(ExitCode code, std::string const &text)
{
    std::fprintf(stderr, "qelpack: %s\n", text.c_str());
    return code;
}

} // namespace

bool isKnownCodec(std::string const &name)
{
    CodecManager manager;
    return manager.getCodec(name) != nullptr;
}

ExitCode pack(Options const &options)
{
    CodecManager const manager;
    iCodec::setOutputLimit(options.limit * 1024 * 1024);
    bool const showProgress = !options.quiet && os::isTerminal(stderr);
    cFileMem in;
    cFileMem out;
    if (!in.open(options.in.c_str())) {
        return failed(exitFile, options.in + ": cannot be read, or has 4 GiB or more");
    }
    if (!Job(options, options.encode, showProgress).run(in, out)) {
        out.resize(out.tell());
        std::string const part = options.out + ".part";
        bool const kept = !options.encode && out.size() > 0 && writeFile(part, out);
        return failed(exitDamaged,
                      options.in +
                          (options.encode ? ": cannot be encoded" : ": damaged, or larger than --limit") +
                          (kept ? "; what could be decoded is in " + part : ""));
    }
    if (options.encode && options.verify && !comesBack(options, out, in, showProgress)) {
        return failed(exitDamaged, options.in +
                                       ": this would not come back as it was; nothing is written. See "
                                       "the guide on chains, or use --no-verify");
    }
    if (!writeFile(options.out, out)) {
        return failed(exitFile, options.out + ": cannot be written: " + os::lastErrorText());
    }
    if (!options.quiet) {
        std::printf("%s: %u -> %u bytes", options.out.c_str(), in.size(), out.size());
        std::printf(in.size() > 0 ? " (%.1f %%)\n" : "\n", 100.0 * out.size() / in.size());
    }
    return exitDone;
}
