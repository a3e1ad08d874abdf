#pragma once

#include "kxRenderScene.h"
#include "kxShadeUniforms.h"
#include "kxViewCamera.h"

#include <QSize>

#include <vector>

/// What a picture shows beside the scene.
struct kxRenderOptions
{
    bool grid = true;
    bool floorShadow = true;
    bool wire = false;        ///< edges of the triangles over the surfaces
    bool outline = true;      ///< around what is selected
    bool quick = false;       ///< one sample a pixel
    bool transparent = false; ///< no backdrop; the picture has an alpha channel
    bool light = false;       ///< colours are light, linear and without bounds, not ready for the screen
};

/// One picture, prepared for any renderer: what is seen in which order, lights, maps.
struct kxFrame
{
    static constexpr int ShadowMapSize = 1024; ///< texels a side
    static constexpr int ContactMapSize = 192;

    kxViewCamera camera;
    QSize size; ///< pixels
    kxRenderOptions options;
    kxShadeUniforms uniforms;
    std::vector<const kxRenderScene::Item*> opaque;      ///< nearest first
    std::vector<const kxRenderScene::Item*> transparent; ///< farthest first
    bool anySelected = false;
    bool hasShadow = false;    ///< there is a light that throws one, and something to throw it
    QMatrix4x4 sun;            ///< from the root's coordinates to the shadow map's clip space
    QMatrix4x4 contact;        ///< the same for the contact map: from below, the floor nearest
    QVector4D kept;            ///< as kxRenderScene::kept()
    float contactHeight = 1;   ///< where above the floor an object no longer counts as close
    float outlineWidth = 2.5f; ///< pixels

    /// `scene` is up to date and outlives the frame.
    static kxFrame make(const kxRenderScene& scene, const kxViewCamera& camera, const QSize& size,
                        const kxRenderOptions& options);
};
