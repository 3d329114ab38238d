#include "progressFile.h"

#include <cstdio>
#include <utility>

namespace {

constexpr std::chrono::milliseconds patience{1000}; // quick jobs show nothing
constexpr std::chrono::milliseconds pauseBetween{250};

} // namespace

ProgressFile::ProgressFile(Qel::cFileMem &inner, std::string what)
    : m_inner(inner), m_what(std::move(what)), m_next(Clock::now() + patience)
{
}

ProgressFile::~ProgressFile()
{
    if (m_shown) {
        std::fputs("\r\033[K", stderr);
    }
}

unsigned int ProgressFile::read(void *buffer, unsigned int size)
{
    show(true);
    return m_inner.read(buffer, size);
}

unsigned int ProgressFile::write(void const *buffer, unsigned int size)
{
    show(false);
    return m_inner.write(buffer, size);
}

void ProgressFile::show(bool reading)
{
    if (m_what.empty() || Clock::now() < m_next) {
        return;
    }
    m_next = Clock::now() + pauseBetween;
    m_shown = true;
    constexpr double mib = 1024 * 1024;
    if (reading) {
        std::fprintf(stderr, "\r%s: %.0f %% read\033[K", m_what.c_str(), 100.0 * tell() / size());
    } else {
        std::fprintf(stderr, "\r%s: %.0f MiB written\033[K", m_what.c_str(), tell() / mib);
    }
}
