#pragma once

#include <QFrame>

class kxMainWindow;

/// What to do next, in the middle of the 3D view while the scene is empty.
class kxWelcome : public QFrame
{
    Q_OBJECT
public:
    /// Lies over `view`, which owns it.
    kxWelcome(kxMainWindow* window, QWidget* view);
    bool eventFilter(QObject* watched, QEvent* event) override;

    /// A sample scene beside the program, empty where there is none.
    static QString sampleFile();

private:
    void follow();
    void centre();
};
