#include <curveeditor/kxAnimCurveEditorGUIW.h>

kxAnimCurveEditorGUIW::kxAnimCurveEditorGUIW(QWidget* parent) : QMainWindow(parent)
{
    setupUi(this);
}

void kxAnimCurveEditorGUIW::showEvent(QShowEvent* event)
{
    Q_EMIT show();
    QMainWindow::showEvent(event);
}

void kxAnimCurveEditorGUIW::hideEvent(QHideEvent* event)
{
    Q_EMIT hide();
    QMainWindow::hideEvent(event);
}
