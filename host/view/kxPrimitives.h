#pragma once

#include <osg/Vector.h>
#include <scene/Mesh.h>

#include <vector>

/// Meshes of simple bodies, with normals and texture coordinates, all seen from outside.
///
/// They stand upright (y up) around the origin. Sizes that aren't positive and counts that are too small are taken as
/// the smallest that make a body.
namespace kxPrimitives
{
osg::MeshPtr box(const osg::Vec3f& size = osg::Vec3f(1, 1, 1));
/// Edges and corners rounded by `radius`, at most half the shortest side, in `segments` steps.
osg::MeshPtr roundedBox(const osg::Vec3f& size, float radius, int segments = 5);
osg::MeshPtr sphere(float radius = 0.5f, int segments = 48);
osg::MeshPtr cylinder(float radius = 0.5f, float height = 1.0f, int segments = 48);
osg::MeshPtr cone(float radius = 0.5f, float height = 1.0f, int segments = 48);
/// `radius` to the middle of the tube.
osg::MeshPtr torus(float radius = 0.4f, float tube = 0.13f, int segments = 64, int tubeSegments = 24);
/// In the x-z plane, facing up.
osg::MeshPtr plane(float width = 1.0f, float depth = 1.0f);
/// A profile turned around the y axis.
///
/// The profile lists (radius, height) from the bottom up along the outside; below `smoothAngle` degrees between two of
/// its segments the edge is shaded smooth. Null for fewer than two points.
osg::MeshPtr lathe(const std::vector<osg::Vec2f>& profile, int segments = 64, float smoothAngle = 35.0f);
} // namespace kxPrimitives
