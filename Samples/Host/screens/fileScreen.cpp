#include "fileScreen.h"

#include "style.h"

#include "Samples/Host/mediaJob.h"
#include "Samples/Host/settings.h"

#include <algorithm>

namespace {

double megabytes(std::uint64_t bytes)
{
    return static_cast<double>(bytes) / (1 << 20);
}

} // namespace

void FileScreen::draw(Canvas &canvas, float x, float y, float w, float)
{
    float const line = canvas.lineHeight() + 4;
    if (m_job == nullptr) {
        canvas.text(x, y, "There are no media beside the program.", style::faint);
        return;
    }
    for (MediaJob::Mounted const &mounted : m_job->mounted()) {
        canvas.text(x, y, mounted.type, style::accent);
        canvas.text(x + 130, y,
                    style::format("%zu of %zu files, %.1f MB", mounted.found, mounted.listed,
                                  megabytes(mounted.bytes)));
        canvas.text(x + 400, y, mounted.path, style::faint);
        y += line;
    }
    y += line;
    for (MediaJob::Pass const &pass : m_job->passes()) {
        float const share = std::min(static_cast<float>(pass.loads) /
                                         static_cast<float>(std::max<std::size_t>(m_job->files(), 1)),
                                     1.0f);
        canvas.text(x, y, pass.name, style::accent);
        canvas.fill(x + 130, y, w - 130, line - 4, style::bar);
        canvas.fill(x + 130, y, (w - 130) * share, line - 4, share < 1 ? style::warning : style::good);
        y += line;
        canvas.text(x + 130, y,
                    style::format("%zu of %zu loads, %.1f MB, %zu evictions, the longest %.2f ms", pass.loads,
                                  m_job->files(), megabytes(pass.bytes), pass.evictions, pass.longestMs));
        y += 2 * line;
    }
    canvas.text(x, y, "budget", style::accent);
    canvas.text(x + 130, y,
                settings::budget > 0
                    ? style::format("%.1f MB, at most %.2f MB at one time, %s",
                                    megabytes(static_cast<std::uint64_t>(settings::budget.get())),
                                    megabytes(m_job->peak()), m_job->isBudgetKept() ? "kept" : "not kept")
                    : style::format("none, at most %.2f MB at one time", megabytes(m_job->peak())));
    y += line;
    canvas.text(x, y, "checksums", style::accent);
    canvas.text(x + 130, y,
                style::format("%zu compared, %zu mistakes", m_job->compared(), m_job->mistakes().size()),
                m_job->mistakes().empty() ? style::good : style::bad);
}
