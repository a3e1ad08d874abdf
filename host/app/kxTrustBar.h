#pragma once

#include "kxQuestionBar.h"

/// Asks above the view whether code that came with a file may run; says quietly that it doesn't, once that was refused.
class kxTrustBar : public kxQuestionBar
{
    Q_OBJECT
public:
    explicit kxTrustBar(QWidget* view);

Q_SIGNALS:
    void showAsked();

private:
    void follow();

    QList<QWidget*> _answers; ///< away where there is nothing to answer
    QWidget* _again;
};
