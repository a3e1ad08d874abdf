#pragma once

#include "kxVersionPreferences.h"

#include <QObject>

class kxMainWindow;

/// Joins the window with the versions of its scene: what opens, saves and is about to change much is told to
/// kxVersions, with pictures of the view.
class kxVersionKeeper : public QObject
{
    Q_OBJECT
public:
    explicit kxVersionKeeper(kxMainWindow* window);
    ~kxVersionKeeper() override;

    void setUnattended(bool unattended);
    /// Puts a version in place of the scene, as one entry of the history. What goes wrong is shown.
    void goTo(qint64 number);
    /// Opens a version as a scene that isn't saved; `path` is that of its scene, or empty. False where the open scene
    /// stays.
    bool open(kxVersionStore& store, qint64 number, const QString& path);
    /// Asks where to, and writes a version there.
    void saveAs(kxVersionStore& store, qint64 number, const QString& name);

    /// Hears when a wizard opens.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Before the scene is replaced without a question.
    void keepUnsaved();
    QByteArray picture() const;

    kxMainWindow* _window;
    kxVersionPreferences _preferences;
    bool _isUnattended = true; // until a window is there for somebody
};
