#pragma once

#include "canvas.h"

/// One page of the host's window.
class Screen {
public:
    virtual ~Screen() = default;

    virtual char const *name() const = 0;  ///< a word, for the command line
    virtual char const *title() const = 0; ///< for people

    virtual void open() {}      ///< called once, before it is first shown
    virtual void step(float) {} ///< called each frame since then. Seconds
    virtual void warmUp() {}    ///< gets to where there is something to see, as fast as it goes

    /// @param x, y, w, h  the part of the canvas that is its own
    virtual void draw(Canvas &canvas, float x, float y, float w, float h) = 0;
};
