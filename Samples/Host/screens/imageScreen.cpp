#include "imageScreen.h"

#include "style.h"

#include "Samples/Host/pictures.h"

void ImageScreen::open()
{
    Pictures const pictures(m_folder);
    m_summary =
        style::format("%zu pictures read, %zu not: BMP, DDS, ICO, PCX and TGA, in the library's formats",
                      pictures.numRead(), pictures.all().size() - pictures.numRead());
    m_sheet = pictures.contactSheet();
}

void ImageScreen::draw(Canvas &canvas, float x, float y, float w, float h)
{
    float const line = 2 * canvas.lineHeight();
    canvas.text(x, y, m_summary);
    canvas.fit(m_sheet, x, y + line, w, h - line, m_id);
}
