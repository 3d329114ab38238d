#include "System/Graphics/image/io_pcx.h"

#include "System/Graphics/image/image.h"
#include "System/Graphics/image/imageSource.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>

namespace Qel {

namespace {

constexpr unsigned char runMark = 0xC0;
constexpr unsigned char longestRun = 63;
constexpr unsigned char paletteMark = 12;
constexpr unsigned int imageContext = 0x228FC766; // "Default resource data"

bool isReadable(sHeaderPCX const &header)
{
    return header.manufacturer == 10 && header.encoding == 1 && header.bitsPerPlane == 8 &&
           header.version == 5;
}

// One byte of the picture after the other, out of runs.
class RunReader {
public:
    explicit RunReader(cFile &file) : m_bytes(file) {}

    /// Reads the next run. @return false at the end of the stream
    bool next(unsigned char &value, unsigned int &count)
    {
        if (!m_bytes.next(value)) {
            return false;
        }
        count = 1;
        if (value >= runMark) {
            count = value - runMark;
            return m_bytes.next(value);
        }
        return true;
    }

private:
    ImageBytes m_bytes;
};

// Header, palette and canvas; the stream then stands at the first run.
bool begin(cFile &file, cImage &image, ePixelFormat format, unsigned int planes, sHeaderPCX &header)
{
    ImageSource source(file);
    if (!source.read(header) || !isReadable(header) || header.planes != planes) {
        return false;
    }
    int const width = header.xMax - header.xMin + 1;
    int const height = header.yMax - header.yMin + 1;
    if (width <= 0 || width > 0xFFFF || height <= 0 || height > 0xFFFF) {
        return false;
    }
    unsigned char entries[sizeof(cPalette)] = {};
    if (file.size() >= sizeof entries) {
        source.seek(file.size() - static_cast<unsigned int>(sizeof entries));
        source.read(entries, sizeof entries);
    }
    cPalette const palette(entries);
    source.seek(sizeof(sHeaderPCX));
    std::uint64_t const size =
        std::uint64_t{planes} * static_cast<unsigned int>(width) * static_cast<unsigned int>(height);
    return source.allows(size) && image.setCanvas(format, static_cast<unsigned short>(width),
                                                  static_cast<unsigned short>(height), &palette) != 0;
}

// Runs over every third byte, or every one, of a line.
template <class EncodeByte>
int encodeLine(unsigned char const *line, int length, int step, EncodeByte encodeByte)
{
    if (length <= 0) {
        return 0;
    }
    int total = 0;
    unsigned char value = line[0];
    unsigned char count = 1;
    auto const flush = [&] {
        int const written = encodeByte(value, count);
        total += written;
        return written != 0;
    };
    for (int i = 1; i < length; ++i) {
        unsigned char const next = line[static_cast<std::ptrdiff_t>(i) * step];
        if (next == value) {
            if (++count == longestRun) {
                if (!flush()) {
                    return 0;
                }
                count = 0; // the value stays: an equal one begins a run of 1
            }
            continue;
        }
        if (count != 0 && !flush()) {
            return 0;
        }
        value = next;
        count = 1;
    }
    return count == 0 || flush() ? total : 0;
}

} // namespace

bool cIO_pcx::load(cFile &file, cImage &image, unsigned int)
{
    if (file.size() == 0) {
        return false;
    }
    unsigned int const position = file.tell();
    sHeaderPCX header;
    bool const isWhole = ImageSource(file).read(header);
    file.seek(position);
    if (!isWhole || !isReadable(header)) {
        return false;
    }
    switch (header.planes) {
    case 1:
        return read_8bpp(file, image) != 0;
    case 3:
        return read_24bpp(file, image) != 0;
    default:
        return false;
    }
}

bool cIO_pcx::save(cFile &file, cImage &image, unsigned int)
{
    return write_bitmap(file, image) != 0;
}

char const *cIO_pcx::get_type() const
{
    return "PCX";
}

int cIO_pcx::read_header(cFile &file, sHeaderPCX &header, cPalette *palette)
{
    if (file.size() == 0) {
        return 0;
    }
    unsigned int const position = file.tell();
    ImageSource source(file);
    bool const isWhole = source.read(header);
    file.seek(position);
    if (!isWhole || !isReadable(header)) {
        return 0;
    }
    if (palette != nullptr) {
        unsigned char entries[sizeof(cPalette)] = {};
        if (file.size() >= sizeof entries) {
            source.seek(file.size() - static_cast<unsigned int>(sizeof entries));
            source.read(entries, sizeof entries);
        }
        palette->setPalette(entries);
    }
    return 1;
}

int cIO_pcx::read_8bpp(cFile &file, cImage &image)
{
    sHeaderPCX header;
    if (!begin(file, image, PAL8, 1, header) || header.bytesPerLine < 0) {
        return 0;
    }
    unsigned int const width = image.getWidth();
    auto const lineLength = static_cast<unsigned int>(header.bytesPerLine);
    RunReader runs(file);
    unsigned char value = 0;
    unsigned int count = 0; // what is left of a run goes on in the next row
    for (unsigned int y = 0; y < image.getHeight(); ++y) {
        unsigned char *const row = image.getData() + std::size_t{width} * y;
        for (unsigned int x = 0; x < lineLength;) {
            if (count == 0) {
                if (!runs.next(value, count)) {
                    return 1;
                }
                continue;
            }
            unsigned int const taken = std::min(count, lineLength - x);
            if (x < width) {
                std::fill_n(row + x, std::min(taken, width - x), value);
            }
            x += taken;
            count -= taken;
        }
    }
    return 1;
}

int cIO_pcx::read_24bpp(cFile &file, cImage &image)
{
    constexpr unsigned int numPlanes = 3;
    sHeaderPCX header;
    if (!begin(file, image, R8G8B8, numPlanes, header)) {
        return 0;
    }
    unsigned int const width = image.getWidth();
    std::size_t const size = std::size_t{numPlanes} * width * image.getHeight();
    RunReader runs(file);
    for (unsigned int y = 0; y < image.getHeight(); ++y) {
        for (unsigned int plane = 0; plane < numPlanes; ++plane) {
            std::size_t at = std::size_t{numPlanes} * width * y + plane;
            unsigned char value;
            unsigned int count;
            for (unsigned int x = 0; x < width; x += count) {
                if (!runs.next(value, count)) {
                    return 1;
                }
                // A run is written whole, into the next rows if need be, and ends with its plane.
                for (unsigned int i = 0; i < count && at < size; ++i, at += numPlanes) {
                    image.getData()[at] = value;
                }
            }
        }
    }
    return 1;
}

int cIO_pcx::write_bitmap(cFile &file, cImage &image)
{
    if (image.getData() == nullptr || image.getWidth() == 0 || image.getHeight() == 0) {
        return 0;
    }
    bool const hasPalette = image.getBitsPerPixel() == 8;
    unsigned int const width = image.getWidth();
    sHeaderPCX header{};
    header.manufacturer = 10;
    header.version = 5;
    header.encoding = 1;
    header.bitsPerPlane = 8;
    header.xMax = static_cast<std::int16_t>(width - 1);
    header.yMax = static_cast<std::int16_t>(image.getHeight() - 1);
    header.planes = hasPalette ? 1 : 3;
    header.bytesPerLine = static_cast<std::int16_t>(width);
    if (file.write(&header, sizeof header) != sizeof header) {
        return 0;
    }
    std::size_t const stride = std::size_t{image.getBytesPerPixel()} * image.getPitch();
    if (hasPalette) {
        for (unsigned int y = 0; y < image.getHeight(); ++y) {
            if (pcx_encode_line(image.getData() + stride * y, static_cast<int>(width), file) == 0) {
                return 0;
            }
        }
        unsigned char entries[sizeof(cPalette)];
        image.getPalette().getPalette(entries);
        return file.write(&paletteMark, 1) == 1 && file.write(entries, sizeof entries) == sizeof entries ? 1
                                                                                                         : 0;
    }
    PoolBlk row;
    if (!row.alloc(3 * width, imageContext)) {
        return 0;
    }
    auto *const line = static_cast<unsigned char *>(row.data());
    for (unsigned int y = 0; y < image.getHeight(); ++y) {
        cPixelFormat::convertStream(R8G8B8, line, 3 * width, image.getPixelFormat(),
                                    image.getData() + stride * y, image.getBytesPerPixel() * width);
        for (int plane = 0; plane < 3; ++plane) {
            if (pcx_encode_line24(line, static_cast<int>(width), plane, file) == 0) {
                return 0;
            }
        }
    }
    return 1;
}

int cIO_pcx::pcx_encode_byte(unsigned char value, unsigned char count, cFile &file)
{
    if (count == 0) {
        return 0;
    }
    if (count == 1 && value < runMark) {
        return file.write(&value, 1) == 1 ? 1 : 0;
    }
    unsigned char const run[2] = {static_cast<unsigned char>(count | runMark), value};
    return file.write(run, sizeof run) == sizeof run ? 2 : 0;
}

int cIO_pcx::pcx_encode_line(unsigned char *line, int length, cFile &file)
{
    return encodeLine(line, length, 1, [&](unsigned char value, unsigned char count) {
        return pcx_encode_byte(value, count, file);
    });
}

int cIO_pcx::pcx_encode_line24(unsigned char *line, int length, int plane, cFile &file)
{
    return encodeLine(line + plane, length, 3, [&](unsigned char value, unsigned char count) {
        return pcx_encode_byte(value, count, file);
    });
}

} // namespace Qel
