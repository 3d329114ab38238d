#include "System/math/fft.h"

#include "System/math/mersenneTwister.h"
#include "System/math/splineCR.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/math/atEveryLevel.h"
#include "Tests/math/mathNumbersReference.inc"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

namespace Qel {
namespace {

template <class T>
struct Signal {
    explicit Signal(std::size_t size) : real(size), imag(size) {}
    bool operator==(Signal const &other) const
    {
        return std::memcmp(real.data(), other.real.data(), real.size() * sizeof(T)) == 0 &&
               std::memcmp(imag.data(), other.imag.data(), imag.size() * sizeof(T)) == 0;
    }
    std::vector<T> real, imag;
};

template <class T>
void run(std::size_t size, bool inverse, T const *re, T const *im, Signal<T> &out)
{
    auto const count = static_cast<unsigned int>(size);
    if constexpr (sizeof(T) == sizeof(double)) {
        cFFT::fft_double(count, inverse, re, im, out.real.data(), out.imag.data());
    } else {
        cFFT::fft_float(count, inverse, re, im, out.real.data(), out.imag.data());
    }
}

// The transform as a plain loop over blocks and samples: what every kernel must give to the bit.
template <class T>
void plainly(std::size_t size, bool inverse, T const *re, T const *im, Signal<T> &out)
{
    std::size_t reversed = 0;
    for (std::size_t i = 0; i < size; ++i) {
        out.real[reversed] = re[i];
        out.imag[reversed] = im != nullptr ? im[i] : T{};
        std::size_t bit = size / 2;
        for (; bit != 0 && (reversed & bit) != 0; bit /= 2) {
            reversed ^= bit;
        }
        reversed |= bit;
    }
    double const numerator = inverse ? -6.2831854820251465 : 6.2831854820251465;
    for (std::size_t block = 2, end = 1; block <= size; end = block, block *= 2) {
        double const delta = numerator / static_cast<double>(block);
        double const w = 2 * std::cos(-delta);
        for (std::size_t i = 0; i < size; i += block) {
            double ar2 = std::cos(-2 * delta);
            double ar1 = std::cos(-delta);
            double ai2 = std::sin(-2 * delta);
            double ai1 = std::sin(-delta);
            for (std::size_t j = i, k = i + end; j < i + end; ++j, ++k) {
                double const ar0 = w * ar1 - std::exchange(ar2, ar1);
                double const ai0 = w * ai1 - std::exchange(ai2, ai1);
                ar1 = ar0;
                ai1 = ai0;
                double const tr = ar0 * out.real[k] - ai0 * out.imag[k];
                double const ti = ar0 * out.imag[k] + ai0 * out.real[k];
                out.real[k] = static_cast<T>(out.real[j] - tr);
                out.imag[k] = static_cast<T>(out.imag[j] - ti);
                out.real[j] = static_cast<T>(out.real[j] + tr);
                out.imag[j] = static_cast<T>(out.imag[j] + ti);
            }
        }
    }
    if (inverse) {
        for (std::size_t i = 0; i < size; ++i) {
            out.real[i] = static_cast<T>(out.real[i] * (1.0 / static_cast<double>(size)));
            out.imag[i] = static_cast<T>(out.imag[i] * (1.0 / static_cast<double>(size)));
        }
    }
}

template <class T>
void checkEveryLevelAndSize()
{
    for (std::size_t size = 2; size <= 1U << 18U; size *= 2) {
        Signal<T> in(size + 1);
        cMersenneTwister twister(static_cast<unsigned int>(size));
        for (std::size_t i = 0; i < in.real.size(); ++i) {
            in.real[i] = static_cast<T>(twister.Random01() - 0.5F) / 3;
            in.imag[i] = static_cast<T>(twister.Random01() - 0.5F) / 7;
        }
        // Signed zeros, and inputs on no boundary of vectors.
        for (std::size_t i = 0; i < size / 4; ++i) {
            in.real[i] = i % 2 == 0 ? T{} : -T{};
        }
        for (int form = 0; form < 4; ++form) {
            bool const inverse = form % 2 != 0;
            T const *const imag = form < 2 ? in.imag.data() + 1 : nullptr;
            Signal<T> expected(size);
            plainly(size, inverse, in.real.data() + 1, imag, expected);
            atEveryLevel([&] {
                Signal<T> out(size);
                run(size, inverse, in.real.data() + 1, imag, out);
                ASSERT_EQ(out, expected) << "size " << size << ", form " << form;
            });
        }
    }
}

TEST(FFT, GivesTheBitsOfThePlainLoopAtEveryLevelAndSize)
{
    checkEveryLevelAndSize<double>();
    checkEveryLevelAndSize<float>();
}

TEST(FFT, IsTheDiscreteTransformAndItsInverseGivesTheSamplesBack)
{
    Signal<double> out(16);
    run(16, false, reference::waveReal, reference::waveImag, out);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(out.real[i], reference::spectrumReal[i], 1e-5);
        EXPECT_NEAR(out.imag[i], reference::spectrumImag[i], 1e-5);
    }
    Signal<double> back(16);
    run<double>(16, true, out.real.data(), out.imag.data(), back);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(back.real[i], reference::waveReal[i], 1e-6);
        EXPECT_NEAR(back.imag[i], reference::waveImag[i], 1e-6);
    }
}

