#include "kxUnsavedWatch.h"

#include <files/scene/kxSceneTiming.h>
#include <kernel/kxSelectCommand.h>
#include <kxUndo.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimNode.h>
#include <scene/kxScene.h>
#include <undo/kxUndoStep.h>

#include <QUndoStack>

#include <algorithm>

namespace
{
/// What is selected is no part of a file.
bool isSelection(const QUndoCommand* command)
{
    const auto* const step = dynamic_cast<const kxUndoStep*>(command);
    return step != nullptr && std::all_of(step->commands().begin(), step->commands().end(),
                                          [](const std::unique_ptr<kxUndoCommand>& part)
                                          { return dynamic_cast<const kxSelectCommand*>(part.get()) != nullptr; });
}
/// The present values of what a file holds; the place of the current frame is no edit.
std::map<std::string, double> presentSettings()
{
    std::map<std::string, double> settings = kxSceneTiming::values();
    settings.erase("currentFrame");
    return settings;
}
} // namespace

kxUnsavedWatch::kxUnsavedWatch(QObject* parent)
    : QObject(parent), _stack(kxUndoStack::get(0).stack()), _settings(presentSettings())
{
    connect(_stack, &QUndoStack::indexChanged, this, &kxUnsavedWatch::stackMoved);
    connect(_stack, &QUndoStack::cleanChanged, this, &kxUnsavedWatch::stackMoved);
    connect(kxScene::the(), &kxScene::settingsChanged, this, &kxUnsavedWatch::update);
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->addListener(this);
}

kxUnsavedWatch::~kxUnsavedWatch()
{
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->subListener(this);
}

void kxUnsavedWatch::containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField)
{
    const osg::FieldContainerType& type = container->getType();
    if (_editedBeside || _pending)
        return;
    // Marked by every evaluation, and no part of what a user makes.
    const osg::BitVector transient =
        osg::AnimNodeBase::PlayingFieldMask | osg::AnimNodeBase::LastEvaluationTimeFieldMask;
    const bool isNode = type.isDerivedFrom(osg::AnimNodeBase::_type);
    if (isNode ? !whichField.intersects(~transient)
               : !type.isDerivedFrom(osg::AnimObject::_type) && !type.isDerivedFrom(osg::AnimAttachmentBase::_type) &&
                     !type.isDerivedFrom(osg::TagAttachmentBase::_type))
        return;
    _pending = true;
    // A step that made this edit reports within the same turn.
    QMetaObject::invokeMethod(this, &kxUnsavedWatch::turnEnded, Qt::QueuedConnection);
}

void kxUnsavedWatch::stackMoved()
{
    _pending = false;
    update();
}

void kxUnsavedWatch::turnEnded()
{
    _editedBeside = _editedBeside || _pending;
    _pending = false;
    update();
}

bool kxUnsavedWatch::hasSteps() const
{
    const int clean = _stack->cleanIndex(), index = _stack->index();
    if (clean < 0)
        return true;
    for (int i = std::min(clean, index); i < std::max(clean, index); ++i)
        if (!isSelection(_stack->command(i)))
            return true;
    return false;
}

bool kxUnsavedWatch::differs() const
{
    return _editedBeside || hasSteps() || presentSettings() != _settings;
}

bool kxUnsavedWatch::isUnsaved() const
{
    return _unsaved || differs(); // a setting may be newer than the last report of one
}

void kxUnsavedWatch::update()
{
    const bool unsaved = differs();
    if (unsaved == _unsaved)
        return;
    _unsaved = unsaved;
    Q_EMIT unsavedChanged(unsaved);
}

void kxUnsavedWatch::markSaved()
{
    _editedBeside = false;
    _pending = false;
    _settings = presentSettings();
    _stack->setClean();
    update();
}

void kxUnsavedWatch::startOver()
{
    _stack->clear();
    markSaved();
}
