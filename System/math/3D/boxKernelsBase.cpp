#include "System/math/3D/boxKernels.h"

#include "System/math/lanes.h"

namespace Qel {

namespace {

struct V : Lanes {
    static constexpr std::size_t width = 4;

    struct Mask {
        Lanes::Mask mask;

        Mask(Lanes::Mask m) : mask(m) {}
        Mask operator&(Mask b) const { return mask & b.mask; }
        Mask operator|(Mask b) const { return mask | b.mask; }
        unsigned bits() const { return static_cast<unsigned>(mask.bits()); }
        V choose(V a, V b) const { return mask.choose(a, b); }
    };

    V() {}
    V(Lanes lanes) : Lanes(lanes) {}

    static V all(float f) { return Lanes::all(f); }
    static V quads(float const *four) { return Lanes::load(four); }
    static V min(V a, V b) { return Lanes::min(a, b); }
    static V max(V a, V b) { return Lanes::max(a, b); }
    V abs() const { return Lanes::abs(); }
    V operator+(V b) const { return Lanes::operator+(b); }
    V operator-(V b) const { return Lanes::operator-(b); }
    V operator*(V b) const { return Lanes::operator*(b); }
    V operator/(V b) const { return Lanes::operator/(b); }
    Mask operator<(V b) const { return Lanes::operator<(b); }
    Mask operator<=(V b) const { return Lanes::operator<=(b); }
};

struct Quads {
    V low[4];
    V high[4];

    explicit Quads(float const *boxes)
    {
        for (int r = 0; r < 4; ++r) {
            low[r] = Lanes::load(boxes + r * 8);
            high[r] = Lanes::load(boxes + r * 8 + 4);
        }
    }

    static unsigned boxOfLane(unsigned lane) { return lane; }
    static std::uint32_t ordered(std::uint32_t lanes) { return lanes; }
    static V ordered(V lanes) { return lanes; }
};

void transpose(V const *row, V *to)
{
    Lanes x, y, z;
    Lanes::transposeXyz(row[0], row[1], row[2], row[3], x, y, z);
    to[0] = x;
    to[1] = y;
    to[2] = z;
}

#include "System/math/3D/boxKernels.inl.h"

} // namespace

BoxKernels const boxKernelsBase = kernels;

} // namespace Qel
