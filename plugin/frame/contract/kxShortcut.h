#pragma once

#include <kxExport.h>

#include <QKeySequence>
#include <QList>
#include <QString>

/// The list of keys that the help shows. Listing a key doesn't bind it.
class KX_API kxShortcut
{
public:
    struct Entry
    {
        QString group;
        int key;
        Qt::KeyboardModifiers modifiers;
        QString text;
        QKeySequence sequence() const { return QKeySequence(int(modifiers) | key); }
    };

    static void addKey(const QString& group, int key, Qt::KeyboardModifiers modifiers, const QString& text);
    /// In the order in which they were added.
    static const QList<Entry>& entries();
};
