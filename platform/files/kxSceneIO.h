#pragma once

#include <files/scene/kxExportedAnimations.h>
#include <files/scene/kxFileReport.h>

class kxSceneObserver;
struct kxSceneContent;

/// The whole acts on the open scene: from a file and into one, with all that must follow.
///
/// A file is read apart from the scene first; where that fails, the scene stays as it is. The caller logs the report.
namespace kxSceneIO
{
/// An empty scene: playback stops, the undo stack and the selection are emptied, "trashCleared" goes out, then the
/// message of a new scene.
KX_API void newScene();
/// Puts the scene of a file in place of the open one. Messages as in newScene(), then that content and animations
/// changed. The timeline covers the animations of a file of another program; our own bring their ranges.
KX_API bool open(const QString& path, kxFileReport& report);
/// Adds the scene of a file below a new group that bears the file's name; animations of an object go to the one object
/// or material that is selected. One step on the undo stack.
KX_API bool importFile(const QString& path, kxFileReport& report);
/// What open() would put there, without touching the open scene: to look at it, or to compare it.
KX_API bool readContent(const QString& path, kxSceneContent& content, kxFileReport& report);
KX_API bool save(const QString& path, kxFileReport& report);
KX_API bool exportScene(const QString& path, kxFileReport& report,
                        kxExportedAnimations wanted = kxExportedAnimations::All);
/// Of "all", "clips" and "timeline"; false for another word.
KX_API bool exportedAnimations(const QString& word, kxExportedAnimations& wanted);
/// What the filter of a file dialog, one of exportFilter(), stands for.
KX_API kxExportedAnimations exportedBy(const QString& filter);

/// As open(), of a scene of ours that was read elsewhere.
KX_API void open(const kxSceneContent& content, kxFileReport& report);

/// Told from then on, one at a time; null for none. Not owned.
KX_API void setObserver(kxSceneObserver* observer);

/// The suffix of our own scene files, without a dot.
KX_API QString sceneSuffix();
KX_API bool isSceneFile(const QString& path);
/// True for animations of an object, which can be imported only.
KX_API bool isAnimationFile(const QString& path);
/// For file dialogs.
KX_API QString openFilter();
KX_API QString saveFilter();
KX_API QString exportFilter();
} // namespace kxSceneIO
