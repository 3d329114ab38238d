#pragma once

#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Mesh.h"

#include <string>
#include <string_view>
#include <vector>

enum class ModelText { NONE, MESH, ANIMATION };

/// What a text is, by its keywords.
ModelText modelTextOf(std::string_view text);

/// What is wrong with a model, a line for each thing: hierarchy, indices, weights that do not add up to 1.
std::vector<std::string> checkModel(Qel::MD5Mesh const &mesh);

/// What is wrong with an animation: channels without keys or time.
std::vector<std::string> checkAnimation(Qel::MD5Anim const &animation);

/// Channels of an animation whose bone a model does not have.
std::vector<std::string> channelsWithoutBone(Qel::MD5Anim const &animation, Qel::MD5Mesh const &mesh);