// The twiddles of a block are made by whoever needs them first.
TEST(FFT, ServesSeveralThreadsFromTheStart)
{
    std::vector<double> const in(8192, 0.5);
    std::vector<Signal<double>> outs(4, Signal<double>(in.size()));
    test::inThreads(4, [&](int index) {
        for (std::size_t size = 2; size <= in.size(); size *= 2) {
            run<double>(size, false, in.data(), nullptr, outs[static_cast<std::size_t>(index)]);
        }
    });
    Signal<double> expected(in.size());
    plainly<double>(in.size(), false, in.data(), nullptr, expected);
    for (Signal<double> const &out : outs) {
        EXPECT_EQ(out, expected);
    }
}

TEST(FFT, LeavesTheOutputsAloneWhereItCannotWork)
{
    std::vector<double> memory(64);
    std::iota(memory.begin(), memory.end(), 1);
    std::vector<double> const before = memory;
    double *const m = memory.data();
    for (unsigned int const size : {0U, 1U, 3U, 6U, 0x80000001U}) {
        cFFT::fft_double(size, 0, m, m + 8, m + 16, m + 24);
        EXPECT_EQ(memory, before) << size;
    }
    struct {
        double *realIn, *imagIn, *realOut, *imagOut;
    } const rows[] = {
        {m, m + 8, m, m + 24},       {m, m + 8, m + 16, m + 4},
        {m, m + 8, m + 16, m + 23},  {nullptr, m + 8, m + 16, m + 24},
        {m, m + 8, nullptr, m + 24}, {m, m + 8, m + 16, nullptr},
        {m, nullptr, m + 7, m + 24}, {m + 7, nullptr, m, m + 24},
    };
    for (auto const &row : rows) {
        cFFT::fft_double(8, 0, row.realIn, row.imagIn, row.realOut, row.imagOut);
        EXPECT_EQ(memory, before) << &row - rows;
    }
}

cSplineCR referenceSpline()
{
    cSplineCR spline;
    for (auto at = std::begin(reference::splinePoints); at != std::end(reference::splinePoints); at += 3) {
        float const point[] = {static_cast<float>(at[0]), static_cast<float>(at[1]),
                               static_cast<float>(at[2])};
        spline.addValue(D3DXVECTOR3(point));
    }
    return spline;
}

void expectNear(D3DXVECTOR3 const &v, double const *expected, double tolerance)
{
    EXPECT_NEAR(v.x, expected[0], tolerance);
    EXPECT_NEAR(v.y, expected[1], tolerance);
    EXPECT_NEAR(v.z, expected[2], tolerance);
}

TEST(SplineCR, GoesThroughItsPointsAlongTheHermiteCurve)
{
    cSplineCR const spline = referenceSpline();
    for (std::size_t i = 0; i < std::size(reference::splinePlaces); ++i) {
        auto const place = static_cast<float>(reference::splinePlaces[i]);
        SCOPED_TRACE(place);
        expectNear(spline.interpolate(place), reference::splinePositions + 3 * i, 1e-5);
        expectNear(spline.getTangentVector(place), reference::splineDirections + 3 * i, 1e-4);
    }
    for (unsigned int i = 0; i < 4; ++i) {
        EXPECT_EQ(spline.interpolate(i, 0.0F), spline.getValue(static_cast<unsigned short>(i)));
        EXPECT_EQ(spline.interpolate(i, 1.0F), spline.getValue(static_cast<unsigned short>(i + 1)));
    }
    EXPECT_EQ(spline.interpolate(1.0F), spline.getValue(4));
    // A segment is two transforms, to the bit.
    D3DXMATRIX const basis = cSplineCR::getCoeffMatrix();
    for (float t = 0.01F; t < 1; t += 0.01F) {
        D3DXVECTOR3 const p0(t, 2, -1), t0(3, t, 0), p1(0.1F, 5, t), t1(-2, 0.3F, 7);
        D3DXMATRIX const rows(t, 2, -1, 1, 0.1F, 5, t, 1, 3, t, 0, 1, -2, 0.3F, 7, 1);
        D3DXVECTOR4 expected(t * t * t, t * t, t, 1);
        D3DXVec4Transform(&expected, D3DXVec4Transform(&expected, &expected, &basis), &rows);
        ASSERT_EQ(cSplineCR::interpolate(p0, t0, p1, t1, t), D3DXVECTOR3(expected));
    }
    EXPECT_NEAR(spline.approximateLength(1000), reference::splineLength[0], 1e-3);
    EXPECT_EQ(spline.approximateLength(0), 0);
}

