#include "kxQuestionBar.h"

#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

kxQuestionBar::kxQuestionBar(const QString& name, QWidget* view)
    : QFrame(view->parentWidget()), _view(view), _text(new QLabel(this)), _answers(new QHBoxLayout)
{
    setObjectName(QStringLiteral("_%1Bar").arg(name));
    setAutoFillBackground(true);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, colors.color(QPalette::Button));
    setPalette(colors);
    auto* const icon = new QLabel(this);
    icon->setPixmap(
        kxIconManager::getIcon(QStringLiteral("Warning"), QString()).pixmap(kxPlatform::getSmallIconSize()));
    _text->setObjectName(QStringLiteral("_%1Text").arg(name));
    _text->setTextFormat(Qt::PlainText); // it holds names of files
    _text->setWordWrap(true);
    _text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto* const words = new QHBoxLayout;
    words->addWidget(icon, 0, Qt::AlignTop);
    words->addWidget(_text, 1);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(4);
    layout->addLayout(words);
    layout->addLayout(_answers);
    auto* const column = static_cast<QBoxLayout*>(parentWidget()->layout());
    column->insertWidget(column->indexOf(view), this);
    hide();
}

QPushButton* kxQuestionBar::addAnswer(const QString& text, const char* name, const QString& tip,
                                      const std::function<void()>& work)
{
    auto* const button = new QPushButton(text, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(tip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this,
            [this, work]
            {
                _view->setFocus(); // else the next widget in a row gets it with the button gone
                work();
            });
    _answers->addWidget(button);
    return button;
}

void kxQuestionBar::holdBack(bool isHeld)
{
    _isHeld = isHeld;
    ask(_text->text());
}

void kxQuestionBar::ask(const QString& text)
{
    _text->setText(text);
    setVisible(!text.isEmpty() && !_isHeld);
}
