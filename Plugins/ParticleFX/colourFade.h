#pragma once

#include "affectors.h"

#include <array>
#include <cstdint>

namespace fx {

/// Colours over the life of a particle: keys of an age, 0 at birth and 1 at the end, and a colour.
class ColourFade final : public Affector<ColourFade> {
public:
    static constexpr char const *typeName = "ColourFade";
    static constexpr unsigned int mostKeys = 16;

    explicit ColourFade(Qel::ParticleAffectorFactory *maker);

    static void addParameters(Qel::ParamDictionary &dictionary);
    void _deserialize(Qel::cFile &file) override;
    void _serialize(Qel::cFile &file) override;
    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset) override;

    template <class Stream>
    void transfer(Stream &)
    {
    }
    auto begin(float) const
    {
        return [this](Qel::Particle &particle) {
            particle.colour = colourAt(1 - particle.timeToLive / particle.totalTimeToLive);
        };
    }

    /// Reads "AGE COLOUR AGE COLOUR ...", ages from 0 to 1 that do not fall, colours in eight hexadecimal
    /// digits as alpha, red, green, blue. Ends at the first that is none.
    void setKeys(char const *text);
    Qel::String getKeys() const;

private:
    struct Key {
        float age;
        std::uint32_t colour;
    };

    void add(float age, std::uint32_t colour);
    std::uint32_t colourAt(float age) const;

    std::array<Key, mostKeys> m_keys{};
    std::uint32_t m_count = 0;
};

} // namespace fx
