#pragma once

#include "kxDocument.h"

class QMainWindow;

/// What a document asks and shows, as dialogs of the main window.
namespace kxFileDialogs
{
/// Fills in the document's dialogs.
void install(kxDocument& document, QMainWindow* window);

/// A file the user chooses, empty where they take it back. The folder of the last one of its `kind` is remembered.
QString askForScene(QMainWindow* window);
QString askForModel(QMainWindow* window);
/// Starts in `folder`, or in the one remembered where that is empty.
QString askForExport(QMainWindow* window, const QString& folder, const QString& name);
QString askForScript(QMainWindow* window);
/// Proposes `file`, what was saved last, where that isn't empty.
QString askForComparison(QMainWindow* window, const QString& file);
/// Where a version is to be written.
QString askForVersionPath(QMainWindow* window, const QString& folder, const QString& name);

void showError(QMainWindow* window, const QString& action, const kxFileReport& report);
} // namespace kxFileDialogs
