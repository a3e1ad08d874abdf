#include "kxTrustBar.h"

#include <trust/kxCodeTrust.h>

#include <QHBoxLayout>
#include <QLabel>

kxTrustBar::kxTrustBar(QWidget* view) : kxQuestionBar(QStringLiteral("trust"), view)
{
    setAccessibleName(tr("Code of this file"));
    const auto answer = [](kxCodeTrust::Answer given) { return [given] { kxCodeTrust::the().answer(given); }; };
    addAnswer(tr("Show Code..."), "_trustShow", tr("Shows the code, without running it"),
              [this] { Q_EMIT showAsked(); });
    answers()->addStretch();
    answers()->addWidget(new QLabel(tr("Run code of this file?"), this));
    addAnswer(tr("Never"), "_trustNever", tr("Its code is skipped; File > Code of This Scene asks again"),
              answer(kxCodeTrust::Never));
    addAnswer(tr("This Time"), "_trustThisTime", tr("Its code may run until another scene is opened"),
              answer(kxCodeTrust::ThisTime));
    addAnswer(tr("Always for This File"), "_trustAlways",
              tr("This code may run from now on; Preferences > Security takes it back"), answer(kxCodeTrust::Always));
    connect(&kxCodeTrust::the(), &kxCodeTrust::changed, this, &kxTrustBar::follow);
    follow();
}

void kxTrustBar::follow()
{
    const kxCodeTrust& trust = kxCodeTrust::the();
    ask(trust.isAsking() ? trust.question() + QLatin1Char(' ') + tr("It is skipped until you allow it.") : QString());
}
