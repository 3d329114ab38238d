#pragma once

#include "System/Platform/win32Font.h"

#include <cstddef>

namespace Qel {

/// A caller's pixels, and where a cell begins in them.
struct Win32Font::Canvas {
    int x;
    int y;
    int width;
    int height;
    unsigned char *pixels;

    /// A pixel of the cell; null outside the buffer.
    unsigned char *at(int column, int row) const
    {
        long const left = long{x} + column;
        long const top = long{y} + row;
        if (left < 0 || left >= width || top < 0 || top >= height) {
            return nullptr;
        }
        return pixels + 4 * (top * width + left);
    }

    std::size_t numPixels() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }

    /// @p width pixels from a place of the cell on, over the end of its row if need be, as far as the buffer
    /// goes.
    template <class Work>
    void forRun(int row, Work work) const
    {
        long const first = (long{y} + row) * width + x;
        for (long i = first < 0 ? 0 : first; i < first + width && i < static_cast<long>(numPixels()); ++i) {
            work(pixels + 4 * i);
        }
    }
};

} // namespace Qel
