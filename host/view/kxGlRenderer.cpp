#include "kxGlRenderer.h"

#include "kxGlCache.h"
#include "kxGlProgram.h"
#include "kxGlShaders.h"
#include "kxGlTarget.h"
#include "kxViewColors.h"

#include <algorithm>

namespace
{
// Texture units.
enum Unit
{
    PictureUnit,
    SunUnit,
    ContactUnit,
    NormalUnit,
    RoughnessUnit,
    OcclusionUnit,
    EmissiveUnit
};
} // namespace

struct kxGlRenderer::Data
{
    kxGlFunctions gl;
    kxGlCache cache;
    kxGlProgram surface, flat, contact, backdrop, floor, blur, outline, over;
    kxGlTarget samples, single, lightSamples, light, mask, picture, sunMap, contactMap, contactBlur;
    GLuint overTexture = 0;
    QSize overSize;
    GLuint empty = 0; // vertex array without attributes
    osg::UInt64 mapsRevision = ~osg::UInt64(0);

    void drawMesh(const kxGlCache::Mesh& mesh) const
    {
        gl.BindVertexArray(mesh.vertexArray);
        gl.DrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_INT, nullptr);
    }
    void drawScreen() const
    {
        gl.BindVertexArray(empty);
        gl.DrawArrays(GL_TRIANGLES, 0, 3);
    }
    void bindTexture(Unit unit, GLuint texture) const
    {
        gl.ActiveTexture(GL_TEXTURE0 + GLenum(unit));
        gl.BindTexture(GL_TEXTURE_2D, texture);
    }
    void useShading(kxGlProgram& program, const kxFrame& frame)
    {
        program.use(gl);
        program.set(gl, frame.uniforms);
        program.set(gl, "uSunMap", int(SunUnit));
        program.set(gl, "uContact", int(ContactUnit));
        program.set(gl, "uPicture", int(PictureUnit));
    }
    /// The pictures of a look; true where it has one of its colour.
    bool bindLook(kxRenderScene& scene, const kxRenderScene::Look& look)
    {
        using Meaning = kxGlCache::Meaning;
        const auto upload = [&](Unit unit, osg::UInt32 image, Meaning meaning)
        { return std::make_pair(unit, cache.texture(gl, scene, image, meaning)); };
        // All before any is bound: uploading binds too.
        const std::pair<Unit, GLuint> all[] = {upload(PictureUnit, look.imageId, Meaning::Color),
                                               upload(NormalUnit, look.normalId, Meaning::Numbers),
                                               upload(RoughnessUnit, look.roughnessId, Meaning::Numbers),
                                               upload(OcclusionUnit, look.occlusionId, Meaning::Numbers),
                                               upload(EmissiveUnit, look.emissiveId, Meaning::Color)};
        for (const auto& [unit, texture] : all)
            bindTexture(unit, texture);
        const auto strength = [&all](int index, float value) { return all[index].second != 0 ? value : 0.0f; };
        surface.set(gl, "uPictures", strength(1, look.normalScale), strength(2, 1), strength(3, look.occlusionStrength),
                    strength(4, 1));
        return all[0].second != 0;
    }
    /// What the scene's clipping plane cuts away isn't drawn by this program until endCut(). No other program may draw
    /// in between: those of whole screens don't say where they are.
    void beginCut(kxGlProgram& program, const kxFrame& frame) const
    {
        program.set(gl, "uKept", frame.kept.x(), frame.kept.y(), frame.kept.z(), frame.kept.w());
        gl.Enable(GL_CLIP_DISTANCE0);
    }
    void endCut() const { gl.Disable(GL_CLIP_DISTANCE0); }
    /// Where the picture is drawn first.
    kxGlTarget& canvas(const kxFrame& frame)
    {
        return frame.options.light ? lightSamples : frame.options.quick ? single : samples;
    }
    /// Colours of the source over what is there, which may be transparent.
    void blend() const
    {
        gl.Enable(GL_BLEND);
        gl.BlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }
};

kxGlRenderer::kxGlRenderer() : _data(std::make_unique<Data>()) {}

kxGlRenderer::~kxGlRenderer() = default;

