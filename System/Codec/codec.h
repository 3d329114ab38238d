#pragma once

#include "System/File/file.h"
#include "System/System/export.h"

#include <cstddef>
#include <cstdint>
#include <new>

namespace Qel {

/// Turns one stream into another, and back.
///
/// A codec reads its input from where that stands to its end and writes at the output's position. There is no
/// common header and no tag: the reader has to know which codec wrote what. Codecs are asked for by name, see
/// CodecManager.
///
/// What is returned differs, since two of the codecs have no way to fail:
///
/// | Codec         | encode, when done | decode, when done | decode of damaged data                     |
/// |---------------|-------------------|-------------------|--------------------------------------------|
/// | cCodecMTF     | true              | true              | there is none                              |
/// | cCodecHuffman | true              | true              | true; false at setOutputLimit()            |
/// | cCodecLZ77    | false             | false             | false                                      |
/// | cCodecLZW     | false             | true              | false                                      |
/// | cCodecZIP     | true              | true              | false                                      |
///
/// Where a stream is damaged or cut, what could be decoded up to there has been written. Apart from that
/// false means that the output did not take everything or that memory ran out.
///
/// Somebody else's codec is derived from this one and made by a CodecFactory. It is made and destroyed
/// through the operators of this class, so that it lies in the memory library whoever makes it; one that
/// needs more than the usual alignment has its block from the global operators.
///
/// @par Threads  Codecs hold working state: one object does one job at a time. Threads that work at the same
///               time make objects of their own, and do not ask CodecManager, which has one for each name.
class QEL_API iCodec {
public:
    /// Compresses or transforms.
    /// @param in   read from its position to its end, where it is left
    /// @param out  written at its position
    /// Further arguments are for a codec's own use; those of the library read none.
    virtual bool encode(cFile &in, cFile &out, ...) = 0;

    /// Takes encode() back. The arguments are the same.
    virtual bool decode(cFile &in, cFile &out, ...) = 0;

    virtual ~iCodec();

    /// Sets how many bytes a decode() of cCodecHuffman may write when they are out of proportion to its
    /// input: more than 8 for each byte of it. Beyond both it stops and gives false. That can only be damage,
    /// or data of one byte value alone, whose codes take no bits. The other codecs' formats set a proportion
    /// themselves, and cCodecZIP refuses 64 MiB. For the process; 64 MiB at start.
    static void setOutputLimit(std::uint32_t bytes);
    static std::uint32_t getOutputLimit(); ///< as setOutputLimit() was told

    static void *operator new(std::size_t size) noexcept; ///< PoolHeap::std_alloc(); null without memory
    static void *operator new(std::size_t size, std::nothrow_t const &) noexcept
    {
        return operator new(size);
    }
    static void *operator new(std::size_t size, std::align_val_t alignment) noexcept;
    static void *operator new(std::size_t size, std::align_val_t alignment, std::nothrow_t const &) noexcept
    {
        return operator new(size, alignment);
    }
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *block) noexcept; ///< PoolHeap::std_free()
    static void operator delete(void *block, std::nothrow_t const &) noexcept { operator delete(block); }
    static void operator delete(void *block, std::align_val_t alignment) noexcept;
    static void operator delete(void *block, std::align_val_t alignment, std::nothrow_t const &) noexcept
    {
        operator delete(block, alignment);
    }
    static void operator delete(void *, void *) noexcept {}

protected:
    iCodec() = default;
    iCodec(iCodec const &) = default;
    iCodec &operator=(iCodec const &) = default;
};

} // namespace Qel
