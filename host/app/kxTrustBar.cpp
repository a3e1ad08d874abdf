#include "kxTrustBar.h"

#include <trust/kxCodeTrust.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

kxTrustBar::kxTrustBar(QWidget* view) : kxQuestionBar(QStringLiteral("trust"), view)
{
    setAccessibleName(tr("Code of this file"));
    addAnswer(tr("Show Code..."), "_trustShow", tr("Shows the code, without running it"),
              [this] { Q_EMIT showAsked(); });
    answers()->addStretch();
    auto* const question = new QLabel(tr("Run code of this file?"), this);
    answers()->addWidget(question);
    _answers << question;
    const auto add = [this](const QString& text, const char* name, const QString& tip, kxCodeTrust::Answer given)
    { _answers << addAnswer(text, name, tip, [given] { kxCodeTrust::the().answer(given); }); };
    add(tr("Never"), "_trustNever",
        tr("Its code is skipped and not asked for again; Preferences > Security takes it back"), kxCodeTrust::Never);
    add(tr("This Time"), "_trustThisTime", tr("Its code may run until another scene is opened"), kxCodeTrust::ThisTime);
    add(tr("Always for This File"), "_trustAlways",
        tr("This code may run from now on; Preferences > Security takes it back"), kxCodeTrust::Always);
    _again = addAnswer(tr("Ask Again"), "_trustAgain", tr("Shows the question"), [] { kxCodeTrust::the().ask(); });
    connect(&kxCodeTrust::the(), &kxCodeTrust::changed, this, &kxTrustBar::follow);
    follow();
}

void kxTrustBar::follow()
{
    const kxCodeTrust& trust = kxCodeTrust::the();
    for (QWidget* const answer : qAsConst(_answers))
        answer->setVisible(trust.isAsking());
    _again->setVisible(!trust.isAsking());
    ask(trust.isAsking()          ? trust.question()
        : trust.waiting().empty() ? QString()
                                  : tr("Code of this file doesn't run."));
}
