#include <wizard/kxWizardCapture.h>

#include <kxScenegraph.h>
#include <osg/AnimNode.h>
#include <osg/FieldContainerFactory.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QIcon>

#include <algorithm>
#include <cmath>

using osg::CCPnt;

namespace
{
struct Interpolation
{
    const char* text;
    osg::TangentType::Type firstOut;
    osg::TangentType::Type lastIn;
};
const Interpolation Interpolations[] = {
    {"Linear", osg::TangentType::Linear, osg::TangentType::Linear},
    {"Ease In", osg::TangentType::Flat, osg::TangentType::Linear},
    {"Ease Out", osg::TangentType::Linear, osg::TangentType::Flat},
    {"Ease In/Ease Out", osg::TangentType::Flat, osg::TangentType::Flat},
};

bool hasKeys(const osg::AnimCurvePtr& curve)
{
    return curve != osg::NullFC && !curve->isEmpty();
}

CCPnt& lastKey(const osg::AnimCurvePtr& curve)
{
    return curve->getControlPoints(osg::UInt32(curve->getControlPoints().size()) - 1);
}

void writeValue(CCPnt& key, float value)
{
    if (std::isfinite(value))
        key.setY(value);
}

void writeEndTime(const osg::AnimCurvePtr& curve, double seconds)
{
    const std::size_t count = curve->getControlPoints().size();
    const float time = float(seconds);
    if (std::isfinite(time))
        lastKey(curve).setX(count > 1 ? std::max(time, curve->getControlPoints(osg::UInt32(count) - 2).x()) : time);
}

/// The middle of a picture in this size in pixels; null where one of both is empty.
QPixmap scaledSquare(const QImage& picture, const QSize& size)
{
    if (picture.isNull() || size.isEmpty())
        return QPixmap();
    QImage square = kxWizardCapture::centredSquare(picture);
    square.setDevicePixelRatio(1); // a frame of a dense screen brings its own
    return QPixmap::fromImage(square.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}
} // namespace

kxWizardCapture::Tangents kxWizardCapture::tangentsOf(int interpolation)
{
    const bool isListed = interpolation >= 0 && interpolation < int(std::size(Interpolations));
    const Interpolation& entry = Interpolations[isListed ? interpolation : 0];
    return {osg::Int32(entry.firstOut), osg::Int32(entry.lastIn)};
}

QStringList kxWizardCapture::interpolationTexts(const char* context)
{
    QStringList texts;
    for (const Interpolation& entry : Interpolations)
        texts << QCoreApplication::translate(context, entry.text);
    return texts;
}

void kxWizardCapture::setInterpolation(const osg::AnimCurvePtr& curve, int interpolation)
{
    if (!hasKeys(curve))
        return;
    const Tangents tangents = tangentsOf(interpolation);
    const osg::UInt32 last = osg::UInt32(curve->getControlPoints().size()) - 1;
    curve->computeIntangent(0, osg::TangentType::Linear);
    curve->computeOuttangent(0, tangents.firstOut);
    curve->computeIntangent(last, tangents.lastIn);
    curve->computeOuttangent(last, osg::TangentType::Linear);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

void kxWizardCapture::setKeys(const osg::AnimCurvePtr& curve, const Keys& keys)
{
    curve->editControlPoints() = keys; // as they were: added one by one, zero tangents would be computed anew
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

void kxWizardCapture::setStart(const osg::AnimCurvePtr& curve, float value, int interpolation)
{
    if (!hasKeys(curve))
        return;
    writeValue(curve->getControlPoints(0), value);
    setInterpolation(curve, interpolation);
}

void kxWizardCapture::setEnd(const osg::AnimCurvePtr& curve, double seconds, float value, int interpolation)
{
    if (!hasKeys(curve))
        return;
    writeEndTime(curve, seconds);
    writeValue(lastKey(curve), value);
    setInterpolation(curve, interpolation);
}

void kxWizardCapture::setDuration(const osg::AnimCurvePtr& curve, double seconds, int interpolation)
{
    if (!hasKeys(curve))
        return;
    writeEndTime(curve, seconds);
    setInterpolation(curve, interpolation);
}

QImage kxWizardCapture::centredSquare(const QImage& picture)
{
    const int side = std::min(picture.width(), picture.height());
    return picture.copy((picture.width() - side) / 2, (picture.height() - side) / 2, side, side);
}

QPixmap kxWizardCapture::grab(kxQGLWidget* widget, const QSize& size)
{
    return scaledSquare(widget != nullptr ? widget->grabFrameBuffer(false) : QImage(), size);
}

QIcon kxWizardCapture::grabIcon(kxQGLWidget* widget, const QSize& size, qreal ratio)
{
    const QImage shown = widget != nullptr ? widget->grabFrameBuffer(false) : QImage();
    QIcon icon(scaledSquare(shown, size));
    if (ratio > 1 && !icon.isNull())
    {
        QPixmap dense = scaledSquare(shown, size * ratio);
        dense.setDevicePixelRatio(ratio);
        icon.addPixmap(dense);
    }
    return icon;
}

void kxWizardCapture::showPicture(QAbstractButton* button, const QPixmap& picture)
{
    if (!picture.isNull())
        showPicture(button, QIcon(picture));
}

void kxWizardCapture::showPicture(QAbstractButton* button, const QIcon& picture)
{
    if (picture.isNull())
        return;
    button->setIcon(picture);
    button->setText(QString());
}

void kxWizardCapture::showText(QAbstractButton* button, const QString& text)
{
    button->setIcon(QIcon());
    button->setText(text);
}

osg::ImagePtr kxWizardCapture::toImage(const QIcon& icon)
{
    const osg::ImagePtr image = osg::Image::create();
    QImage picture = icon.pixmap(PictureSide, PictureSide).toImage();
    if (picture.isNull())
        return image;
    picture.setDevicePixelRatio(1);
    if (picture.size() != QSize(PictureSide, PictureSide))
        picture = picture.scaled(PictureSide, PictureSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImageConverter::convertToOSGImage(picture, image);
    return image;
}

QPixmap kxWizardCapture::toPixmap(const osg::ImagePtr& image)
{
    return QPixmap::fromImage(QImageConverter::convertToQImage(image));
}

QString kxWizardCapture::uniqueName(const QString& proposal)
{
    std::vector<std::string> names;
    for (osg::FieldContainer* container : osg::FieldContainerFactory::the()->getFieldContainerStore())
    {
        const osg::NodePtr node = osg::NodePtr::dcast(osg::FieldContainerPtr(container));
        if (node != osg::NullFC &&
            (osg::AnimNodePtr::dcast(node) != osg::NullFC || osg::AnimObjectPtr::dcast(node->getCore()) != osg::NullFC))
            names.push_back(kxNodeUtils::getName(node));
    }
    return QString::fromStdString(kxNodeUtils::getUniqueName(proposal.toStdString(), names));
}
