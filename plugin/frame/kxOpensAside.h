#pragma once

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>

#include <vector>

class QWidget;

/// Lets a window open beside what its user works with: the view in the middle of the main window, the docks at its
/// sides, and one widget more. A window that the user has moved opens where it was.
class kxOpensAside : public QObject
{
    Q_OBJECT
public:
    struct Kept
    {
        QRect area;
        int weight; ///< of each pixel of it that is covered
    };

    /// Belongs to `window`. `most`, null for none, is to be covered least of all.
    kxOpensAside(QWidget* window, QWidget* most);

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// The upper left corner of a window of `size` within `screen` that covers least; of equal ones the nearest to the
    /// lower right corner of the first that is kept.
    static QPoint placeFor(const QSize& size, const QRect& screen, const std::vector<Kept>& kept);

private:
    void place(QWidget* window);
    std::vector<Kept> kept() const;

    QPointer<QWidget> _most;
    QPoint _place; // where it was put last
    bool _isPlaced = false;
};
