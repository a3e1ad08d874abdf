#include <kxUndo.h>

#include <QCoreApplication>

QString kxUndoString(const QString& text, const QString& category)
{
    // The category tells the translator which tool the text belongs to; the user reads the text alone.
    return QCoreApplication::translate("kxUndo", text.toUtf8().constData(), category.toUtf8().constData());
}
