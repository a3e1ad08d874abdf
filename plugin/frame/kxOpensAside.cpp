#include <frame/kxOpensAside.h>

#include <kxController.h>

#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <tuple>

namespace
{
constexpr int MostWeight = 8;
constexpr int ViewWeight = 4; // half of the view is worth as much as a dock
constexpr int DockWeight = 1;
constexpr int DockMargin = 32; // device-independent pixels; a dock widens with what it comes to show

qint64 covered(const QRect& window, const std::vector<kxOpensAside::Kept>& kept)
{
    qint64 sum = 0;
    for (const kxOpensAside::Kept& each : kept)
    {
        const QRect common = window & each.area;
        sum += qint64(common.width()) * common.height() * each.weight;
    }
    return sum;
}

/// Flush with the ends of [first, last], and before and after each of `spans`, as far as it fits.
std::vector<int> flushPlaces(int length, int first, int last, const std::vector<std::pair<int, int>>& spans)
{
    const int end = std::max(first, last + 1 - length);
    std::vector<int> places{first, end};
    for (const auto& [from, to] : spans)
        for (const int place : {from - length, to + 1})
            places.push_back(qBound(first, place, end));
    return places;
}
} // namespace

kxOpensAside::kxOpensAside(QWidget* window, QWidget* most) : QObject(window), _most(most)
{
    window->installEventFilter(this);
}

bool kxOpensAside::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && !event->spontaneous())
        place(static_cast<QWidget*>(watched));
    return QObject::eventFilter(watched, event);
}

void kxOpensAside::place(QWidget* window)
{
    const QMainWindow* const main = kxController::getMainWindow();
    if (main == nullptr || !main->isVisible() || (_isPlaced && window->pos() != _place))
        return;
    const QSize frame(0, window->style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window));
    _place = placeFor(window->size() + frame, main->screen()->availableGeometry(), kept());
    _isPlaced = true;
    window->move(_place);
}

std::vector<kxOpensAside::Kept> kxOpensAside::kept() const
{
    std::vector<Kept> found;
    const auto add = [&found](const QWidget* widget, int weight, int margin = 0)
    {
        if (widget == nullptr || !widget->isVisible())
            return;
        const QWidget* const window = widget->window();
        // What is behind a tab is moved out of its window.
        const QRect area = window->rect() & QRect(widget->mapTo(window, QPoint()), widget->size());
        if (!area.isEmpty())
            found.push_back({area.translated(window->mapToGlobal(QPoint())).adjusted(-margin, 0, margin, 0), weight});
    };
    const QMainWindow* const main = kxController::getMainWindow();
    add(_most, MostWeight);
    add(main->centralWidget(), ViewWeight);
    for (QDockWidget* const dock : main->findChildren<QDockWidget*>())
        if ((main->dockWidgetArea(dock) & (Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea)) != 0)
            add(dock, DockWeight, DockMargin);
    return found;
}

QPoint kxOpensAside::placeFor(const QSize& size, const QRect& screen, const std::vector<Kept>& kept)
{
    std::vector<std::pair<int, int>> columns, rows;
    for (const Kept& each : kept)
    {
        columns.emplace_back(each.area.left(), each.area.right());
        rows.emplace_back(each.area.top(), each.area.bottom());
    }
    const QPoint corner = kept.empty() ? screen.bottomRight() : kept.front().area.bottomRight();
    std::tuple<qint64, int, QPoint> best{-1, 0, screen.topLeft()};
    for (const int x : flushPlaces(size.width(), screen.left(), screen.right(), columns))
        for (const int y : flushPlaces(size.height(), screen.top(), screen.bottom(), rows))
        {
            const QRect window(QPoint(x, y), size);
            const qint64 sum = covered(window, kept);
            const int distance = (window.center() - corner).manhattanLength();
            const auto& [leastSum, leastDistance, place] = best;
            if (leastSum < 0 || sum < leastSum || (sum == leastSum && distance < leastDistance))
                best = {sum, distance, window.topLeft()};
        }
    return std::get<2>(best);
}
