#include "System/Codec/codec.h"

#include "Support/PoolHeap/poolHeap.h"

#include <atomic>

namespace Qel {

namespace {

constinit std::atomic<std::uint32_t> outputLimit{64 * 1024 * 1024};

} // namespace

iCodec::~iCodec() = default;

void iCodec::setOutputLimit(std::uint32_t bytes)
{
    outputLimit.store(bytes, std::memory_order_relaxed);
}

std::uint32_t iCodec::getOutputLimit()
{
    return outputLimit.load(std::memory_order_relaxed);
}

void *iCodec::operator new(std::size_t size) noexcept
{
    return PoolHeap::std_alloc(size);
}

void iCodec::operator delete(void *block) noexcept
{
    PoolHeap::std_free(block);
}

void *iCodec::operator new(std::size_t size, std::align_val_t alignment) noexcept
{
    return ::operator new(size, alignment, std::nothrow);
}

void iCodec::operator delete(void *block, std::align_val_t alignment) noexcept
{
    ::operator delete(block, alignment);
}

} // namespace Qel
