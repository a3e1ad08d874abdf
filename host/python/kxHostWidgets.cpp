#include "kxRaise.h"

#include "kxHostWidgets.h"

#include <QApplication>
#include <QScreen>
#include <QVariant>
#include <QWidget>

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
} // namespace

bp::tuple kxHostWidgets::rect(const std::string& path)
{
    const QWidget* const widget = find(path);
    const QScreen* const screen = widget->screen();
    // Qt keeps the corner of each screen in pixels and scales what lies on it.
    const QPoint corner = screen->geometry().topLeft();
    const double ratio = screen->devicePixelRatio();
    const QPoint place = widget->mapToGlobal(QPoint(0, 0)) - corner;
    return bp::make_tuple(corner.x() + int(std::lround(place.x() * ratio)),
                          corner.y() + int(std::lround(place.y() * ratio)), int(std::lround(widget->width() * ratio)),
                          int(std::lround(widget->height() * ratio)));
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
