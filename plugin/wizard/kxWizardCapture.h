#pragma once

#include <kxRenderWidget.h>
#include <osg/AnimCurve.h>

#include <QPixmap>
#include <QSize>
#include <QString>
#include <QStringList>

class QAbstractButton;
class QIcon;

/// What a capture of the animation wizard does with a curve and with a picture; shared by the wizard and by the dialog
/// that edits its clips.
///
/// The functions of curves do nothing for a null curve or one without keys, mark the keys that they write, let no
/// number into a key that isn't finite, and keep the keys sorted.
namespace kxWizardCapture
{
/// Side of the picture of a captured state in device-independent pixels, and of the stored picture in pixels.
constexpr int PictureSide = 96;

/// Tangent types of the two sides of a curve that face inwards.
struct Tangents
{
    osg::Int32 firstOut;
    osg::Int32 lastIn;
};
/// Of an entry of interpolationTexts(); linear for any other number.
Tangents tangentsOf(int interpolation);
/// "Linear" and so on, in the order of their numbers, as the form of this name translates them.
QStringList interpolationTexts(const char* context);

/// Computes the tangents of the first and the last key; those that face outwards are linear.
void setInterpolation(const osg::AnimCurvePtr& curve, int interpolation);
typedef osg::MField<osg::CCPnt, 0> Keys;
/// Puts keys in place of those of a curve, which isn't null and may have none.
void setKeys(const osg::AnimCurvePtr& curve, const Keys& keys);
/// Writes the value of the first key.
void setStart(const osg::AnimCurvePtr& curve, float value, int interpolation);
/// Writes the time and the value of the last key.
void setEnd(const osg::AnimCurvePtr& curve, double seconds, float value, int interpolation);
/// Writes the time of the last key: not before the key in front of it.
void setDuration(const osg::AnimCurvePtr& curve, double seconds, int interpolation);

/// The square in the middle of a picture.
QImage centredSquare(const QImage& picture);
/// The middle of what `widget` shows, of this size in pixels; null for no widget, and where it shows nothing.
QPixmap grab(kxQGLWidget* widget, const QSize& size);
/// grab() as an icon that is sharp too where `ratio` pixels make up a device-independent one.
QIcon grabIcon(kxQGLWidget* widget, const QSize& size, qreal ratio);
/// Shows a picture on a capture button in place of its text; a null one does nothing.
void showPicture(QAbstractButton* button, const QPixmap& picture);
void showPicture(QAbstractButton* button, const QIcon& picture);
/// Shows `text` on a capture button in place of its picture.
void showText(QAbstractButton* button, const QString& text);
/// The picture of a capture button for the scene, PictureSide pixels wide and high; without pixels where there is none.
osg::ImagePtr toImage(const QIcon& icon);
/// A null one where `image` is null, empty or damaged.
QPixmap toPixmap(const osg::ImagePtr& image);

/// `proposal`, made unlike the names of all animations.
QString uniqueName(const QString& proposal);
} // namespace kxWizardCapture
