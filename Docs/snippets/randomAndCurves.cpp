#include "Support/PoolHeap/poolHeap.h"
#include "System/math/crc32.h"
#include "System/math/fft.h"
#include "System/math/md5.h"
#include "System/math/mersenneTwister.h"
#include "System/math/perlin.h"
#include "System/math/rand.h"
#include "System/math/splineCR.h"

#include <cstdio>
#include <vector>

using namespace Qel;

int main()
{
    // Chance: the shared generator for what may differ from run to run, one of your own for what must not.
    cRand::seed(2024);
    int const dice = cRand::random(1, 6); // 1 and 6 included
    float const spread = cRand::random(-0.5F, 0.5F);
    cMersenneTwister replay(7);
    std::vector<float> gusts(10000);
    replay.fill01(gusts.data(), gusts.size()); // the next 10000 values of Random01() at once
    std::vector<char> saved(static_cast<std::size_t>(cMersenneTwister::MemorySaveSize()));
    replay.MemorySave(saved.data()); // MemoryLoad() goes on from here

    // A path through points, walked by a parameter from 0 to 1.
    cSplineCR path;
    path.setAutoCalculate(false); // or every point would compute all tangents anew
    for (float const x : {0.0F, 2.0F, 5.0F, 6.0F}) {
        path.addValue(D3DXVECTOR3(x, x * x * 0.1F, 0));
    }
    path.recalcTangents();
    D3DXVECTOR3 const halfWay = path.interpolate(0.5F);

    // A spectrum: real and imaginary parts are arrays of their own, and null stands for zeros.
    std::vector<float> real(1024);
    std::vector<float> imag(1024);
    cFFT::fft_float(1024, 0, gusts.data(), nullptr, real.data(), imag.data());

    // Clouds: 512 x 512 bytes, 8 cells across.
    unsigned char *const clouds = Perlin::createField(512, 512, 8);
    unsigned char const middle = clouds != nullptr ? clouds[256 * 512 + 256] : 0;
    PoolHeap::std_free(clouds);

    // Names and data.
    unsigned int const id = cCRC32::calcCRC("textures/grass.dds");
    MD5Hash hash;
    cMD5().getMD5(reinterpret_cast<unsigned char const *>("abc"), 3, hash);

    std::printf("%d %.3f, half way at %.2f %.2f, %.3f, %d, %08x, %02x...\n", dice,
                static_cast<double>(spread), static_cast<double>(halfWay.x), static_cast<double>(halfWay.y),
                static_cast<double>(real[0]), middle, id, hash.hash[0]);
}
