#pragma once

#include "System/File/fileMem.h"

#include <chrono>
#include <string>

/// A memory stream that is not known as one, so that codecs take it piece by piece; it tells how far they
/// are.
class ProgressFile : public Qel::cFile {
public:
    /// @param what  in front of each line of progress; empty for none
    ProgressFile(Qel::cFileMem &inner, std::string what);
    ~ProgressFile() override; ///< takes the line of progress away

    unsigned int read(void *buffer, unsigned int size) override;
    unsigned int write(void const *buffer, unsigned int size) override;
    unsigned int seek(unsigned int position) override { return m_inner.seek(position); }
    unsigned int size() const override { return m_inner.size(); }
    unsigned int tell() const override { return m_inner.tell(); }
    Qel::eFileClass getType() const override { return Qel::FILECLASS_DISK; }

private:
    using Clock = std::chrono::steady_clock;

    void show(bool reading);

    Qel::cFileMem &m_inner;
    std::string m_what;
    Clock::time_point m_next; // when a line may be shown again
    bool m_shown = false;
};
