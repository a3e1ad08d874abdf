#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

/// Tells when another program changes or removes a scene's file.
class kxFileWatch : public QObject
{
    Q_OBJECT
public:
    explicit kxFileWatch(QObject* parent = nullptr);

    /// From now on, as it lies there now; none where `path` is empty.
    void follow(const QString& path);
    /// What this program itself writes there isn't told; follow() comes after it.
    void pause(bool isPaused) { _isPaused = isPaused; }
    /// Looks at once.
    void check();

Q_SIGNALS:
    void changed(bool isGone);

private:
    struct Stamp
    {
        qint64 size = -1; ///< -1 where there is no file
        qint64 time = 0;
        quint64 place = 0; ///< the inode
        QByteArray head;
    };
    Stamp stamp() const;
    bool holdsTheSame(const Stamp& now) const;
    void watch();

    QString _path;
    Stamp _known;
    QFileSystemWatcher _watcher;
    QTimer _rest; ///< a file is written in many pieces
    bool _isPaused = false;
};
