#pragma once

#include "screen.h"

class MediaJob;

/// The archives, and how loading all of their files goes.
class FileScreen final : public Screen {
public:
    /// @param job  null if there are no media
    explicit FileScreen(MediaJob const *job) : m_job(job) {}

    char const *name() const override { return "files"; }
    char const *title() const override { return "Files"; }
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    MediaJob const *m_job;
};
