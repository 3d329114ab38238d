#pragma once

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
    ParticleScreen(std::string folder, bool isWatching);
    ~ParticleScreen();

    ParticleScreen(ParticleScreen const &) = delete;
    ParticleScreen &operator=(ParticleScreen const &) = delete;

    bool frameStarted(Qel::FrameEvent const &event) override;

    void warmUp(float seconds); ///< steps of a sixtieth of a second, the same each time
    void print() const;
    bool savePicture(std::string const &path) const; ///< as PNG
    bool isEmpty() const { return m_shows.empty(); }

private:
    struct Show {
        std::string templateName;
        std::filesystem::path script;
        Qel::ParticleSystem *system;
        D3DXVECTOR3 place{0, 0, 0}; ///< of its owner; only an unbound one is moved
        double microseconds = 0;    ///< in all steps
    };
    struct Script {
        std::filesystem::path path;
        std::filesystem::file_time_type saved;
    };

    void read(std::filesystem::path const &path);
    bool isSound(std::filesystem::path const &path) const;
    void step(float dt);
    void look();

    bool m_isWatching;
    std::vector<Script> m_scripts;
    std::vector<Show> m_shows;
    float m_time = 0;
    float m_sinceLook = 0;
    std::uint64_t m_steps = 0;
};
