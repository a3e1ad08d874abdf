#include "kxWelcome.h"

#include "kxHostFolders.h"
#include "kxMainWindow.h"
#include "kxSceneObjects.h"

#include <kxIconManager.h>
#include <scene/kxScene.h>
#include <widgets/kxColors.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace
{
QLabel* makeText(const QString& text, const QColor& color, QWidget* parent)
{
    auto* const label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignCenter);
    QPalette colors = label->palette();
    colors.setColor(QPalette::WindowText, color);
    label->setPalette(colors);
    return label;
}
} // namespace

QString kxWelcome::sampleFile()
{
    return kxHostFolders::find(QStringLiteral("examples/turntable.kxs"));
}

kxWelcome::kxWelcome(kxMainWindow* window, QWidget* view) : QFrame(view)
{
    setObjectName(QStringLiteral("_welcome"));
    QLabel* const title = makeText(tr("The scene is empty"), kxColors::text(), this);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.5);
    title->setFont(font);
    QLabel* const hint = makeText(tr("Drop a model here, open a file, or add an object."), kxColors::dimText(), this);

    auto* const buttons = new QHBoxLayout;
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

    auto* const layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(title);
    layout->addWidget(hint);
    layout->addSpacing(4);
    layout->addLayout(buttons);
    view->installEventFilter(this);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxWelcome::follow);
    follow();
}

void kxWelcome::follow()
{
    setVisible(kxScene::the()->root()->getNChildren() == 0);
    raise();
    centre();
}

void kxWelcome::centre()
{
    adjustSize();
    move((parentWidget()->width() - width()) / 2, (parentWidget()->height() - height()) / 2);
}

bool kxWelcome::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
        centre();
    return QFrame::eventFilter(watched, event);
}
