#include "taskScreen.h"

#include "style.h"

#include "Samples/Host/workload.h"

void TaskScreen::step(float dt)
{
    constexpr float secondsOfALoad = 0.5f;
    m_sinceLoad += dt;
    if (m_sinceLoad < secondsOfALoad && !m_loads.empty()) {
        return;
    }
    m_sinceLoad = 0;
    m_loads.resize(m_workload.workers());
    for (unsigned i = 0; i < m_workload.workers(); ++i) {
        m_loads[i] = m_workload.load(i);
    }
}

void TaskScreen::draw(Canvas &canvas, float x, float y, float w, float)
{
    float const line = canvas.lineHeight() + 4;
    auto const bar = [&](std::string const &name, float share, Qel::Color color, std::string const &text) {
        canvas.text(x, y, name, style::accent);
        canvas.fill(x + 130, y, w - 260, line - 4, style::bar);
        canvas.fill(x + 130, y, (w - 260) * share, line - 4, color);
        canvas.text(x + w - 115, y, text);
        y += 1.5f * line;
    };
    auto const all = static_cast<float>(m_workload.tasks());
    canvas.text(x, y, "The primes below 100 000, counted in steps on a pool of workers.");
    y += 2 * line;
    bar("handed over", static_cast<float>(m_workload.handedOver()) / all, style::warning,
        style::format("%zu of %zu", m_workload.handedOver(), m_workload.tasks()));
    bar("done", static_cast<float>(m_workload.done()) / all, style::good,
        style::format("%zu of %zu", m_workload.done(), m_workload.tasks()));
    for (std::size_t i = 0; i < m_loads.size(); ++i) {
        bar(style::format("worker %zu", i), m_loads[i] / 100, style::accent,
            style::format("%.0f %%", static_cast<double>(m_loads[i])));
    }
    y += line;
    float const calls = x + 250;
    float const time = x + 350;
    canvas.text(x, y, "scope", style::accent);
    canvas.text(calls, y, "calls", style::accent);
    canvas.text(time, y, "ms in all", style::accent);
    y += line;
    for (Qel::ProfileNode const *node = m_workload.profile().getRoot()->getChild(); node != nullptr;
         node = node->getSibling()) {
        canvas.text(x, y, node->getName());
        canvas.text(calls, y, std::to_string(node->getTotalCalls()));
        canvas.text(time, y, style::format("%.3f", static_cast<double>(node->getTotalTime())));
        y += line;
    }
}
