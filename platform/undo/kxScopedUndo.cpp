#include <kxUndo.h>

#include <undo/kxUndoRecorder.h>

kxScopedUndo::kxScopedUndo(bool group) : _group(group)
{
    if (_group)
        kxUndoRecorder::the().openScope();
}

kxScopedUndo::~kxScopedUndo()
{
    if (_group)
        kxUndoRecorder::the().closeScope();
}
