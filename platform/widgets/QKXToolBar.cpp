#include <QKXToolBar.h>
#include <kxPlatform.h>

QKXToolBar::QKXToolBar(const QString& title, QWidget* parent) : QToolBar(title, parent)
{
    const int size = kxPlatform::getSmallIconSize();
    setIconSize(QSize(size, size));
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
}