bool kxGlRenderer::init(const std::function<void*(const char* name)>& loader)
{
    _data = std::make_unique<Data>();
    Data& d = *_data;
    _ready = false;
    if (!d.gl.load(loader))
        return false;
    d.cache.init(d.gl);
    d.gl.GenVertexArrays(1, &d.empty);
    using namespace kxGlShaders;
    _ready = d.surface.build(d.gl, "surface", surfaceVertex(), surfaceFragment()) &&
             d.flat.build(d.gl, "flat", flatVertex(), flatFragment()) &&
             d.contact.build(d.gl, "contact", flatVertex(), contactFragment()) &&
             d.backdrop.build(d.gl, "backdrop", screenVertex(), backdropFragment()) &&
             d.floor.build(d.gl, "floor", floorVertex(), floorFragment()) &&
             d.blur.build(d.gl, "blur", screenVertex(), blurFragment()) &&
             d.outline.build(d.gl, "outline", screenVertex(), outlineFragment()) &&
             d.over.build(d.gl, "over", screenVertex(), pictureFragment());
    return _ready;
}

void kxGlRenderer::release()
{
    if (!_ready)
        return;
    Data& d = *_data;
    d.cache.release(d.gl);
    for (kxGlProgram* const program :
         {&d.surface, &d.flat, &d.contact, &d.backdrop, &d.floor, &d.blur, &d.outline, &d.over})
        program->release(d.gl);
    for (kxGlTarget* const target : {&d.samples, &d.single, &d.lightSamples, &d.light, &d.mask, &d.picture, &d.sunMap,
                                     &d.contactMap, &d.contactBlur})
        target->release(d.gl);
    d.gl.DeleteTextures(1, &d.overTexture);
    d.gl.DeleteVertexArrays(1, &d.empty);
    _data = std::make_unique<Data>();
    _ready = false;
}

bool kxGlRenderer::render(kxRenderScene& scene, const kxFrame& frame, unsigned int frameBuffer, const QSize& size)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    const kxGlTarget::Kind kind = frame.options.light   ? kxGlTarget::LightSamples
                                  : frame.options.quick ? kxGlTarget::SingleSample
                                                        : kxGlTarget::Multisampled;
    if (!_ready || frame.size.isEmpty() || !d.canvas(frame).prepare(gl, kind, frame.size))
        return false;
    gl.VertexAttrib4f(1, 0, 0, 0, 0);
    gl.VertexAttrib4f(2, 0, 0, 0, 0);
    gl.VertexAttrib4f(3, 1, 1, 1, 1);
    gl.Disable(GL_BLEND);
    gl.Disable(GL_SCISSOR_TEST);
    gl.Enable(GL_DEPTH_TEST);
    gl.DepthFunc(GL_LEQUAL);
    gl.DepthMask(GL_TRUE);
    gl.ColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    drawMaps(scene, frame);

    d.canvas(frame).bind(gl);
    gl.ClearColor(0, 0, 0, 0);
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    d.bindTexture(SunUnit, d.sunMap.texture());
    d.bindTexture(ContactUnit, d.contactMap.texture());
    drawSurfaces(scene, frame, false);
    if (!frame.options.transparent)
    {
        // Behind everything, and only where nothing was drawn.
        d.useShading(d.backdrop, frame);
        gl.DepthMask(GL_FALSE);
        d.drawScreen();
        gl.DepthMask(GL_TRUE);
    }
    if (frame.options.wire)
        drawEdges(scene, frame);
    drawFloor(frame);
    drawSurfaces(scene, frame, true);

    gl.BindFramebuffer(GL_READ_FRAMEBUFFER, d.canvas(frame).frameBuffer());
    gl.BindFramebuffer(GL_DRAW_FRAMEBUFFER, frameBuffer);
    gl.BlitFramebuffer(0, 0, frame.size.width(), frame.size.height(), 0, 0, size.width(), size.height(),
                       GL_COLOR_BUFFER_BIT, size == frame.size ? GL_NEAREST : GL_LINEAR);
    if (frame.options.outline && frame.anySelected)
        drawOutline(scene, frame, frameBuffer, size);

    gl.BindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    gl.Disable(GL_DEPTH_TEST);
    gl.Disable(GL_BLEND);
    gl.ActiveTexture(GL_TEXTURE0);
    gl.BindVertexArray(0);
    gl.UseProgram(0);
    d.cache.sweep(gl);
    return true;
}

