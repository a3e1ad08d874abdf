#include <kxRenderWidget.h>

namespace
{
kxQGLWidget* current = nullptr; // not owned
}

kxQGLWidget* kxOSGWidget::getMGLW(int index)
{
    return index == -1 || index == 0 ? current : nullptr;
}

void kxOSGWidget::setMGLW(kxQGLWidget* widget)
{
    current = widget;
}
