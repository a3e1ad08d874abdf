#include "kxRaise.h"

#include "kxHostWidgets.h"

#include <view/kxView3D.h>

#include <kernel/kxHeldMessages.h>
#include <osg/Finite.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QGraphicsView>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScreen>
#include <QTabBar>
#include <QToolBar>
#include <QTreeView>
#include <QVariant>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace bp = boost::python;

namespace
{
bool isAt(const QWidget* widget, const QStringList& path)
{
    if (widget->objectName() != path.last())
        return false;
    int left = path.size() - 1;
    for (const QWidget* above = widget->parentWidget(); above != nullptr && left > 0; above = above->parentWidget())
        if (above->objectName() == path.at(left - 1))
            --left;
    return left == 0;
}

const QWidget* find(const std::string& path)
{
    kxHeldMessages::deliver(); // a script reads what it made
    const QStringList names = QString::fromStdString(path).split(QLatin1Char('/'));
    const QWidget* found = nullptr;
    const auto widgets = QApplication::allWidgets();
    for (const QWidget* const widget : widgets)
    {
        if (names.last().isEmpty() || !widget->isVisible() || !isAt(widget, names))
            continue;
        if (found != nullptr)
            kxRaise(PyExc_LookupError, "there is more than one visible widget '" + path +
                                           "'; put the name of a widget above it in front, as in 'above/name'");
        found = widget;
    }
    if (found == nullptr)
        kxRaise(PyExc_LookupError, "there is no visible widget '" + path + "'");
    return found;
}

/// Pixels of the screen for a place in a widget. Qt keeps the corner of each screen in pixels and scales what lies on
/// it.
QPoint onScreen(const QWidget& widget, const QPointF& place)
{
    const QScreen* const screen = widget.screen();
    const QPoint corner = screen->geometry().topLeft();
    const QPointF inside = QPointF(widget.mapToGlobal(QPoint(0, 0)) - corner) + place;
    const double ratio = screen->devicePixelRatio();
    return corner + QPoint(int(std::lround(inside.x() * ratio)), int(std::lround(inside.y() * ratio)));
}

bp::tuple rectOnScreen(const QWidget& widget, const QRect& rect)
{
    const QPoint corner = onScreen(widget, rect.topLeft());
    const double ratio = widget.screen()->devicePixelRatio();
    return bp::make_tuple(corner.x(), corner.y(), int(std::lround(rect.width() * ratio)),
                          int(std::lround(rect.height() * ratio)));
}

template <class Widget>
const Widget& findAs(const std::string& path, const char* kind)
{
    const auto* const widget = qobject_cast<const Widget*>(find(path));
    if (widget == nullptr)
        kxRaise(PyExc_TypeError, "the widget '" + path + "' is no " + kind);
    return *widget;
}

/// Without the marks of keys.
QString bareText(const QAction& action)
{
    return action.text().remove(QRegularExpression(QStringLiteral("&(?!&)")));
}

/// Empty where `widget` shows no entries, or not this one.
QRect actionGeometry(const QWidget& widget, QAction* action)
{
    if (const auto* const menu = qobject_cast<const QMenu*>(&widget))
        return menu->actionGeometry(action);
    if (const auto* const bar = qobject_cast<const QMenuBar*>(&widget))
        return bar->actionGeometry(action);
    if (const auto* const tools = qobject_cast<const QToolBar*>(&widget))
        if (const QWidget* const button = tools->widgetForAction(action); button != nullptr && button->isVisible())
            return button->geometry();
    return QRect();
}

const QAbstractItemView& findView(const std::string& path)
{
    return findAs<QAbstractItemView>(path, "list or tree");
}

QModelIndex findRow(const QAbstractItemView& view, const bp::list& row)
{
    QModelIndex index;
    for (bp::ssize_t i = 0; i < bp::len(row); ++i)
    {
        const QString text = QString::fromStdString(bp::extract<std::string>(row[i]));
        QModelIndex next;
        for (int child = 0; child < view.model()->rowCount(index) && !next.isValid(); ++child)
            if (const QModelIndex candidate = view.model()->index(child, 0, index); candidate.data() == text)
                next = candidate;
        if (!next.isValid())
            kxRaise(PyExc_LookupError, "there is no row '" + text.toStdString() + "'");
        index = next;
    }
    return index;
}

void appendRows(const QAbstractItemView& view, const QModelIndex& parent, const bp::list& above, bp::list& out)
{
    const auto* const tree = qobject_cast<const QTreeView*>(&view);
    for (int child = 0; child < view.model()->rowCount(parent); ++child)
    {
        const QModelIndex index = view.model()->index(child, 0, parent);
        const bp::list row{bp::object(above)}; // a copy
        row.attr("append")(index.data().toString().toStdString());
        out.append(row);
        if (tree != nullptr && tree->isExpanded(index))
            appendRows(view, index, row, out);
    }
}
} // namespace

