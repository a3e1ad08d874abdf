#pragma once

class QKXDockWindowManager;
class QLabel;
class QMainWindow;
class QString;
class QWidget;

/// What each module is hung on. Both throw std::runtime_error where the host hasn't made it yet, so that the module
/// isn't built and the next start of the plug-in tries again.
QMainWindow* kxRequireMainWindow();
QKXDockWindowManager* kxRequireDockWindowManager();

/// A quiet text in the middle of a pane that shows nothing. `parent` owns it and gets a layout where it has none.
QLabel* kxAddHint(QWidget* parent, const QString& title, const QString& text);
