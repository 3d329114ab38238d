#include "System/File/fileChunk.h"

#include "System/File/file.h"

namespace Qel {

namespace {

// A value that is not there in full must not be half of two.
template <typename T>
void readWhole(cFile &file, T &value)
{
    T whole;
    if (file.read(&whole, sizeof(whole)) == sizeof(whole)) {
        value = whole;
    }
}

template <typename T>
void writeWhole(cFile &file, T const &value)
{
    file.write(&value, sizeof(value));
}

// One list of the fields, in the order of the file, for both directions.
template <typename Header, typename Transfer>
void eachHeaderField(Header &header, Transfer const &transfer)
{
    for (auto &character : header.magic) {
        transfer(character);
    }
    transfer(header.kind);
    for (auto &byte : header.extra) {
        transfer(byte);
    }
    transfer(header.value);
    for (auto &word : header.reserved) {
        transfer(word);
    }
}

template <typename Chunk, typename Transfer>
void eachChunkField(Chunk &chunk, Transfer const &transfer)
{
    transfer(chunk.id);
    transfer(chunk.reserved1);
    transfer(chunk.value1);
    transfer(chunk.value2);
    transfer(chunk.reserved2);
}

} // namespace

unsigned int _sHeader::save(cFile &file) const
{
    unsigned int const before = file.tell();
    eachHeaderField(*this, [&file](auto const &field) { writeWhole(file, field); });
    return file.tell() - before;
}

unsigned int _sHeader::load(cFile &file)
{
    unsigned int const before = file.tell();
    eachHeaderField(*this, [&file](auto &field) { readWhole(file, field); });
    return file.tell() - before;
}

unsigned int _sFile_chunk::save(cFile &file) const
{
    unsigned int const before = file.tell();
    eachChunkField(*this, [&file](auto const &field) { writeWhole(file, field); });
    return file.tell() - before;
}

unsigned int _sFile_chunk::load(cFile &file)
{
    unsigned int const before = file.tell();
    eachChunkField(*this, [&file](auto &field) { readWhole(file, field); });
    return file.tell() - before;
}

} // namespace Qel
