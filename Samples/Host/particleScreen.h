#pragma once

#include "System/Graphics/image/image.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/System/frameListener.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// Shows the particle scripts of a folder: one system of each template, stepped while frames run, as a table
/// and as a picture.
///
/// With watching on, a script that is saved is read again and poured into the live systems. One that is
/// broken is told with file and line, and the systems stay as they are.
class ParticleScreen final : public Qel::FrameListener {
public:
    /// @throws Qel::Exception for a script with an unknown type
    ParticleScreen(std::string const &folder, bool isWatching);
    ~ParticleScreen();

    ParticleScreen(ParticleScreen const &) = delete;
    ParticleScreen &operator=(ParticleScreen const &) = delete;

    bool frameStarted(Qel::FrameEvent const &event) override;

    void step(float dt);
    void warmUp(float seconds); ///< steps of a sixtieth of a second, the same each time
    void print() const;
    Qel::cImage picture() const; ///< of all systems as they are now
    bool isEmpty() const { return m_shows.empty(); }
    bool isWatching() const { return m_isWatching; } ///< false also where the folder cannot be watched
    std::size_t count() const { return m_shows.size(); }
    unsigned int liveParticles() const;
    double microsecondsOfAStep() const; ///< of all systems together, on average

    static constexpr float richTime =
        9.3f; ///< seconds after which explosion and confetti are well on their way

private:
    struct Show {
        std::string templateName;
        std::filesystem::path script;
        Qel::ParticleSystem *system;
        D3DXVECTOR3 place{0, 0, 0}; ///< of its owner; only an unbound one is moved
        double microseconds = 0;    ///< in all steps
    };
    void read(std::filesystem::path const &path);
    bool isSound(std::filesystem::path const &path) const;
    void stepAll(float dt);
    void readChanged();
    void readAgain(std::filesystem::path const &path);

    std::filesystem::path m_folder;
    bool m_isWatching;
    std::vector<Show> m_shows;
    float m_time = 0;
    std::uint64_t m_steps = 0;
};
