#pragma once

#include <QWidget>

class kxMainWindow;

/// Ways to begin, as buttons below the words that the 3D view shows while the scene is empty.
class kxWelcome : public QWidget
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
    void place();
};
