#include "kxWelcome.h"

#include "kxHostFolders.h"
#include "kxMainWindow.h"
#include <edits/kxSceneObjects.h>

#include <kxIconManager.h>
#include <scene/kxScene.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>

namespace
{
constexpr int BelowMiddle = 44; // clears the view's own words
}

QString kxWelcome::sampleFile()
{
    return kxHostFolders::find(QStringLiteral("examples/turntable.kxs"));
}

kxWelcome::kxWelcome(kxMainWindow* window, QWidget* view) : QWidget(view)
{
    setObjectName(QStringLiteral("_welcome"));
    auto* const buttons = new QHBoxLayout(this);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(8);
    const auto addButton = [this, buttons](const QString& text, const QString& icon, const QString& name)
    {
        auto* const button = new QPushButton(kxIconManager::getIcon(icon, QString()), text, this);
        button->setObjectName(name);
        buttons->addWidget(button);
        return button;
    };
    connect(addButton(tr("Open..."), QStringLiteral("Open"), QStringLiteral("_welcomeOpen")), &QPushButton::clicked,
            window, &kxMainWindow::openWithDialog);
    if (!sampleFile().isEmpty())
        connect(addButton(tr("Sample Scene"), QStringLiteral("Play"), QStringLiteral("_welcomeSample")),
                &QPushButton::clicked, window, [window] { window->document().openFile(sampleFile()); });
    connect(addButton(tr("Add a Box"), QStringLiteral("Geometry"), QStringLiteral("_welcomeBox")),
            &QPushButton::clicked, window, [] { kxSceneObjects::add(kxSceneObjects::primitives().front()); });

    view->installEventFilter(this);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxWelcome::follow);
    follow();
}

void kxWelcome::follow()
{
    const bool isWanted = kxScene::the()->root()->getNChildren() == 0;
    if (!isWanted && isAncestorOf(window()->focusWidget()))
        parentWidget()->setFocus(); // the view's keys, and not the next widget's in a row
    setVisible(isWanted);
    raise();
    place();
}

void kxWelcome::place()
{
    adjustSize();
    move((parentWidget()->width() - width()) / 2, parentWidget()->height() / 2 + BelowMiddle);
}

bool kxWelcome::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
        place();
    return QWidget::eventFilter(watched, event);
}
