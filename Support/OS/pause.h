#pragma once

namespace os {

/// Tells the processor that this thread is only looking at a word again and again.
inline void pauseBriefly()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

} // namespace os