TEST(SplineCR, TangentsAreHalfDifferencesOneSidedAtOpenEnds)
{
    cSplineCR spline;
    spline.addValue(D3DXVECTOR3(1, 2, 3));
    EXPECT_EQ(spline.getTangent(0), D3DXVECTOR3(0, 0, 0));
    EXPECT_EQ(spline.interpolate(0.0F), D3DXVECTOR3(1, 2, 3));
    EXPECT_EQ(spline.approximateLength(0xFFFFFFFFU), 0) << "steps too small to add up end all the same";
    spline.addValue(D3DXVECTOR3(3, 2, 1));
    EXPECT_EQ(spline.getTangent(0U), D3DXVECTOR3(1, 0, -1));
    EXPECT_EQ(spline.getTangent(1U), D3DXVECTOR3(1, 0, -1));
    spline.addValue(D3DXVECTOR3(5, 8, 1));
    EXPECT_EQ(spline.getTangent(1U), D3DXVECTOR3(2, 3, -1));
    EXPECT_EQ(spline.getTangentVector(0), D3DXVECTOR3(1, 0, -1)) << "as it is stored";

    spline.addValue(D3DXVECTOR3(1, 2, 3)); // closed
    EXPECT_EQ(spline.getTangent(0U), (D3DXVECTOR3(3, 2, 1) - D3DXVECTOR3(5, 8, 1)) * 0.5F);
    EXPECT_EQ(spline.getTangent(3U), spline.getTangent(0U));

    spline.setAutoCalculate(false);
    spline.setTangent(1, D3DXVECTOR3(9, 9, 9));
    spline.updatePoint(2, D3DXVECTOR3(0, 0, 0));
    EXPECT_EQ(spline.getTangent(1U), D3DXVECTOR3(9, 9, 9));
    spline.recalcTangents();
    EXPECT_EQ(spline.getTangent(1U), (D3DXVECTOR3(0, 0, 0) - D3DXVECTOR3(1, 2, 3)) * 0.5F);
    spline.clear();
    spline.addValue(D3DXVECTOR3(1, 1, 1));
    spline.addValue(D3DXVECTOR3(1, 1, 1));
    EXPECT_EQ(spline.getTangent(1U), D3DXVECTOR3(0, 0, 0)) << "automatic calculation stays off";
}

TEST(SplineCR, AnythingOutsideIsTheNearerEnd)
{
    cSplineCR const empty;
    EXPECT_EQ(empty.interpolate(0.5F), D3DXVECTOR3(0, 0, 0));
    EXPECT_EQ(empty.interpolate(3U, 0.5F), D3DXVECTOR3(0, 0, 0));
    EXPECT_EQ(empty.getTangentVector(0.5F), D3DXVECTOR3(0, 0, 0));
    EXPECT_EQ(empty.getValue(7), D3DXVECTOR3(0, 0, 0));

    cSplineCR spline = referenceSpline();
    D3DXVECTOR3 const first = spline.getValue(0);
    D3DXVECTOR3 const last = spline.getValue(4);
    float const infinity = std::numeric_limits<float>::infinity();
    for (float const t : {-0.5F, -infinity, std::nanf("")}) {
        EXPECT_EQ(spline.interpolate(t), first);
        EXPECT_EQ(spline.getTangentVector(t), spline.getTangent(0U));
    }
    for (float const t : {1.5F, infinity}) {
        EXPECT_EQ(spline.interpolate(t), last);
        EXPECT_EQ(spline.getTangentVector(t), spline.getTangent(4U));
    }
    EXPECT_EQ(spline.interpolate(4294967295U, 0.5F), last);
    EXPECT_EQ(spline.getTangent(99U), spline.getTangent(4));
    EXPECT_EQ(spline.getTangent(-1), spline.getTangent(0));
    spline.updatePoint(5, first);
    spline.setTangent(5, first);
    EXPECT_EQ(spline.getNumPoints(), 5);
    EXPECT_EQ(spline.getValue(4), last);
}

} // namespace
} // namespace Qel
