#pragma once

#include "kxTrustStore.h"

#include <QObject>
#include <scene/kxSceneCode.h>

#include <map>

/// Which of the code that the open scene carries may run: what was written here, and what its user allowed.
///
/// Trust goes by the text of each piece. So it outlives edits, undo, versions and recovery, and whatever brings in code
/// that nobody allowed, a file, an import, a version, brings in code that waits. Who runs a scene's code asks mayRun()
/// with the very text that runs.
class kxCodeTrust : public QObject
{
    Q_OBJECT
public:
    static kxCodeTrust& the();

    enum Answer
    {
        Never,    ///< not asked again for this code
        ThisTime, ///< until another scene is open
        Always
    };

    bool mayRun(const std::string& text);
    /// The code of the open scene that may not.
    const std::vector<kxSceneCode>& waiting() const { return _waiting; }
    /// Nobody has answered for what waits.
    bool isAsking() const { return _isAsking; }
    /// What waits and where it came from, and what it could do, for the user.
    QString question() const;
    void answer(Answer answer);
    /// Asks again after Never.
    void ask();

    /// What may run for good, and what never may.
    const std::vector<kxTrustStore::File>& files() { return _store.files(); }
    /// Takes the answers back.
    void revoke(const std::vector<kxTrustStore::File>& files);

    /// Everything that is opened may run, as the command line says.
    void setTrusting(bool trusts);
    /// Nobody can be asked: what waits is told on the error stream.
    void setUnattended(bool unattended) { _isUnattended = unattended; }

    // What happens to the scene.
    /// Another scene is open; `path` is its file, empty where none of ours holds it, and `source` what it came from.
    void opened(const QString& path, const QString& source);
    void imported(const QString& file);
    /// What may run for good may do so wherever this file goes.
    void saved(const QString& file);
    /// Somebody here puts steps in place of others. What takes the place of a file's code may run where that may; a
    /// copy of a file's code stays that wherever it is written, also when its scene is gone.
    void written(const std::vector<kxSequenceStep>& before, const std::vector<kxSequenceStep>& after);

Q_SIGNALS:
    /// Something else waits, or is asked for.
    void changed();
    /// `said`: what follows from it.
    void answered(const QString& said);

private:
    class Watch;
    kxCodeTrust();
    /// Of what is new in the scene, all came from `file`.
    void follow(const QString& file);
    void tell(const QString& file) const;
    QString whatWaits() const;
    QString originOf(const kxSceneCode& piece) const;
    /// Came with a file, now or before, or was refused, and may not run for good.
    bool isForeign(const QByteArray& digest);

    kxTrustStore _store;
    QSet<QByteArray> _thisTime;
    QSet<QByteArray> _foreign; ///< all code that files brought into this process and that wasn't allowed for good then
    std::vector<kxSceneCode> _waiting;
    std::map<QByteArray, QString> _origins; ///< the files that what waits or waited came with, by digest
    QString _path, _source;                 ///< of the open scene
    bool _isAsking = false, _isTrusting = false, _isUnattended = false;
};
