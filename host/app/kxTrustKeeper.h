#pragma once

#include "kxSecurityPreferences.h"

#include <QObject>

class QMainWindow;

/// Joins the window with kxCodeTrust: the question above the view, the code to look at, the page of settings.
class kxTrustKeeper : public QObject
{
    Q_OBJECT
public:
    /// `view` comes into the middle of `window`, with room for the question above it.
    kxTrustKeeper(QMainWindow* window, QWidget* view);

    /// Shows the code of the scene, and asks again where some of it is skipped.
    void showCode();

private:
    QMainWindow* _window;
    kxSecurityPreferences _preferences;
};
