#pragma once

#include <QAbstractItemView>
#include <QLabel>

/// What to do next, shown in the middle of a view that has no rows.
class kxEmptyHint : public QLabel
{
    Q_OBJECT
public:
    /// The view owns it. The view's model is set already.
    kxEmptyHint(const QString& text, QAbstractItemView* view);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void update();
    QAbstractItemView* _view;
};
