#include "System/Graphics/image/io_ico.h"
#include "Tests/Fuzz/imageFuzz.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    return readImage<Qel::cIO_ico>(data, size, 3);
}
