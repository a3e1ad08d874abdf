#include "kxUnsavedWatch.h"

#include <journal/kxHistory.h>
#include <kxUndo.h>

#include <QUndoStack>

kxUnsavedWatch::kxUnsavedWatch(QObject* parent) : QObject(parent)
{
    connect(&kxHistory::the(), &kxHistory::changed, this, &kxUnsavedWatch::update);
    markSaved(); // what was changed before belongs to nobody's file
}

bool kxUnsavedWatch::isUnsaved() const
{
    kxHistory::the().settle(); // a change may be newer than the last entry
    return !kxHistory::the().isSaved();
}

void kxUnsavedWatch::update()
{
    const bool unsaved = !kxHistory::the().isSaved();
    if (unsaved == _unsaved)
        return;
    _unsaved = unsaved;
    Q_EMIT unsavedChanged(unsaved);
}

void kxUnsavedWatch::markSaved()
{
    kxHistory::the().markSaved();
    update();
}

void kxUnsavedWatch::markUnsaved()
{
    kxHistory::the().markUnsaved();
    update();
}

void kxUnsavedWatch::startOver()
{
    kxUndoStack::get(0).stack()->clear();
    kxHistory::the().clear();
    markSaved();
}
