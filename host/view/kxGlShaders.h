#pragma once

#include <QByteArray>

/// The texts of the shaders, GLSL 3.30.
namespace kxGlShaders
{
QByteArray surfaceVertex();
QByteArray surfaceFragment();
QByteArray flatVertex();   ///< places only; also for the maps and the edges
QByteArray flatFragment(); ///< one colour
QByteArray contactFragment();
QByteArray screenVertex(); ///< one triangle that covers the picture
QByteArray backdropFragment();
QByteArray floorVertex(); ///< one large rectangle, four corners as a strip
QByteArray floorFragment();
QByteArray blurFragment();
QByteArray outlineFragment();
QByteArray pictureFragment(); ///< rows from the top, colours premultiplied
} // namespace kxGlShaders
