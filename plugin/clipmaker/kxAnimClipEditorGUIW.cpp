#include <clipmaker/kxAnimClipEditorGUIW.h>

kxAnimClipEditorGUIW::kxAnimClipEditorGUIW(QWidget* parent) : QMainWindow(parent)
{
    setupUi(this);
}

void kxAnimClipEditorGUIW::showEvent(QShowEvent* event)
{
    Q_EMIT show();
    QMainWindow::showEvent(event);
}

void kxAnimClipEditorGUIW::hideEvent(QHideEvent* event)
{
    Q_EMIT hide();
    QMainWindow::hideEvent(event);
}
