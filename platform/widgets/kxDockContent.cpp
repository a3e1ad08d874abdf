#include <widgets/kxDockContent.h>

#include <QEvent>

namespace
{
// Of two such windows beside each other with the others around them, on a screen of 800 x 500.
constexpr QSize SmallestSize(200, 90);
} // namespace

kxDockContent::kxDockContent(QWidget* content)
{
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(content);
}

QSize kxDockContent::sizeHint() const
{
    return widget() != nullptr ? widget()->sizeHint() : QSize(0, 0);
}

QSize kxDockContent::minimumSizeHint() const
{
    return widget() != nullptr ? widget()->minimumSizeHint().expandedTo(widget()->minimumSize()).boundedTo(SmallestSize)
                               : QSize(0, 0);
}

bool kxDockContent::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest) // the content asks for another size
        updateGeometry();
    return QScrollArea::viewportEvent(event);
}
