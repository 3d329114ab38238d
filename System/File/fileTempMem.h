#pragma once

#include "System/File/fileMem.h"

namespace Qel {

/// A memory stream whose first 8192 bytes lie in the object itself: scratch room that costs no allocation.
class QEL_API cFileTempMem : public cFileMem {
public:
    cFileTempMem();
    cFileTempMem(unsigned int size, unsigned char const *data); ///< on the heap, however small
    cFileTempMem(cFileTempMem const &other);                    ///< the contents, at position 0
    cFileTempMem &operator=(cFileTempMem const &other);         ///< the contents, at position 0

    bool reserve(unsigned int size) override;
    bool close() override; ///< Back to the object's own room, empty. @return true

private:
    static constexpr unsigned int inlineSize = 8192;

    void useInline();

    unsigned char m_inline[inlineSize];
};

} // namespace Qel
