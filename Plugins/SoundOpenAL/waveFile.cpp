#include "waveFile.h"

#include <sndfile.h>

#include <utility>

bool WaveFile::open(Qel::String const &path, unsigned int rate, unsigned int channels)
{
    close();
    SF_INFO info{};
    info.samplerate = static_cast<int>(rate);
    info.channels = static_cast<int>(channels);
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    m_file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (m_file != nullptr) {
        sf_command(m_file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    }
    return isOpen();
}

bool WaveFile::write(float const *samples, std::size_t frames)
{
    auto const wanted = static_cast<sf_count_t>(frames);
    if (m_file == nullptr || sf_writef_float(m_file, samples, wanted) != wanted) {
        close();
        return false;
    }
    return true;
}

void WaveFile::close()
{
    if (m_file != nullptr) {
        sf_close(std::exchange(m_file, nullptr));
    }
}
