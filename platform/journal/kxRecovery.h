#pragma once

#include <files/scene/kxSceneOrigin.h>
#include <kxExport.h>

#include <QByteArray>
#include <QString>

#include <memory>

class kxFileReport;
class kxJournalStore;
struct kxSceneContent;

/// What kxJournal and the application write beside the records, so that another process can make a scene of them.
namespace kxJournalNote
{
constexpr char Base[] = "base";           ///< the file that holds what no record does, see toBytes()
constexpr char Candidate[] = "candidate"; ///< the same, of a file that is about to become it
constexpr char Tops[] = "tops";           ///< ids: root, sceneplates, scenery, clips, scene structure
constexpr char Camera[] = "camera";       ///< the id of the camera that was chosen, see kxChosenCamera
constexpr char Serial[] = "serial";       ///< goes on with each transaction that changes the scene
constexpr char Saved[] = "saved";         ///< the serial at which the scene was as its file
constexpr char Path[] = "path";           ///< of the scene's file or of the model it came from
constexpr char Versions[] = "versions";   ///< the name of their folder, where the scene was never saved
constexpr char Text[] = "text";           ///< of the last change
constexpr char Time[] = "time";           ///< of the last change, ISO

/// Path, head and ids; the offsets are found again by reading the file.
QByteArray toBytes(const kxSceneOrigin& origin);
/// Empty for what isn't one.
kxSceneOrigin toOrigin(const QByteArray& bytes);
} // namespace kxJournalNote

/// The database that a process left behind, as the scene that was open in it at its last commit.
///
/// Of a damaged one it is what can be read; what is missing is said. Neither database nor scene file are changed. The
/// caller makes sure that no process writes it any more.
class KX_API kxRecovery
{
public:
    explicit kxRecovery(const QString& file);
    ~kxRecovery();

    /// True where the scene wasn't as its file, or the journal is damaged.
    bool hasChanges() const;
    /// False where the journal is damaged so that no scene can be made of it.
    bool isReadable() const;
    /// One of kxJournalNote that is a text.
    QString note(const char* name) const;

    /// Notes in the report say what couldn't be brought back.
    bool read(kxSceneContent& content, kxFileReport& report);

private:
    class Payload;

    /// Takes what can be read in place of the database.
    void mend();

    QString _file;
    std::unique_ptr<kxJournalStore> _store;
    bool _isDamaged = false;
};
