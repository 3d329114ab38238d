#include "colourFade.h"

#include <algorithm>
#include <cstdlib>

namespace fx {

namespace {

class KeysCommand final : public Qel::ParamCommand {
public:
    Qel::String doGet(void const *target) override
    {
        return static_cast<ColourFade const *>(static_cast<Qel::StringInterface const *>(target))->getKeys();
    }
    void doSet(void *target, Qel::String const &text) override
    {
        static_cast<ColourFade *>(static_cast<Qel::StringInterface *>(target))->setKeys(text.c_str());
    }
};

// In between, byte by byte.
std::uint32_t blend(std::uint32_t from, std::uint32_t to, float share)
{
    std::uint32_t mixed = 0;
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        auto const a = static_cast<float>(from >> shift & 255);
        auto const b = static_cast<float>(to >> shift & 255);
        mixed |= static_cast<std::uint32_t>(a + (b - a) * share + 0.5f) << shift;
    }
    return mixed;
}

} // namespace

ColourFade::ColourFade(Qel::ParticleAffectorFactory *maker) : Affector(maker)
{
    add(0, 0xFFFFFFFF);
    add(1, 0x00FFFFFF);
}

void ColourFade::addParameters(Qel::ParamDictionary &dictionary)
{
    static KeysCommand command;
    dictionary.addParameter(
        {"keys", "Ages from 0 to 1, each with a colour as alpha, red, green, blue in hexadecimal.",
         Qel::PARAM_STRING},
        &command);
}

void ColourFade::add(float age, std::uint32_t colour)
{
    // Rising, whatever a text or a stream says.
    float const least = m_count == 0 ? 0 : m_keys[m_count - 1].age;
    m_keys[m_count++] = {age > least ? std::min(age, 1.0f) : least, colour};
}

void ColourFade::setKeys(char const *text)
{
    m_count = 0;
    while (m_count < mostKeys) {
        char *end = nullptr;
        float const age = std::strtof(text, &end);
        if (end == text) {
            break;
        }
        text = end;
        unsigned long const colour = std::strtoul(text, &end, 16);
        if (end == text) {
            break;
        }
        text = end;
        add(age, static_cast<std::uint32_t>(colour));
    }
}

Qel::String ColourFade::getKeys() const
{
    Qel::String text;
    for (std::uint32_t i = 0; i < m_count; ++i) {
        Qel::String key;
        key.sprintf("%s%g %08x", i == 0 ? "" : " ", static_cast<double>(m_keys[i].age), m_keys[i].colour);
        text += key;
    }
    return text;
}

void ColourFade::_deserialize(Qel::cFile &file)
{
    ParticleAffector::_deserialize(file);
    m_count = 0;
    unsigned char count = 0;
    file.read_8(count);
    for (unsigned int i = 0; i < count; ++i) {
        float age = 0;
        unsigned int colour = 0;
        if (!file.read_float(age) || !file.read_32(colour)) {
            break;
        }
        if (m_count < mostKeys) {
            add(age, colour);
        }
    }
}

void ColourFade::_serialize(Qel::cFile &file)
{
    ParticleAffector::_serialize(file);
    file.write_8(static_cast<unsigned char>(m_count));
    for (std::uint32_t i = 0; i < m_count; ++i) {
        file.write_float(m_keys[i].age);
        file.write_32(m_keys[i].colour);
    }
}

void ColourFade::_initParticle(Qel::Particle *particle, D3DXVECTOR3 const &)
{
    particle->colour = colourAt(0);
}

std::uint32_t ColourFade::colourAt(float age) const
{
    if (m_count == 0) {
        return 0xFFFFFFFF;
    }
    std::uint32_t next = 0;
    while (next < m_count && m_keys[next].age <= age) {
        ++next;
    }
    if (next == 0 || next == m_count) {
        return m_keys[next == 0 ? 0 : m_count - 1].colour;
    }
    Key const &from = m_keys[next - 1];
    Key const &to = m_keys[next];
    return blend(from.colour, to.colour, (age - from.age) / (to.age - from.age));
}

} // namespace fx
