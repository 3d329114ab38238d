#include "System/math/mersenneTwister.h"

#include "System/math/kernels/kernels.h"

#include <algorithm>
#include <cstring>

namespace Qel {

cMersenneTwister::cMersenneTwister(cMersenneTwister const &other)
    : next(state + (other.next - other.state)), left(other.left)
{
    std::memcpy(state, other.state, sizeof state);
}

cMersenneTwister &cMersenneTwister::operator=(cMersenneTwister const &other)
{
    if (this != &other) {
        std::memcpy(state, other.state, sizeof state);
        next = state + (other.next - other.state);
        left = other.left;
    }
    return *this;
}

unsigned int cMersenneTwister::Reload()
{
    if (left < -1) {
        Init(defaultSeed);
    }
    kernels->stepTwister(state);
    next = state;
    left = stateSize;
    return Random();
}

template <class T>
void cMersenneTwister::draw(T *values, std::size_t count,
                            void (*temper)(std::uint32_t const *, std::size_t, T *))
{
    while (count > 0) {
        if (left <= 0) {
            --left;
            Reload();
            next = state;
            left = stateSize;
        }
        std::size_t const now = std::min(count, static_cast<std::size_t>(left));
        temper(next, now, values);
        next += now;
        left -= static_cast<std::int32_t>(now);
        values += now;
        count -= now;
    }
}

void cMersenneTwister::fill(unsigned int *values, std::size_t count)
{
    draw(values, count, kernels->temperTwister);
}

void cMersenneTwister::fill01(float *values, std::size_t count)
{
    draw(values, count, kernels->temperTwister01);
}

void cMersenneTwister::MemorySave(char *image) const
{
    std::int32_t const head[2] = {left, static_cast<std::int32_t>(next - state)};
    std::memcpy(image, head, sizeof head);
    std::memcpy(image + sizeof head, state, sizeof state);
}

void cMersenneTwister::MemoryLoad(char const *image)
{
    std::int32_t head[2];
    std::memcpy(head, image, sizeof head);
    std::memcpy(state, image + sizeof head, sizeof state);
    std::int32_t const position = std::clamp(head[1], 0, stateSize);
    left = std::clamp(head[0], -1, stateSize - position);
    next = state + position;
}

void cMersenneTwister::Save(unsigned int *words) const
{
    std::memcpy(words, state, stateSize * sizeof *state);
    words[stateSize] = static_cast<unsigned int>(left);
}

void cMersenneTwister::Load(unsigned int const *words)
{
    std::memcpy(state, words, stateSize * sizeof *state);
    left = std::clamp(static_cast<std::int32_t>(words[stateSize]), -1, stateSize);
    next = state + (stateSize - std::max(left, 0));
}

} // namespace Qel
