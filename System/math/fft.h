#pragma once

#include "System/System/export.h"

namespace Qel {

/// Radix-2 Fourier transforms of complex samples, real and imaginary parts in arrays of their own.
///
/// The forward transform is the sum of x[n] e^(+2 pi i k n / N) and does not scale; the inverse has the minus
/// in its exponent and divides by N, so that one after the other gives back the input up to rounding.
/// Programs that put the minus into the forward transform find the bin k here at N - k. The angles come from
/// a recurrence of three terms that starts anew in every block, from 2 pi rounded to single precision:
/// forward and inverse agree to about 1e-6 with the exact transforms, up to about half a million samples.
///
/// @par Threads  May be called on several threads at once, on different outputs.
class QEL_API cFFT {
public:
    /// Transforms double precision samples.
    ///
    /// The call returns with the outputs untouched if @p numSamples is below 2 or no power of two, if a
    /// pointer other than @p imagIn is null, or if an output overlaps an input or the other output.
    /// @param numSamples        values in each array
    /// @param inverseTransform  0 for the forward transform
    /// @param imagIn            null stands for zeros
    static void fft_double(unsigned int numSamples, int inverseTransform, double const *realIn,
                           double const *imagIn, double *realOut, double *imagOut);

    /// As fft_double() for single precision samples. Each butterfly computes in double precision.
    static void fft_float(unsigned int numSamples, int inverseTransform, float const *realIn,
                          float const *imagIn, float *realOut, float *imagOut);
};

} // namespace Qel
