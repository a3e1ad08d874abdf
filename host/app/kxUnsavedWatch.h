#pragma once

#include <QObject>

/// Knows whether the scene differs from its file: whether the history is at another entry than when it was saved.
class kxUnsavedWatch : public QObject
{
    Q_OBJECT
public:
    explicit kxUnsavedWatch(QObject* parent = nullptr);

    bool isUnsaved() const;
    /// The scene is as its file from here on.
    void markSaved();
    /// No file holds the scene, whatever is undone.
    void markUnsaved();
    /// As markSaved(), for a scene that was just read: its history is gone.
    void startOver();

Q_SIGNALS:
    void unsavedChanged(bool unsaved);

private:
    void update();

    bool _unsaved = false;
};
