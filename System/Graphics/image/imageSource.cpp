#include "System/Graphics/image/imageSource.h"

#include <algorithm>

namespace Qel {

void ImageSource::skip(std::uint64_t bytes)
{
    m_file.seek(static_cast<unsigned int>(m_file.tell() + std::min(bytes, left())));
}

void ImageSource::seek(std::uint32_t position)
{
    m_file.seek(std::min(position, m_file.size()));
}

bool ImageBytes::refill()
{
    m_at = 0;
    m_count = m_file.read(m_buffer, sizeof m_buffer);
    return m_count != 0;
}

} // namespace Qel
