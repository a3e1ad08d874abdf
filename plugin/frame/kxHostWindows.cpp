#include <frame/kxHostWindows.h>

#include <kxController.h>

#include <QLabel>
#include <QVBoxLayout>

#include <stdexcept>

QMainWindow* kxRequireMainWindow()
{
    QMainWindow* const window = kxController::getMainWindow();
    if (window == nullptr)
        throw std::runtime_error("the application has no main window yet");
    return window;
}

QKXDockWindowManager* kxRequireDockWindowManager()
{
    QKXDockWindowManager* const manager = kxController::getDockWindowManager();
    if (manager == nullptr)
        throw std::runtime_error("the application has no dock window manager yet");
    return manager;
}

QLabel* kxAddHint(QWidget* parent, const QString& title, const QString& text)
{
    if (parent->layout() == nullptr)
        new QVBoxLayout(parent);
    QLabel* const hint = new QLabel(parent);
    hint->setObjectName(QStringLiteral("_hint"));
    hint->setAlignment(Qt::AlignCenter);
    hint->setWordWrap(true);
    hint->setTextFormat(Qt::RichText);
    hint->setText(
        QStringLiteral("<p style='font-size: large'>%1</p><p>%2</p>").arg(title.toHtmlEscaped(), text.toHtmlEscaped()));
    hint->setEnabled(false);
    parent->layout()->addWidget(hint);
    return hint;
}
