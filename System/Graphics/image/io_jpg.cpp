#include "System/Graphics/image/io_jpg.h"

namespace Qel {

bool cIO_jpg::load(cFile &, cImage &, unsigned int)
{
    return false;
}

bool cIO_jpg::save(cFile &, cImage &, unsigned int)
{
    return false;
}

char const *cIO_jpg::get_type() const
{
    return "JPG";
}

} // namespace Qel
