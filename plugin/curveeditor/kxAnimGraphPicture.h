#pragma once

#include <QList>
#include <QPixmap>
#include <QTransform>

#include <vector>

class QPainter;
class QPalette;
class kxAnimGraphCurve;

/// Draws the curves with their keys, over them the handles.
///
/// While the view stands still, the curves that do too are kept as one pixmap, so that a step of a drag or of the time
/// costs what it changes. Curves that move are drawn over it.
class kxAnimGraphPicture
{
public:
    void draw(QPainter& painter, const QList<kxAnimGraphCurve*>& curves, const QPalette& palette);

private:
    /// How each curve looked, see kxAnimGraphCurve::look(); sorted.
    typedef std::vector<quint64> Looks;

    void keep(const QPainter& painter, const QList<kxAnimGraphCurve*>& resting, const QPalette& palette);

    QPixmap _pixmap;       // null while nothing is kept
    Looks _kept;           // in the pixmap
    Looks _last;           // when it was last drawn
    QTransform _transform; // of the painter, then
    QSize _size;           // of its device, then, in its pixels
    int _stillDraws = 0;   // in a row without a change
};
