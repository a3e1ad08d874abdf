#pragma once

#include <kxExport.h>
#include <osg/Image.h>

#include <QImage>

/// Something that the scene is drawn in.
class KX_API kxQGLWidget
{
public:
    virtual ~kxQGLWidget() = default;
    /// What is on the screen, drawn anew.
    virtual QImage grabFrameBuffer(bool withAlpha) = 0;
};

class KX_API kxOSGWidget
{
public:
    /// The render widget of this index, -1 for the current one; null where there is none.
    static kxQGLWidget* getMGLW(int index);
    /// Makes `widget` the current one; null takes it away. Not owned.
    static void setMGLW(kxQGLWidget* widget);
};

class KX_API QImageConverter
{
public:
    /// Fills `target`; false, and nothing changes, for a null image or target.
    static bool convertToOSGImage(const QImage& source, const osg::ImagePtr& target);
    /// A null image where there is no picture.
    static QImage convertToQImage(const osg::ImagePtr& source);
};
