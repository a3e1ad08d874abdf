#pragma once

#include "kxQuestionBar.h"

/// Asks above the view whether code that came with a file may run, as long as nobody has answered.
class kxTrustBar : public kxQuestionBar
{
    Q_OBJECT
public:
    explicit kxTrustBar(QWidget* view);

Q_SIGNALS:
    void showAsked();

private:
    void follow();
};
