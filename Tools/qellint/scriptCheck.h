#pragma once

#include <string>
#include <vector>

/// Something that is wrong in a particle script.
struct Finding {
    unsigned int line; ///< from 1
    std::string text;
};

/// Looks through a particle script with the library's tokenizer and the dictionaries of the types that are
/// registered, and tells all that ParticleSystemMgr::parseScript() would pass over or stumble on.
/// Needs a ParticleSystemMgr. Nothing of the script is kept.
std::vector<Finding> checkParticleScript(std::string const &script);