QImage kxGlRenderer::renderToImage(kxRenderScene& scene, const kxFrame& frame)
{
    Data& d = *_data;
    if (!renderTo(d.picture, scene, frame))
        return QImage();
    QImage image(frame.size,
                 frame.options.transparent ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGBX8888);
    if (image.isNull())
        return QImage();
    d.gl.ReadPixels(0, 0, image.width(), image.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image.mirrored();
}

kxLightImage kxGlRenderer::renderToLight(kxRenderScene& scene, const kxFrame& frame)
{
    Data& d = *_data;
    kxLightImage image;
    if (!renderTo(d.light, scene, frame))
        return image;
    image.size = frame.size;
    const std::size_t row = 4 * std::size_t(frame.size.width()), rows = std::size_t(frame.size.height());
    image.halves.resize(row * rows);
    d.gl.ReadPixels(0, 0, frame.size.width(), frame.size.height(), GL_RGBA, GL_HALF_FLOAT, image.halves.data());
    for (std::size_t top = 0; top < rows / 2; ++top)
        std::swap_ranges(image.halves.begin() + std::ptrdiff_t(top * row),
                         image.halves.begin() + std::ptrdiff_t((top + 1) * row),
                         image.halves.begin() + std::ptrdiff_t((rows - 1 - top) * row));
    return image;
}

bool kxGlRenderer::renderTo(kxGlTarget& target, kxRenderScene& scene, const kxFrame& frame)
{
    const kxGlFunctions& gl = _data->gl;
    const kxGlTarget::Kind kind = frame.options.light ? kxGlTarget::Light : kxGlTarget::Picture;
    if (!_ready || frame.size.isEmpty() || !target.prepare(gl, kind, frame.size) ||
        !render(scene, frame, target.frameBuffer(), frame.size))
        return false;
    gl.BindFramebuffer(GL_FRAMEBUFFER, target.frameBuffer());
    gl.PixelStorei(GL_PACK_ALIGNMENT, 4);
    return true;
}

void kxGlRenderer::finish()
{
    if (_ready)
        _data->gl.Finish();
}

void kxGlRenderer::drawOver(const QImage& picture, unsigned int frameBuffer)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    if (!_ready || picture.format() != QImage::Format_ARGB32_Premultiplied)
        return;
    const GLsizei w = picture.width(), h = picture.height();
    gl.ActiveTexture(GL_TEXTURE0 + GLenum(PictureUnit));
    gl.PixelStorei(GL_UNPACK_ALIGNMENT, 4);
    if (d.overTexture == 0 || d.overSize != picture.size())
    {
        gl.DeleteTextures(1, &d.overTexture);
        gl.GenTextures(1, &d.overTexture);
        gl.BindTexture(GL_TEXTURE_2D, d.overTexture);
        gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, w, h, 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, nullptr);
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        d.overSize = picture.size();
    }
    gl.BindTexture(GL_TEXTURE_2D, d.overTexture);
    gl.TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, w, h, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, picture.constBits());
    gl.BindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    gl.Viewport(0, 0, w, h);
    gl.Disable(GL_DEPTH_TEST);
    gl.Enable(GL_BLEND);
    gl.BlendFuncSeparate(GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    d.over.use(gl);
    d.over.set(gl, "uPicture", int(PictureUnit));
    d.drawScreen();
    gl.Disable(GL_BLEND);
    gl.BindVertexArray(0);
    gl.UseProgram(0);
}

void kxGlRenderer::drawMaps(const kxRenderScene& scene, const kxFrame& frame)
{
    if (_data->mapsRevision == scene.revision())
        return;
    _data->mapsRevision = scene.revision();
    _data->gl.Disable(GL_CULL_FACE);
    drawShadow(scene, frame);
    drawContact(scene, frame);
}

void kxGlRenderer::drawShadow(const kxRenderScene& scene, const kxFrame& frame)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    d.sunMap.prepare(gl, kxGlTarget::Shadow, QSize(kxFrame::ShadowMapSize, kxFrame::ShadowMapSize));
    d.sunMap.bind(gl);
    gl.Clear(GL_DEPTH_BUFFER_BIT);
    if (!frame.hasShadow)
        return;
    d.flat.use(gl);
    d.flat.set(gl, "uClip", frame.sun);
    d.beginCut(d.flat, frame);
    gl.Enable(GL_POLYGON_OFFSET_FILL);
    gl.PolygonOffset(1.5f, 2.0f);
    for (const kxRenderScene::Item& item : scene.items())
    {
        const kxRenderScene::Look& look = scene.looks()[item.look];
        const bool throwsOne = look.opacity >= 0.5f && !item.isCutAway;
        const kxGlCache::Mesh* const mesh = throwsOne ? d.cache.mesh(gl, scene, item) : nullptr;
        if (mesh == nullptr)
            continue;
        d.flat.set(gl, "uWorld", item.world);
        d.drawMesh(*mesh);
    }
    gl.Disable(GL_POLYGON_OFFSET_FILL);
    d.endCut();
}

