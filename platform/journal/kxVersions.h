#pragma once

#include <journal/kxVersionStore.h>

#include <files/scene/kxFileReport.h>

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <memory>

struct kxSceneContent;

/// Keeps states of the open scene as versions: by itself at certain moments, and when it is asked to.
///
/// What can't be kept is told once for each scene, and fails nothing else. Main thread only.
class KX_API kxVersions : public QObject
{
    Q_OBJECT
public:
    static kxVersions& the();

    struct Settings
    {
        bool isOn = false; ///< by itself; what is kept by hand always is
        int minutes = 5;   ///< between versions while somebody works
        kxVersionBounds bounds;
    };
    void setSettings(const Settings& settings);
    const Settings& settings() const { return _settings; }

    /// A PNG of the view, empty where nobody looks. May be empty.
    std::function<QByteArray()> takePicture;
    /// The user is in the middle of something: not now. May be empty.
    std::function<bool()> isBusy;
    /// Around what somebody waits for. May be empty.
    std::function<void(bool isWaiting)> wait;

    // The document tells these.
    /// Another scene is open; `path` is its file, empty where none of ours holds it, and `source` what it came from.
    void opened(const QString& path, const QString& source = QString());
    /// The open scene is what a run before left unsaved of this file, or of what came from it and was never saved, as
    /// that run's neverSavedFolder() says. It goes on with those versions.
    void recovered(const QString& path, const QString& neverSavedFolder = QString());
    /// The name of the folder of a scene that was never saved, empty for others.
    QString neverSavedFolder() const;
    /// The scene is about to take the place of the file that lies there.
    void toBeSaved(const QString& path);
    void saved(const QString& path);

    /// Before something that may change much: a script, an import, the wizard. However long it takes; false where no
    /// version holds what changed since the last one or the file.
    bool keepBefore(kxVersion::Reason reason, const QString& detail = QString());
    /// By hand; gives the number, 0 where it failed, with the reason. Where the last version is the same scene, that
    /// one gets the name.
    qint64 keep(const QString& name, QString& reason);

    void rename(qint64 number, const QString& name);

    /// Of the open scene; another one after each changed().
    kxVersionStore& store() { return *_store; }
    /// The file of the open scene, also of a recovered one; empty where it was never saved.
    const QString& path() const { return _path; }

    /// Puts a version in place of the open scene, as one entry of the history. What differs from the last version is
    /// kept before.
    bool goTo(qint64 number, kxFileReport& report);
    /// Reads a version that is to take the place of the open scene.
    static bool read(kxVersionStore& store, qint64 number, kxSceneContent& content, kxFileReport& report);
    /// The file of a version, at another place.
    static bool saveAs(kxVersionStore& store, qint64 number, const QString& path, kxFileReport& report);

    /// What one line of changes tells of.
    struct Change
    {
        QString group; ///< the object or clip
        QString words;
    };
    struct Changes
    {
        bool isKnown = false;
        QString failure; ///< why they can't be told
        std::vector<Change> lines;
        int unlisted = 0; ///< lines beyond those
    };
    /// From one version to a later one. `reads`: where they aren't stored both are read and compared, which takes as
    /// long as opening them; else they are unknown.
    static Changes changes(kxVersionStore& store, qint64 since, qint64 number, bool reads);

Q_SIGNALS:
    /// Another scene, or another version of it.
    void changed();

private:
    kxVersions();
    kxVersion made(kxVersion::Reason reason, const QString& detail) const;
    qint64 keepOpenScene(kxVersion version);
    void kept(qint64 number, bool hasPicture);
    void tick();
    void addPicture();
    void applyBounds();
    bool isQuick() const;
    static quint64 content();
    bool isNew() const;
    /// Tells what went wrong, and begins anew.
    void settle();
    void setStore(const QString& path, const QString& source);
    void setStore(const QString& path, std::unique_ptr<kxVersionStore> store);

    Settings _settings;
    std::unique_ptr<kxVersionStore> _store;
    QString _path;
    quint64 _contentKept = 0;   // of the last version; 0 where it is another scene
    QElapsedTimer _sinceKept;   // of the open scene
    double _bytesPerMs;         // that writing a scene has got through
    qint64 _lastSize = 0;       // of the last version
    qint64 _total = -1;         // bytes of all versions, -1 where they weren't counted
    qint64 _withoutPicture = 0; // the version that gets one at the next rest
    qint64 _newest = 0;         // the version kept last in this process, which the bounds leave
    QSet<QString> _warned;      // paths of scenes
    QTimer _timer;
};
