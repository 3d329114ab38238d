#include "frameScreen.h"

#include "style.h"

#include "System/System/Root.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace {

constexpr float marks[] = {1, 4, 1000 / 60.0f, 1000 / 30.0f}; // ms

} // namespace

void FrameScreen::draw(Canvas &canvas, float x, float y, float w, float h)
{
    Qel::Root &root = Qel::Root::Instance();
    auto const &history = root.getStats().history;
    std::vector<float> times; // ms, the oldest first
    std::transform(std::begin(history), std::end(history), std::back_inserter(times),
                   [](auto const &record) { return record.frameTime * 1000; });
    std::vector<float> sorted;
    std::copy_if(times.begin(), times.end(), std::back_inserter(sorted), [](float ms) { return ms > 0; });
    std::sort(sorted.begin(), sorted.end());
    if (sorted.empty()) {
        return;
    }
    float const mean =
        std::accumulate(sorted.begin(), sorted.end(), 0.0f) / static_cast<float>(sorted.size());
    float const slow = sorted[sorted.size() * 95 / 100];
    canvas.text(x, y,
                style::format("the last %zu frames: %.1f a second, mean %.2f ms, 95 of 100 below %.2f ms, "
                              "the longest %.2f ms",
                              sorted.size(), static_cast<double>(1000 / mean), static_cast<double>(mean),
                              static_cast<double>(slow), static_cast<double>(sorted.back())));

    float const top = y + 2 * canvas.lineHeight();
    float const height = y + h - top;
    float const most = std::max(1.3f * slow, 2.0f); // ms at the upper edge
    canvas.fill(x, top, w, height, style::bar);
    float const bar = w / static_cast<float>(times.size());
    for (std::size_t i = 0; i < times.size(); ++i) {
        float const share = std::min(times[i] / most, 1.0f);
        Qel::Color const color = times[i] > marks[3]   ? style::bad
                                 : times[i] > marks[2] ? style::warning
                                                       : style::good;
        float const left = std::round(x + bar * static_cast<float>(i));
        float const right = std::round(x + bar * static_cast<float>(i + 1));
        canvas.fill(left, top + height * (1 - share), right - left, height * share, color);
    }
    for (float const mark : marks) {
        float const at = top + height * (1 - mark / most);
        if (at > top) {
            canvas.line(x, at, x + w - 1, at, style::faint);
            canvas.text(x + 4, at - canvas.lineHeight(), style::format("%.1f ms", static_cast<double>(mark)),
                        style::text);
        }
    }
}
