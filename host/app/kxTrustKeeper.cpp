#include "kxTrustKeeper.h"

#include "kxCodeDialog.h"
#include "kxTrustBar.h"

#include <trust/kxCodeTrust.h>

#include <QMainWindow>
#include <QStatusBar>
#include <QVBoxLayout>

namespace
{
constexpr int ShownFor = 8000; // ms
}

kxTrustKeeper::kxTrustKeeper(QMainWindow* window, QWidget* view) : QObject(window), _window(window)
{
    auto* const middle = new QWidget(window);
    auto* const layout = new QVBoxLayout(middle);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view, 1);
    window->setCentralWidget(middle);
    // In place of the line that told that there is code.
    connect(&kxCodeTrust::the(), &kxCodeTrust::answered, window->statusBar(),
            [bar = window->statusBar()](const QString& said) { bar->showMessage(said, ShownFor); });
    connect(new kxTrustBar(view), &kxTrustBar::showAsked, this, &kxTrustKeeper::showCode);
}

void kxTrustKeeper::showCode()
{
    kxCodeTrust::the().ask();
    auto* dialog = _window->findChild<kxCodeDialog*>();
    if (dialog == nullptr)
        dialog = new kxCodeDialog(_window); // goes when it is closed
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}
