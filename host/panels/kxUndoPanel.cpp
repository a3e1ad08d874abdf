#include "kxUndoPanel.h"

#include <kxUndo.h>

#include <QUndoStack>

kxUndoPanel::kxUndoPanel(QWidget* parent) : QUndoView(kxUndoStack::get(0).stack(), parent)
{
    setObjectName(QStringLiteral("_undoList"));
    setAccessibleName(tr("Steps that can be undone"));
    setFrameShape(QFrame::NoFrame);
    setEmptyLabel(tr("Start"));
    setUniformItemSizes(true);
}