void kxGlRenderer::drawContact(const kxRenderScene& scene, const kxFrame& frame)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    const QSize size(kxFrame::ContactMapSize, kxFrame::ContactMapSize);
    d.contactMap.prepare(gl, kxGlTarget::Map, size);
    d.contactBlur.prepare(gl, kxGlTarget::Map, size);
    d.contactMap.bind(gl);
    gl.ClearColor(0, 0, 0, 0);
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const float ground = frame.uniforms.uFloor.x();
    d.contact.use(gl);
    d.contact.set(gl, "uClip", frame.contact);
    d.contact.set(gl, "uColor", ground, frame.contactHeight, 0, 0);
    d.beginCut(d.contact, frame);
    for (const kxRenderScene::Item& item : scene.items())
    {
        osg::Pnt3f low, high;
        item.bounds.getBounds(low, high);
        const bool counts =
            low.y() < ground + frame.contactHeight && scene.looks()[item.look].opacity >= 0.5f && !item.isCutAway;
        const kxGlCache::Mesh* const mesh = counts ? d.cache.mesh(gl, scene, item) : nullptr;
        if (mesh == nullptr)
            continue;
        d.contact.set(gl, "uWorld", item.world);
        d.drawMesh(*mesh);
    }
    d.endCut();
    gl.Disable(GL_DEPTH_TEST);
    d.blur.use(gl);
    d.blur.set(gl, "uPicture", int(PictureUnit));
    const float step = 1.0f / float(kxFrame::ContactMapSize);
    d.contactBlur.bind(gl);
    d.bindTexture(PictureUnit, d.contactMap.texture());
    d.blur.set(gl, "uColor", step, 0, 0, 0);
    d.drawScreen();
    d.contactMap.bind(gl);
    d.bindTexture(PictureUnit, d.contactBlur.texture());
    d.blur.set(gl, "uColor", 0, step, 0, 0);
    d.drawScreen();
    gl.Enable(GL_DEPTH_TEST);
}

void kxGlRenderer::drawSurfaces(kxRenderScene& scene, const kxFrame& frame, bool transparent)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    const std::vector<const kxRenderScene::Item*>& items = transparent ? frame.transparent : frame.opaque;
    if (items.empty())
        return;
    d.useShading(d.surface, frame);
    d.surface.set(gl, "uNormals", int(NormalUnit));
    d.surface.set(gl, "uRoughness", int(RoughnessUnit));
    d.surface.set(gl, "uOcclusion", int(OcclusionUnit));
    d.surface.set(gl, "uGlow", int(EmissiveUnit));
    d.surface.set(gl, "uClip", frame.camera.viewProjection());
    d.beginCut(d.surface, frame);
    if (transparent)
    {
        d.blend();
        gl.DepthMask(GL_FALSE);
    }
    std::size_t lastLook = ~std::size_t(0);
    bool lastNormals = false;
    for (const kxRenderScene::Item* const item : items)
    {
        const kxGlCache::Mesh* const mesh = d.cache.mesh(gl, scene, *item);
        if (mesh == nullptr)
            continue;
        const kxRenderScene::Look& look = scene.looks()[item->look];
        if (item->look != lastLook || mesh->hasNormals != lastNormals)
        {
            lastLook = item->look;
            lastNormals = mesh->hasNormals;
            const bool hasPicture = d.bindLook(scene, look);
            d.surface.set(gl, "uBase", look.base[0], look.base[1], look.base[2], look.opacity);
            d.surface.set(gl, "uEmissive", look.emissive[0], look.emissive[1], look.emissive[2], look.alphaCutoff);
            d.surface.set(gl, "uSurface", look.metallic, look.roughness, hasPicture ? 1.0f : 0.0f,
                          mesh->hasNormals ? 1.0f : 0.0f);
        }
        d.surface.set(gl, "uWorld", item->world);
        gl.UniformMatrix3fv(d.surface.place(gl, "uNormal"), 1, GL_FALSE, item->world.normalMatrix().constData());
        d.surface.set(gl, "uSection", item->isCut && !look.doubleSided && look.opacity >= 1 ? 1.0f : 0.0f);
        gl.FrontFace(item->mirrored ? GL_CW : GL_CCW);
        // Through a cut the inside is seen.
        if (!look.doubleSided && !item->isCut)
        {
            gl.Enable(GL_CULL_FACE);
            gl.CullFace(GL_BACK);
            d.drawMesh(*mesh);
        }
        else if (transparent)
        {
            gl.Enable(GL_CULL_FACE);
            for (const GLenum side : {GL_FRONT, GL_BACK})
            {
                gl.CullFace(side);
                d.drawMesh(*mesh);
            }
        }
        else
        {
            gl.Disable(GL_CULL_FACE);
            d.drawMesh(*mesh);
        }
    }
    d.endCut();
    gl.FrontFace(GL_CCW);
    gl.Disable(GL_CULL_FACE);
    gl.Disable(GL_BLEND);
    gl.DepthMask(GL_TRUE);
}

