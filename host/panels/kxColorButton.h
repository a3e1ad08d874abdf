#pragma once

#include <QAbstractButton>
#include <osg/Vector.h>

/// A patch of a linear colour; a click opens a dialog that changes it while the user chooses.
class kxColorButton : public QAbstractButton
{
    Q_OBJECT
public:
    explicit kxColorButton(QWidget* parent = nullptr);

    void setColor(const osg::Vec3f& linear);
    QSize sizeHint() const override;

    /// As the screen shows it; components above 1 are cut off.
    static QColor toScreen(const osg::Vec3f& linear);
    static osg::Vec3f toLinear(const QColor& screen);

Q_SIGNALS:
    void colorPicked(const osg::Vec3f& linear);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void openDialog();
    osg::Vec3f _color;
};
