#include <kxUndo.h>

#include <undo/kxUndoGesture.h>
#include <undo/kxUndoRecorder.h>

#include <QUndoStack>

kxUndoStack::kxUndoStack() : _stack(new QUndoStack)
{
    kxUndoRecorder::the().setStack(_stack);
}

kxUndoStack& kxUndoStack::get(int)
{
    // Never destroyed: its commands reach into the scene, which may be gone by then.
    static kxUndoStack* const stack = new kxUndoStack;
    kxUndoGesture::the().watch();
    return *stack;
}

void kxUndoStack::add(kxUndoCommand* command)
{
    if (command != nullptr)
        kxUndoRecorder::the().add(std::unique_ptr<kxUndoCommand>(command));
}