void kxGlRenderer::drawEdges(const kxRenderScene& scene, const kxFrame& frame)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    d.flat.use(gl);
    d.flat.set(gl, "uClip", frame.camera.viewProjection());
    d.flat.set(gl, "uColor", 0.05f, 0.05f, 0.06f, 0.4f);
    d.beginCut(d.flat, frame);
    d.blend();
    gl.DepthMask(GL_FALSE);
    gl.PolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    gl.Enable(GL_POLYGON_OFFSET_LINE);
    gl.PolygonOffset(-1.0f, -1.0f);
    for (const auto* const items : {&frame.opaque, &frame.transparent})
        for (const kxRenderScene::Item* const item : *items)
            if (const kxGlCache::Mesh* const mesh = d.cache.mesh(gl, scene, *item))
            {
                d.flat.set(gl, "uWorld", item->world);
                d.drawMesh(*mesh);
            }
    d.endCut();
    gl.Disable(GL_POLYGON_OFFSET_LINE);
    gl.PolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl.DepthMask(GL_TRUE);
    gl.Disable(GL_BLEND);
}

void kxGlRenderer::drawFloor(const kxFrame& frame)
{
    const kxShadeUniforms& u = frame.uniforms;
    if ((u.uFloor.z() < 0.5f && u.uFloor.w() < 0.5f) || u.uEye.y() <= u.uFloor.x())
        return;
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    d.useShading(d.floor, frame);
    d.floor.set(gl, "uClip", frame.camera.viewProjection());
    d.blend();
    gl.DepthMask(GL_FALSE);
    gl.BindVertexArray(d.empty);
    gl.DrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    gl.DepthMask(GL_TRUE);
    gl.Disable(GL_BLEND);
}

void kxGlRenderer::drawOutline(const kxRenderScene& scene, const kxFrame& frame, unsigned int frameBuffer,
                               const QSize& size)
{
    Data& d = *_data;
    const kxGlFunctions& gl = d.gl;
    if (!d.mask.prepare(gl, kxGlTarget::Picture, frame.size))
        return;
    // The mask is drawn with all samples, so that the line is as smooth as the picture.
    d.canvas(frame).bind(gl);
    gl.ClearColor(0, 0, 0, 0);
    gl.Clear(GL_COLOR_BUFFER_BIT);
    gl.Disable(GL_DEPTH_TEST);
    d.flat.use(gl);
    d.flat.set(gl, "uClip", frame.camera.viewProjection());
    d.flat.set(gl, "uColor", 1, 1, 1, 1);
    d.beginCut(d.flat, frame);
    for (const auto* const items : {&frame.opaque, &frame.transparent})
        for (const kxRenderScene::Item* const item : *items)
        {
            const kxGlCache::Mesh* const mesh = item->selected ? d.cache.mesh(gl, scene, *item) : nullptr;
            if (mesh == nullptr)
                continue;
            d.flat.set(gl, "uWorld", item->world);
            d.drawMesh(*mesh);
        }
    d.endCut();
    const GLint w = frame.size.width(), h = frame.size.height();
    gl.BindFramebuffer(GL_READ_FRAMEBUFFER, d.canvas(frame).frameBuffer());
    gl.BindFramebuffer(GL_DRAW_FRAMEBUFFER, d.mask.frameBuffer());
    gl.BlitFramebuffer(0, 0, w, h, 0, 0, w, h, GL_COLOR_BUFFER_BIT, GL_NEAREST);

    gl.BindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    gl.Viewport(0, 0, size.width(), size.height());
    d.outline.use(gl);
    d.bindTexture(PictureUnit, d.mask.texture());
    d.outline.set(gl, "uPicture", int(PictureUnit));
    d.outline.set(gl, "uColor", kxViewColor::Selection.redF(), kxViewColor::Selection.greenF(),
                  kxViewColor::Selection.blueF(), 1);
    d.outline.set(gl, "uStep", 1.0f / float(w), 1.0f / float(h), frame.outlineWidth, 0);
    d.blend();
    d.drawScreen();
    gl.Disable(GL_BLEND);
}
