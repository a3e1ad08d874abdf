#include "kxEmptyHint.h"

#include <widgets/kxColors.h>

#include <QEvent>

kxEmptyHint::kxEmptyHint(const QString& text, QAbstractItemView* view) : QLabel(text, view->viewport()), _view(view)
{
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setContentsMargins(16, 16, 16, 16);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, kxColors::disabledText());
    setPalette(colors);
    setForegroundRole(QPalette::WindowText); // a viewport hands on its own role, the colour of rows
    view->viewport()->installEventFilter(this);
    const QAbstractItemModel* const model = view->model();
    connect(model, &QAbstractItemModel::rowsInserted, this, &kxEmptyHint::update);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &kxEmptyHint::update);
    connect(model, &QAbstractItemModel::modelReset, this, &kxEmptyHint::update);
    connect(model, &QAbstractItemModel::layoutChanged, this, &kxEmptyHint::update);
    update();
}

void kxEmptyHint::update()
{
    setVisible(_view->model()->rowCount(_view->rootIndex()) == 0);
}

bool kxEmptyHint::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        setGeometry(_view->viewport()->rect());
    return QLabel::eventFilter(watched, event);
}
