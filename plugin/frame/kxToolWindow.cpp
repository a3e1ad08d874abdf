#include <frame/kxToolWindow.h>

void kxToolWindow::showEvent(QShowEvent* event)
{
    Q_EMIT show();
    QMainWindow::showEvent(event);
}

void kxToolWindow::hideEvent(QHideEvent* event)
{
    Q_EMIT hide();
    QMainWindow::hideEvent(event);
}
