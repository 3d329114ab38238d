#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"
#include "System/File/fileMem.h"
#include "System/System/string.h"
#include "System/System/wString.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <vector>

namespace {

// Reads texts of both kinds in turn until one is not there.
std::string textsOf(Qel::cFile &file, unsigned int mostBytes)
{
    std::string seen;
    for (;;) {
        Qel::String text;
        Qel::WString wide;
        bool const narrowThere = file.read_string(text);
        fuzzRequire(text.size() <= mostBytes, "no text is longer than its stream");
        seen += text;
        if (!narrowThere || !file.read_wstring(wide)) {
            return seen;
        }
        fuzzRequire(wide.size() <= mostBytes / 2, "no text is longer than its stream");
        Qel::cFileMem back;
        back.write_wstring(wide);
        back.seek(0);
        Qel::WString again;
        fuzzRequire(back.read_wstring(again) && again == wide, "a text comes back as it was written");
        seen.append(reinterpret_cast<char const *>(wide.data()), wide.size() * sizeof(wchar_t));
        if (file.tell() >= file.size()) {
            return seen;
        }
    }
}

} // namespace

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    auto const length = static_cast<unsigned int>(size);
    Qel::cFileMem memory(length, data);
    std::vector<unsigned char> const bytes(data, data + size);
    Qel::cFileBit bits(bytes);
    Qel::cFileBitOld bitsOld(bytes);
    return textsOf(memory, length) + textsOf(bits, length) + textsOf(bitsOld, length);
}
