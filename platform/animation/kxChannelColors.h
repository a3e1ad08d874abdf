#pragma once

#include <osg/Vector.h>

#include <string>

/// The colour that a channel's curve has from its making on.
namespace kxChannelColors
{
/// Components 0 to 1, the same for the same channel always. X, Y and Z differ by hue and by lightness, so that
/// they differ for colour-blind eyes too; the families of three differ by how strong the colour is.
osg::Color3f of(const std::string& channel, const std::string& suffix);
} // namespace kxChannelColors
