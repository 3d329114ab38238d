#include "particleView.h"

#include "style.h"

void ParticleView::draw(Canvas &canvas, float x, float y, float w, float h)
{
    float const line = canvas.lineHeight() + 4;
    canvas.text(
        x, y,
        style::format("%zu systems, %u particles, %.0f us a step; scripts are read again when they are saved",
                      m_systems->count(), m_systems->liveParticles(), m_systems->microsecondsOfAStep()));
    canvas.image(m_systems->picture(), x, y + line, w, h - line, 0);
}
