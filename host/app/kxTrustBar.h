#pragma once

#include <QFrame>

class QLabel;

/// Asks above the view whether code that came with a file may run, as long as nobody has answered.
class kxTrustBar : public QFrame
{
    Q_OBJECT
public:
    explicit kxTrustBar(QWidget* parent = nullptr);

    /// Stays away, whatever is asked.
    void holdBack(bool isHeld);

Q_SIGNALS:
    void showAsked();

private:
    void follow();

    QLabel* _text;
    bool _isHeld = false;
};
