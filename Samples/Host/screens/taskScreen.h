#pragma once

#include "screen.h"

class Workload;

/// The pool of tasks and what the frame's own time goes into.
class TaskScreen final : public Screen {
public:
    explicit TaskScreen(Workload &workload) : m_workload(workload) {}

    char const *name() const override { return "tasks"; }
    char const *title() const override { return "Tasks"; }
    void step(float dt) override;
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    Workload &m_workload;
    float m_sinceLoad = 0; // seconds
    std::vector<float> m_loads;
};
