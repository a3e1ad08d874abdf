#include <curveeditor/kxAnimCurveEditor.h>

#include <curveeditor/edits/kxInfinityModes.h>
#include <curveeditor/edits/kxKeyArithmetic.h>
#include <curveeditor/kxAnimChannelWidget.h>
#include <curveeditor/kxAnimCurveEditorGUIW.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <curveeditor/kxAnimJointMove.h>
#include <trees/kxAnimLibraryWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxAnimManager.h>
#include <kxMessageNames.h>
#include <osg/FieldContainerFactory.h>

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QStatusBar>

#include <optional>

namespace
{
/// Of the fields while several keys are selected: the value shown is that of one of them.
constexpr const char ManyKeysStyle[] =
    "background: qlineargradient(x1:0.0, y1:0.1, x2:0.0, y2:0.45, stop:0 rgba(235, 185, 55, 175), stop:1 rgba(165, "
    "155, 45, 135));";

constexpr int NoticeMilliseconds = 6000;

/// The mode that an infinity entry names. The texts are compared as they are in the menu, untranslated.
std::optional<osg::InfinityMode> infinityMode(const QString& text)
{
    constexpr const char* Texts[] = {"Constant", "Linear", "Loop", "Loop with Offset", "Oscillate"};
    for (std::size_t mode = 0; mode < std::size(Texts); ++mode)
        if (text == QLatin1String(Texts[mode]))
            return osg::InfinityMode(mode);
    return std::nullopt;
}

/// Of the curves directly under the selected blocks.
void setInfinityOfSelectedBlocks(const kxAnimTreeWidget& library, kxInfinityModes::Side side, const QAction* action)
{
    const std::optional<osg::InfinityMode> mode = action != nullptr ? infinityMode(action->text()) : std::nullopt;
    if (!mode)
        return;
    std::vector<osg::AnimCurvePtr> curves;
    for (const QTreeWidgetItem* const item : library.selectedItems())
    {
        const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(item);
        const osg::AnimNodePtr block = row != nullptr ? osg::AnimNodePtr::dcast(row->node()) : osg::AnimNodePtr();
        if (block == osg::NullFC || osg::AnimBlockPtr::dcast(block->getCore()) == osg::NullFC)
            continue;
        for (unsigned int i = 0; i < block->getNChildren(); ++i)
            if (const auto curve = osg::AnimCurvePtr::dcast(block->getChild(i)->getCore()); curve != osg::NullFC)
                curves.push_back(curve);
    }
    kxInfinityModes::set(curves, side, osg::UInt32(*mode));
}

bool isAnimationRow(const kxAnimTreeWidgetItem* row)
{
    return osg::living<osg::AnimNode>(row->nodeId()) != osg::NullFC;
}

/// All keys of a curve are locked and unlocked together.
bool hasLockedKeys(const kxAnimGraphScene& scene)
{
    const QList<kxAnimGraphCurve*> curves = scene.curves();
    return std::any_of(curves.begin(), curves.end(),
                       [](const kxAnimGraphCurve* curve)
                       {
                           const kxAnimGraphPoint* const key = curve->point(0);
                           return key != nullptr && !key->flags().testFlag(QGraphicsItem::ItemIsMovable);
                       });
}

void show(QKXDoubleSpiner* field, QLabel* label, int selected, double value)
{
    const QSignalBlocker blocker(field);
    const QString style = selected > 1 ? QString::fromLatin1(ManyKeysStyle) : QString();
    if (field->styleSheet() != style) // setting one costs a repolish, and this runs at each mouse move
        field->setStyleSheet(style);
    label->setEnabled(selected > 0);
    field->setEnabled(selected > 0);
    field->setValue(value);
}
} // namespace

void kxAnimCurveEditor::frameCurves()
{
    _graphView->frameAll();
}

void kxAnimCurveEditor::setTangentType(unsigned int type)
{
    _graphView->setTangentType(type);
}

void kxAnimCurveEditor::constantTangents()
{
    setTangentType(osg::TangentType::Constant);
}

void kxAnimCurveEditor::linearTangents()
{
    setTangentType(osg::TangentType::Linear);
}

void kxAnimCurveEditor::flatTangents()
{
    setTangentType(osg::TangentType::Flat);
}

void kxAnimCurveEditor::hermiteTangents()
{
    setTangentType(osg::TangentType::Hermite);
}

void kxAnimCurveEditor::followingTangents()
{
    setTangentType(osg::TangentType::Following);
}

void kxAnimCurveEditor::copySelectedControlPoints()
{
    if (scene() != nullptr)
        scene()->copySelectedPoints();
}

void kxAnimCurveEditor::pasteControlPoints()
{
    if (_graphView != nullptr)
        _graphView->paste();
}

void kxAnimCurveEditor::copy()
{
    const QWidget* const focus = _window->focusWidget();
    if (focus == nullptr)
        return;
    if (focus == _library)
        _library->copy();
    else if (focus == _graphView)
        copySelectedControlPoints();
    else if (focus == _channels)
        _channels->copy();
}

