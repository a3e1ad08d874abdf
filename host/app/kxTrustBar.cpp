#include "kxTrustBar.h"

#include <kxIconManager.h>
#include <kxPlatform.h>
#include <trust/kxCodeTrust.h>
#include <widgets/kxColors.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

kxTrustBar::kxTrustBar(QWidget* parent) : QFrame(parent), _text(new QLabel(this))
{
    setObjectName(QStringLiteral("_trustBar"));
    setAccessibleName(tr("Code of this file"));
    setAutoFillBackground(true);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, colors.color(QPalette::Button));
    setPalette(colors);
    auto* const icon = new QLabel(this);
    icon->setPixmap(
        kxIconManager::getIcon(QStringLiteral("Warning"), QString()).pixmap(kxPlatform::getSmallIconSize()));
    _text->setObjectName(QStringLiteral("_trustText"));
    _text->setTextFormat(Qt::PlainText); // it holds names of files
    _text->setWordWrap(true);
    _text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto* const words = new QHBoxLayout;
    words->addWidget(icon, 0, Qt::AlignTop);
    words->addWidget(_text, 1);
    auto* const buttons = new QHBoxLayout;
    const auto add = [this, buttons](const QString& text, const char* name, const QString& tip, auto work)
    {
        auto* const button = new QPushButton(text, this);
        button->setObjectName(QString::fromLatin1(name));
        button->setToolTip(tip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, work);
        buttons->addWidget(button);
    };
    const auto answer = [](kxCodeTrust::Answer given) { return [given] { kxCodeTrust::the().answer(given); }; };
    add(tr("Show Code..."), "_trustShow", tr("Shows the code, without running it"), [this] { Q_EMIT showAsked(); });
    buttons->addStretch();
    buttons->addWidget(new QLabel(tr("Run code of this file?"), this));
    add(tr("Never"), "_trustNever", tr("Its code is skipped; File > Code of This Scene asks again"),
        answer(kxCodeTrust::Never));
    add(tr("This Time"), "_trustThisTime", tr("Its code may run until another scene is opened"),
        answer(kxCodeTrust::ThisTime));
    add(tr("Always for This File"), "_trustAlways",
        tr("This code may run from now on; Preferences > Security takes it back"), answer(kxCodeTrust::Always));

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(4);
    layout->addLayout(words);
    layout->addLayout(buttons);
    connect(&kxCodeTrust::the(), &kxCodeTrust::changed, this, &kxTrustBar::follow);
    follow();
}

void kxTrustBar::holdBack(bool isHeld)
{
    _isHeld = isHeld;
    follow();
}

void kxTrustBar::follow()
{
    const bool isAsking = kxCodeTrust::the().isAsking();
    if (isAsking)
        _text->setText(kxCodeTrust::the().question() + QLatin1Char(' ') + tr("It is skipped until you allow it."));
    setVisible(isAsking && !_isHeld);
}
