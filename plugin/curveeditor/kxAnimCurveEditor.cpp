#include <curveeditor/kxAnimCurveEditor.h>

#include <curveeditor/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimCurveUndoCommand.h>
#include <curveeditor/kxAnimTangentUndoCommand.h>
#include <curveeditor/kxTrashAnimationUndoCommand.h>
#include <frame/kxHostWindows.h>
#include <frame/kxMessageRead.h>

#include <QKXDockWindowManager.h>
#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <kxIconManager.h>
#include <kxLog.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>
#include <kxServices.h>

#include <QEvent>
#include <QLabel>
#include <QSplitter>

namespace
{
constexpr std::uint64_t MessageMask = 0x38288130;

kxAnimCurveEditor* theEditor = nullptr;

bool isKeyCommand(int id)
{
    return id == kxAnimCurveUndoCommand::commandId() || id == kxAnimTangentUndoCommand::commandId() ||
           id == kxAddAnimKeyUndoCommand::commandId() || id == kxTrashAnimationUndoCommand::commandId();
}

void setUpStats(const kxAnimCurveEditorGUIW& window)
{
    QPalette palette = window._statsFrame->palette();
    palette.setBrush(QPalette::Active, QPalette::Window, QColor(70, 70, 70, 255));
    window._statsFrame->setPalette(palette);
    window._statsFrame->setAutoFillBackground(true);
    window._frameLabel->setEnabled(false);
    window._frame->setEnabled(false);
    window._valueLabel->setEnabled(false);
    window._value->setEnabled(false);
    window._frame->setRelativeOperatorHandlingMode(1);
    window._value->setRelativeOperatorHandlingMode(1);
}
} // namespace

kxAnimCurveEditor::kxAnimCurveEditor()
    : kxModuleBase("Curve Editor", "Animation", MessageMask, nullptr), _instance(theEditor, this)
{
    QKXDockWindowManager* const docks = kxRequireDockWindowManager();
    _window = new kxAnimCurveEditorGUIW(kxRequireMainWindow());
    docks->add("Curve Editor", "Animation", _window, "Toolclip_Curves", kxIconManager::getIcon("ModuleCurveEditor", ""),
               tr("Curves"), 0, true, nullptr);
    _window->installEventFilter(this);
    connect(_window, SIGNAL(show()), this, SLOT(show()));
    if (auto* const materials = kxKernelServiceFactory::the().getService<kxMaterialService>())
        connect(materials, SIGNAL(materialsChanged()), this, SLOT(updateOnSceneChange()));
    setUpStats(*_window);
    kxAddHint(_window->_graphFrame, tr("No curves to show"),
              tr("Play and scrub the animations of the scene on the timeline bar."));
    // A pane that holds nothing takes no place.
    _window->_treeFrame->hide();
    _window->_attributeFrame->hide();
    _window->_splitter->setSizes({200, 400, 200});
    _callbacks.add(kxMessageName::AnimationStart, startAnimation);
    _callbacks.add(kxMessageName::Undo, undoStackMoved);
    _callbacks.add(kxMessageName::Redo, undoStackMoved);
}

kxAnimCurveEditor::~kxAnimCurveEditor() = default;

QWidget* kxAnimCurveEditor::moduleWidget()
{
    return _window;
}

int kxAnimCurveEditor::receivedMessage(kxMessage& message)
{
    if (_window == nullptr)
        return 0;
    try
    {
        handle(message);
    }
    catch (...)
    {
        kxLog::error("kxAnimCurveEditor::receivedMessage : An unknown exception occurred!");
    }
    return 0;
}

void kxAnimCurveEditor::handle(const kxMessage& message)
{
    switch (message.id())
    {
    case kxMessageId::NewScene:
        clear();
        break;
    case kxMessageId::SceneChanged:
    case kxMessageId::AnimationsChanged:
    case kxMessageId::AnimationsLoaded:
        updateOnSceneChange();
        break;
    default:
        break;
    }
}

bool kxAnimCurveEditor::eventFilter(QObject* watched, QEvent* event)
{
    // Installed on the window alone.
    if (event->type() == QEvent::WindowActivate && !kxController::isSnapshotRendering())
        kxAnimManager::the()->resetMotionBlurObjectID();
    return kxModuleBase::eventFilter(watched, event);
}

void kxAnimCurveEditor::show()
{
    kxAnimManager::the()->updateSceneAnimCurveData();
    _window->raise();
}

void kxAnimCurveEditor::updateOnSceneChange()
{
    kxAnimManager::the()->updateSceneAnimCurveData();
}

void kxAnimCurveEditor::clear()
{
    kxAnimManager::the()->updateSceneAnimCurveData();
    kxAnimManager::the()->setCurrentFrame(0.0, false, true);
}

void kxAnimCurveEditor::startAnimation(kxMessage& message)
{
    if (theEditor == nullptr)
        return;
    constexpr const char Reader[] = "kxMessage::get";
    std::string name;
    bool instantaneous = false;
    getFromMessage(message, "animation-name", name, Reader);
    getFromMessage(message, "instantaneous", instantaneous, Reader);
    const osg::AnimNodePtr animation = name.empty() ? osg::AnimNodePtr() : kxAnimManager::the()->find(name);
    if (animation == osg::NullFC)
        return;
    if (instantaneous)
        kxAnimManager::the()->reset(animation, true);
    else
        kxAnimManager::the()->enqueue(animation, true);
}

void kxAnimCurveEditor::undoStackMoved(kxMessage& message)
{
    bool added = false;
    int id = 0;
    if (theEditor == nullptr || !getFromMessage(message, "added", added) || !getFromMessage(message, "id", id) ||
        !isKeyCommand(id))
        return;
    // The commands write keys and nothing else; once a step, whatever its size, the scene takes them.
    if (added)
        kxAnimManager::the()->reevaluateAnimations(false);
    else
        kxAnimManager::the()->updateSceneAnimCurveData();
}