void kxAnimCurveEditor::paste()
{
    const QWidget* const focus = _window->focusWidget();
    if (focus == nullptr)
        return;
    if (focus == _library)
        _library->paste(true);
    else if (focus == _graphView)
        pasteControlPoints();
    else if (focus == _channels)
        _channels->paste(true);
}

void kxAnimCurveEditor::changedPreInfinityMode(QAction* action)
{
    setInfinityOfSelectedBlocks(*_library, kxInfinityModes::Side::Pre, action);
}

void kxAnimCurveEditor::changedPostInfinityMode(QAction* action)
{
    setInfinityOfSelectedBlocks(*_library, kxInfinityModes::Side::Post, action);
}

void kxAnimCurveEditor::explainCreateBlock()
{
    if (_library->selectedItems().isEmpty())
        notice(tr("No block was made: select an object in the library first."));
}

void kxAnimCurveEditor::updateFrameAndValue()
{
    if (scene() == nullptr)
        return;
    const kxAnimGraphPoint* const last = scene()->lastSelectedPoint();
    const QPointF shown = last != nullptr ? last->pos() : QPointF();
    const int selected = scene()->selectedCount(); // a drag comes here once for each of its curves
    ::show(_window->_frame, _window->_frameLabel, selected, shown.x());
    ::show(_window->_value, _window->_valueLabel, selected, shown.y());
    updateStatus();
}

bool kxAnimCurveEditor::modifyKeys(Axis axis, RelativeOperator op, double value)
{
    QList<kxAnimGraphPoint*> points;
    scene()->selectedPoints(points);
    std::vector<double> present;
    for (const kxAnimGraphPoint* const point : points)
        present.push_back(axis == Axis::Frame ? point->pos().x() : point->pos().y());
    const std::optional<std::vector<double>> targets = kxAppliedToAll(present, op, value);
    if (!targets)
        return false;
    {
        const kxAnimJointMove move(points);
        for (int i = 0; i < points.size(); ++i)
        {
            const double target = (*targets)[std::size_t(i)];
            points[i]->setKeyPos(axis == Axis::Frame ? target : points[i]->pos().x(),
                                 axis == Axis::Value ? target : points[i]->pos().y());
        }
    }
    if (!points.isEmpty())
        scene()->moveSelectedPoints();
    return true;
}

void kxAnimCurveEditor::modifiedFrameValues(RelativeOperator op, double value)
{
    if (scene() == nullptr)
        return;
    if (!modifyKeys(Axis::Frame, op, value))
        notice(tr("No key was moved: the result is no frame that a key can stand on."));
    updateFrameAndValue();
    _graphView->announceNodes();
    kxSend(kxMessageName::UpdateClipScene);
}

void kxAnimCurveEditor::modifiedCurveValues(RelativeOperator op, double value)
{
    if (scene() == nullptr)
        return;
    if (!modifyKeys(Axis::Value, op, value))
        notice(tr("No key was changed: the result is no value that a key can hold."));
    updateFrameAndValue();
}

void kxAnimCurveEditor::updateCurveMenu()
{
    QList<kxAnimTreeWidgetItem*> items;
    for (QTreeWidgetItem* const item : _library->selectedItems())
        if (auto* const row = dynamic_cast<kxAnimTreeWidgetItem*>(item))
            items.append(row);
    if (items.isEmpty())
        _channels->collectSelectedTopLevelItems(items);
    const bool areAnimations = !items.isEmpty() && std::all_of(items.begin(), items.end(), isAnimationRow);
    _preInfinityMenu->setEnabled(areAnimations);
    _postInfinityMenu->setEnabled(areAnimations);
}

void kxAnimCurveEditor::updateEditMenu()
{
    const QList<QTreeWidgetItem*> items = _library->selectedItems();
    const auto* const row = items.size() == 1 ? dynamic_cast<kxAnimTreeWidgetItem*>(items.front()) : nullptr;
    _saveAction->setEnabled(row != nullptr && !row->isGroup());
}

void kxAnimCurveEditor::notice(QString text)
{
    _window->statusbar->showMessage(text, NoticeMilliseconds);
}

void kxAnimCurveEditor::updateStatus()
{
    QStringList texts;
    if (_tooManyObjects)
        texts << tr("More than %1 objects are selected: none is shown").arg(kxAnimChannelWidget::ObjectLimit);
    if (_tooManyRows)
        texts << tr("More than %1 rows are selected: no curve is shown").arg(kxAnimChannelWidget::ObjectLimit);
    if (_onlyBlocks)
        texts << tr("All curves are in blocks: select a block to see its curves");
    if (scene() != nullptr)
    {
        if (hasLockedKeys(*scene()))
            texts << tr("Keys are locked");
        if (scene()->breakTangents())
            texts << tr("Tangents are broken");
        if (scene()->snapToGridX() && scene()->snapToGridY())
            texts << tr("Snapping to whole frames and values");
        else if (scene()->snapToGridX())
            texts << tr("Snapping to whole frames");
        else if (scene()->snapToGridY())
            texts << tr("Snapping to whole values");
    }
    _status->setText(texts.join(QStringLiteral("  \u00b7  ")));
}
