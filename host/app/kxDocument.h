#pragma once

#include "kxFileWatch.h"
#include "kxRecentFiles.h"
#include "kxUnsavedWatch.h"

#include <files/scene/kxExportedAnimations.h>
#include <python/kxScriptDocument.h>

#include <QObject>
#include <QString>
#include <files/scene/kxFileReport.h>

#include <functional>

class kxRecovery;

/// The open scene as a file: its path, whether it is unsaved, and every way in and out of files.
///
/// Knows no windows: what has to be asked or shown goes through `Dialogs`.
class kxDocument : public QObject, public kxScriptDocument
{
    Q_OBJECT
public:
    enum Answer
    {
        Save,
        Discard,
        Cancel
    };
    /// Empty functions answer as a program without a user would: nothing is saved, nothing stops.
    struct Dialogs
    {
        std::function<Answer(const QString& sceneName)> askToSave;
        /// A path for the scene, empty where the user takes it back. `proposal` is a path or a name.
        std::function<QString(const QString& proposal)> askForPath;
        /// `action` as in "The scene can't be opened".
        std::function<void(const QString& action, const kxFileReport& report)> showError;
        /// Around what may take long; `what` empty at the end.
        std::function<void(const QString& what)> busy;
        /// In the middle of work with a file, see kxProgress: how far it is. False where the user takes it back.
        std::function<bool(const QString& what, double share)> goesOn;
        /// Something that isn't worth a dialog.
        std::function<void(const QString& text)> tell;
    };

    explicit kxDocument(QObject* parent = nullptr);

    Dialogs& dialogs() { return _dialogs; }
    kxRecentFiles& recentFiles() { return _recent; }
    /// Empty for a scene that was never saved.
    const QString& path() const { return _path; }
    /// The file's name without its folder, or a word for a scene without one.
    QString name() const;
    /// The file it came from, of any format; empty for a new scene.
    const QString& source() const { return _path.isEmpty() ? _source : _path; }
    /// Where the scene lies, or the model that it came from; empty for a scene of neither.
    QString folder() const;
    bool isUnsaved() const { return _watch.isUnsaved(); }

    /// Asks where there is something to lose. False: the user wants to go back, or it couldn't be saved.
    bool mayLeave();

    /// Each asks by mayLeave() first. False where the open scene stays. A file of animations is imported: it is no
    /// scene.
    bool newScene();
    bool openFile(const QString& file);
    /// What a run before left unsaved of `file`, which is proposed to save to and else left alone.
    bool openRecovered(kxRecovery& recovery, const QString& file);
    /// Opens a scene file as a scene that isn't saved yet; `source` is the file that it once was, and proposes a name.
    bool openCopy(const QString& file, const QString& source);
    /// Opens the scene's file as it is now, and asks nothing.
    bool reload();
    /// Adds a file to the scene, as one step.
    bool importFile(const QString& file);
    bool save();
    bool saveAs();
    bool saveTo(const QString& file);
    bool exportTo(const QString& file, kxExportedAnimations wanted = kxExportedAnimations::All);

    // For scripts: nobody is asked.
    void startOver() override;
    bool open(const QString& file, kxFileReport& report) override;
    bool write(const QString& file, kxFileReport& report) override;

Q_SIGNALS:
    /// Another scene, path or state of saving.
    void changed();
    /// Another scene is open.
    void opened(const QString& file);
    /// After opened(): it is what was left unsaved of this scene file, which need not be there any more, or where
    /// `versions` isn't empty of a scene that was never saved and has its versions there.
    void recovered(const QString& file, const QString& versions);
    /// Another scene takes the place of this one, and nobody was asked whether it is to be saved.
    void aboutToReplace();
    void aboutToImport(const QString& file);
    /// The file that lies there, if there is one, is still as it was.
    void aboutToSave(const QString& file);
    void saved(const QString& file);
    /// Another program changed or removed the scene's file; the scene is unsaved from then on.
    void fileChanged(bool isGone);

private:
    void makeNew();
    bool run(const QString& what, const QString& failure, kxFileReport& report, const std::function<bool()>& work);
    /// The scene came out of this file; empty: out of none.
    void hasOpened(const QString& path) { hasOpened(path, path); }
    void hasOpened(const QString& path, const QString& source);
    /// The scene is in no file; `source` is what it came from.
    void hasOpenedUnsaved(const QString& source);
    /// Writes without telling that it was saved().
    bool writeTo(const QString& file, kxFileReport& report);
    void hasSaved();
    void hasChanged(bool isGone);
    void setPath(const QString& path);

    Dialogs _dialogs;
    kxRecentFiles _recent;
    kxUnsavedWatch _watch;
    kxFileWatch _fileWatch;
    QString _path;          // of our own format
    QString _source;        // what was opened, of any format; proposes the name
    bool _hasBegun = false; // a first scene has been made
};
