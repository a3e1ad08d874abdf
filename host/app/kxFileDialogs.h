#pragma once

#include <files/scene/kxExportedAnimations.h>

#include "kxDocument.h"

class QMainWindow;

/// What a document asks and shows, as dialogs of the main window.
namespace kxFileDialogs
{
/// Fills in the document's dialogs.
void install(kxDocument& document, QMainWindow* window);

/// A file the user chooses, empty where they take it back. The folder of the last one of its kind is remembered.
/// Starts in `lastFolder`, where files were used last, or in the one remembered where that is empty.
QString askForScene(QMainWindow* window, const QString& lastFolder = QString());
/// Starts in the folder remembered, or in `lastFolder` where there is none.
QString askForModel(QMainWindow* window, const QString& lastFolder);
/// Starts in `folder`, or in the one remembered where that is empty. `wanted` is what the chosen filter stands for.
QString askForExport(QMainWindow* window, const QString& folder, const QString& name, kxExportedAnimations& wanted);
QString askForScript(QMainWindow* window);
/// Starts at `place`, a folder or a file to propose, or in the folder remembered where that is empty.
QString askForComparison(QMainWindow* window, const QString& place);
/// Where a version is to be written.
QString askForVersionPath(QMainWindow* window, const QString& folder, const QString& name);

void showError(QMainWindow* window, const QString& action, const kxFileReport& report);
} // namespace kxFileDialogs
