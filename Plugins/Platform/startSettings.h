#pragma once

/// What the user has chosen for the start, and the file it is kept in: "platform.cfg" in the working
/// directory, one "key = value" a line, which a host reads through ConfigFile.
struct StartSettings {
    static constexpr char const *fileName = "platform.cfg";
    static constexpr int largestSide = 16384;

    bool start = false; ///< the answer, "ConfigDialog": "start" or anything else
    int width = 0;      ///< "Width" in pixels; 0 if the file has no usable one
    int height = 0;     ///< "Height", the same
    bool fullScreen = false;
    bool sound = true;
    int volume = 80; ///< 0 to 100

    /// Replaces the values by those of the file, as far as it has usable ones; without a file they stay.
    void load();

    /// Writes them. Other settings in the file stay, comments do not.
    /// @return false if the file does not hold them now
    bool save() const;

    bool operator==(StartSettings const &) const = default;
};
