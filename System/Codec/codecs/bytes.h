#pragma once

#include "System/File/file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Qel {

class cFileMem;

struct PoolBytesFree {
    void operator()(unsigned char *bytes) const;
};

/// A buffer of poolheap_malloc() with any content.
using PoolBytes = std::unique_ptr<unsigned char[], PoolBytesFree>;

PoolBytes makePoolBytes(std::size_t size); ///< null without memory

/// The memory stream behind a cFile, null if it is none.
cFileMem *asMemory(cFile &file);

/// Gives what a stream holds from its position on in runs of bytes, until there is no more. The stream is
/// left at its end.
///
/// A memory stream is looked at in place, in one run, which stays valid until that stream is changed. It is
/// left alone if it is also the one written to.
class ByteSource {
public:
    ByteSource(cFile &in, cFile const &out);

    bool ok() const { return m_memory != nullptr || m_chunk != nullptr; } ///< Was there memory?

    std::span<unsigned char const> next(); ///< the next run; an empty one at the end

private:
    static constexpr std::size_t chunkSize = 64 * 1024;

    cFile &m_in;
    cFileMem *m_memory;
    PoolBytes m_chunk;
    std::uint64_t m_left; // bytes that may still come: bit streams go on for ever
};

/// All that a stream holds from its position on. The stream is left at its end.
class RestOfStream {
public:
    RestOfStream(cFile &in, cFile const &out); ///< as ByteSource

    bool ok() const { return m_ok; } ///< Was there memory?

    unsigned char const *data() const { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }

private:
    PoolBytes m_own;
    std::span<unsigned char const> m_bytes;
    bool m_ok = true;
};

/// The most that a decoder of codes of a bit or more may write for so much input, see
/// iCodec::setOutputLimit().
std::uint64_t outputBound(std::uint64_t inputBytes);

} // namespace Qel