bp::tuple kxHostWidgets::rect(const std::string& path)
{
    const QWidget& widget = *find(path);
    return rectOnScreen(widget, widget.rect());
}

bp::tuple kxHostWidgets::rowRect(const std::string& path, const bp::list& row, int column)
{
    const QAbstractItemView& view = findView(path);
    const QModelIndex index = findRow(view, row);
    const QRect rect = view.visualRect(index.sibling(index.row(), column)) & view.viewport()->rect();
    if (rect.isEmpty())
        kxRaise(PyExc_LookupError, "the row is out of sight");
    return rectOnScreen(*view.viewport(), rect);
}

bp::list kxHostWidgets::rows(const std::string& path)
{
    bp::list out;
    appendRows(findView(path), QModelIndex(), bp::list(), out);
    return out;
}

std::string kxHostWidgets::rowText(const std::string& path, const bp::list& row, int column)
{
    const QModelIndex index = findRow(findView(path), row);
    return index.sibling(index.row(), column).data().toString().toStdString();
}

bp::tuple kxHostWidgets::actionRect(const std::string& path, const std::string& text)
{
    const QWidget* const widget = path.empty() ? QApplication::activePopupWidget() : find(path);
    if (widget == nullptr)
        kxRaise(PyExc_LookupError, "no menu is open");
    for (QAction* const action : widget->actions())
        if (action->isVisible() && bareText(*action) == QString::fromStdString(text))
            if (const QRect rect = actionGeometry(*widget, action); !rect.isEmpty())
                return rectOnScreen(*widget, rect);
    kxRaise(PyExc_LookupError, "there is no entry '" + text + "' in sight");
}

bp::tuple kxHostWidgets::tabRect(const std::string& text)
{
    const auto widgets = QApplication::allWidgets();
    for (const QWidget* const widget : widgets)
    {
        const auto* const bar = qobject_cast<const QTabBar*>(widget);
        for (int i = 0; bar != nullptr && bar->isVisible() && i < bar->count(); ++i)
            if (const QRect rect = bar->tabRect(i) & bar->rect();
                !rect.isEmpty() && bar->tabText(i) == QString::fromStdString(text))
                return rectOnScreen(*bar, rect);
    }
    kxRaise(PyExc_LookupError, "there is no tab '" + text + "' in sight");
}

bp::tuple kxHostWidgets::scenePoint(const std::string& path, double x, double y)
{
    const auto& view = findAs<QGraphicsView>(path, "graphics view");
    const QPoint place = onScreen(*view.viewport(), view.viewportTransform().map(QPointF(x, y)));
    return bp::make_tuple(place.x(), place.y());
}

bp::tuple kxHostWidgets::pointInView(const osg::Vec3f& point)
{
    const QVector3D place(point.x(), point.y(), point.z());
    if (!osg::isFinite(point))
        kxRaise(PyExc_ValueError, "the point is no place: its numbers have to be finite");
    const auto widgets = QApplication::allWidgets();
    for (QWidget* const widget : widgets)
    {
        auto* const view = qobject_cast<kxView3D*>(widget);
        if (view == nullptr || !view->isVisible())
            continue;
        const QSizeF size = view->size();
        QPointF seen;
        if (!view->shownCamera().project(place, size, seen))
            kxRaise(PyExc_LookupError, "the point lies behind the eye");
        const QPoint found = onScreen(*view, seen);
        return bp::make_tuple(found.x(), found.y());
    }
    kxRaise(PyExc_LookupError, "there is no visible 3D view");
}

bp::object kxHostWidgets::property(const std::string& path, const std::string& name)
{
    const QVariant value = find(path)->property(name.c_str());
    switch (int(value.type()))
    {
    case QMetaType::UnknownType:
        kxRaise(PyExc_KeyError, "the widget '" + path + "' has no property '" + name + "'");
    case QMetaType::Bool:
        return bp::object(value.toBool());
    case QMetaType::Int:
        return bp::object(value.toInt());
    case QMetaType::Double:
        return bp::object(value.toDouble());
    case QMetaType::QString:
        return bp::object(value.toString().toStdString());
    default:
        kxRaise(PyExc_TypeError, "the property '" + name + "' is neither a truth value nor a number nor a text");
    }
}
