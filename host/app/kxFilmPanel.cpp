#include "kxFilmPanel.h"

#include <QKXSpiner.h>
#include <journal/kxHistory.h>
#include <kxIconManager.h>
#include <kxPlatform.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <panels/kxEmptyHint.h>
#include <scene/kxScene.h>

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
QString stepText(const char* text)
{
    return kxUndoString(QString::fromLatin1(text), QStringLiteral("Scenery"));
}

QHBoxLayout* addRow(QVBoxLayout* layout)
{
    auto* const row = new QHBoxLayout;
    row->setContentsMargins(4, 3, 4, 0);
    row->setSpacing(2);
    layout->addLayout(row);
    return row;
}
} // namespace

kxFilmPanel::kxFilmPanel(kxSceneryStage* stage, QWidget* parent)
    : QWidget(parent), _player(stage), _source(new QComboBox(this)), _slider(new QSlider(Qt::Horizontal, this)),
      _markers(new QTreeWidget(this))
{
    setObjectName(QStringLiteral("_film"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    QHBoxLayout* const top = addRow(layout);
    _source->setObjectName(QStringLiteral("_filmSource"));
    _source->setAccessibleName(tr("What is played"));
    _source->view()->setAccessibleName(_source->accessibleName());
    _source->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    _source->setMinimumContentsLength(10);
    top->addWidget(_source, 1);
    _loop = add(top, tr("Loop"), QStringLiteral("Loop"), QStringLiteral("_filmLoop"), nullptr);
    _loop->setCheckable(true);
    QAction* const full =
        add(top, tr("Full Screen (F11)"), QStringLiteral("FullScreen"), QStringLiteral("_filmFullScreen"), nullptr);
    connect(full, &QAction::triggered, this, &kxFilmPanel::fullScreenAsked);

    QHBoxLayout* const transport = addRow(layout);
    add(transport, tr("To the Beginning"), QStringLiteral("JumpStart"), QStringLiteral("_filmStart"),
        &kxFilmPanel::toStart);
    _play = add(transport, tr("Play"), QStringLiteral("Play"), QStringLiteral("_filmPlay"), &kxFilmPanel::togglePlay);
    _play->setShortcut(Qt::Key_Space);
    _play->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(_play);
    QAction* const stop =
        add(transport, tr("Stop Everything That Plays"), QStringLiteral("Stop"), QStringLiteral("_filmStop"), nullptr);
    connect(stop, &QAction::triggered, &_player, &kxFilmPlayer::stop);
    add(transport, tr("To the End"), QStringLiteral("JumpEnd"), QStringLiteral("_filmEnd"), &kxFilmPanel::toEnd);
    transport->addStretch(1);
    _frame = addField(transport, tr("Frame"), QStringLiteral("_filmFrame"));
    QHBoxLayout* const range = addRow(layout);
    _in = addField(range, tr("In"), QStringLiteral("_filmIn"));
    _slider->setObjectName(QStringLiteral("_filmSlider"));
    _slider->setAccessibleName(tr("Frame of the film"));
    range->addWidget(_slider, 1);
    _out = addField(range, tr("Out"), QStringLiteral("_filmOut"));
    makeMarkers();
    layout->addWidget(_markers, 1);
    QHBoxLayout* const below = addRow(layout);
    add(below, tr("Add Marker"), QStringLiteral("Add"), QStringLiteral("_addMarker"), &kxFilmPanel::addMarker);
    add(below, tr("Previous Marker"), QStringLiteral("style/arrowUp"), QStringLiteral("_previousMarker"),
        &kxFilmPanel::toPreviousMarker);
    add(below, tr("Next Marker"), QStringLiteral("style/arrowDown"), QStringLiteral("_nextMarker"),
        &kxFilmPanel::toNextMarker);
    below->addStretch(1);
    _removeMarkers = add(below, tr("Delete Markers"), QStringLiteral("Delete"), QStringLiteral("_deleteMarkers"),
                         &kxFilmPanel::removeMarkers);
    _removeMarkers->setShortcut(QKeySequence::Delete);
    _removeMarkers->setShortcutContext(Qt::WidgetShortcut);
    _markers->addAction(_removeMarkers);

    connect(_source, QOverload<int>::of(&QComboBox::activated), this, &kxFilmPanel::chooseSource);
    connect(_loop, &QAction::toggled, &_player, &kxFilmPlayer::setLooping);
    connect(_slider, &QSlider::valueChanged, this, [this](int value) { _player.goTo(value); });
    connect(_frame, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) { _player.goTo(value); });
    connect(_frame, &QSpinBox::editingFinished, this, &kxFilmPanel::confirmFrame);
    const auto setRange = [this] { _player.setRange(_in->value(), _out->value()); };
    connect(_in, QOverload<int>::of(&QSpinBox::valueChanged), this, setRange);
    connect(_out, QOverload<int>::of(&QSpinBox::valueChanged), this, setRange);
    connect(&_player, &kxFilmPlayer::changed, this, &kxFilmPanel::update);
    connect(&_player, &kxFilmPlayer::frameChanged, this, &kxFilmPanel::showFrame);
    // Clips are no part of the scene's structure.
    connect(&kxHistory::the(), &kxHistory::changed, this, &kxFilmPanel::fillSources);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxFilmPanel::fillSources);
    connect(kxScene::the(), &kxScene::settingsChanged, this, &kxFilmPanel::fillMarkers);
    connect(kxScene::the(), &kxScene::settingsChanged, &_player, &kxFilmPlayer::refresh);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxFilmPanel::fillMarkers);
    fillSources();
    fillMarkers();
}

kxFilmPanel::~kxFilmPanel()
{
    // A field loses the focus when the base deletes it, and this panel is gone then.
    for (QKXSpiner* const field : {_frame, _in, _out})
        field->disconnect(this);
}

QAction* kxFilmPanel::add(QHBoxLayout* row, const QString& text, const QString& icon, const QString& name,
                          void (kxFilmPanel::*slot)())
{
    auto* const action = new QAction(kxIconManager::getIcon(icon, QString()), text, this);
    action->setObjectName(name + QStringLiteral("Action"));
    if (slot != nullptr)
        connect(action, &QAction::triggered, this, slot);
    auto* const button = new QToolButton(this);
    button->setObjectName(name);
    button->setAutoRaise(true);
    button->setIconSize(QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
    button->setDefaultAction(action);
    connect(button, &QToolButton::pressed, this, &kxFilmPanel::leaveField);
    row->addWidget(button);
    return action;
}

QKXSpiner* kxFilmPanel::addField(QHBoxLayout* row, const QString& text, const QString& name)
{
    auto* const label = new QLabel(text, this);
    auto* const field = new QKXSpiner(this);
    field->setObjectName(name);
    field->setAccessibleName(text);
    field->setRange(-kxRenderSource::LargestFrame, kxRenderSource::LargestFrame);
    field->setKeyboardTracking(false);
    row->addWidget(label);
    row->addWidget(field);
    field->installEventFilter(this);
    return field;
}

bool kxFilmPanel::eventFilter(QObject* watched, QEvent* event)
{
    auto* const field = qobject_cast<QKXSpiner*>(watched);
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    const int key = field != nullptr && isKey ? static_cast<QKeyEvent*>(event)->key() : 0;
    if (key == Qt::Key_Space && event->type() == QEvent::ShortcutOverride)
    {
        field->interpretText();
        event->ignore(); // no character of a number: it plays, as in the rest of the dock
        return true;
    }
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && event->type() == QEvent::KeyPress)
        QMetaObject::invokeMethod(this, &kxFilmPanel::leaveField, Qt::QueuedConnection); // once the field has taken it
    return QWidget::eventFilter(watched, event);
}

void kxFilmPanel::leaveField()
{
    if (isAncestorOf(QApplication::focusWidget()) && qobject_cast<QKXSpiner*>(QApplication::focusWidget()) != nullptr)
        setFocus();
}

void kxFilmPanel::makeMarkers()
{
    _markers->setObjectName(QStringLiteral("_markerList"));
    _markers->setAccessibleName(tr("Markers"));
    _markers->setHeaderLabels({tr("Frame"), tr("Marker")});
    _markers->setRootIsDecorated(false);
    _markers->setMinimumHeight(20); // the smallest screens have little room
    _markers->setUniformRowHeights(true);
    _markers->setFrameShape(QFrame::NoFrame);
    _markers->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _markers->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    _markers->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    new kxEmptyHint(tr("No markers.\n\nThe plus below names the frame that is shown."), _markers);
    connect(_markers, &QTreeWidget::itemChanged, this, &kxFilmPanel::changeMarker);
    connect(_markers, &QTreeWidget::itemDoubleClicked, this, &kxFilmPanel::goToMarker);
    connect(_markers, &QTreeWidget::itemSelectionChanged, this, &kxFilmPanel::update);
}

void kxFilmPanel::fillSources()
{
    std::vector<Source> clips;
    for (const kxRenderSource::Clip& clip : kxRenderSource::clips())
        clips.push_back({clip.node->getId(), QString(4 * clip.depth, QLatin1Char(' ')) + clip.name});
    if (clips == _clips && _source->count() != 0)
    {
        _player.refresh();
        return;
    }
    const auto isListed = [this](const Source& clip)
    {
        return std::any_of(_clips.begin(), _clips.end(),
                           [&clip](const Source& listed) { return listed.clipId == clip.clipId; });
    };
    // In another scene the film is its first clip, until another one is chosen.
    const bool isAnother = !clips.empty() && std::none_of(clips.begin(), clips.end(), isListed);
    const osg::UInt32 shown = isAnother ? clips.front().clipId : _player.clip().getFieldContainerId();
    _clips = std::move(clips);
    const QSignalBlocker quiet(_source);
    _source->clear();
    _source->addItem(tr("Timeline"));
    int current = 0;
    for (const Source& clip : _clips)
    {
        if (clip.clipId == shown)
            current = _source->count();
        _source->addItem(clip.text);
    }
    _source->setCurrentIndex(current);
    if (_player.clip().getFieldContainerId() != shown)
        chooseSource(current);
    _player.refresh();
}

void kxFilmPanel::chooseSource(int index)
{
    _player.setClip(index > 0 ? osg::living<osg::AnimNode>(_clips[std::size_t(index) - 1].clipId) : osg::AnimNodePtr());
}

void kxFilmPanel::update()
{
    const QSignalBlocker quietSlider(_slider), quietIn(_in), quietOut(_out), quietLoop(_loop);
    const kxRenderSource::Range range = _player.range();
    _in->setValue(range.first);
    _out->setValue(range.last);
    _slider->setRange(range.first, range.last);
    _loop->setChecked(_player.isLooping());
    const bool isPlaying = _player.isPlaying();
    _play->setText(isPlaying ? tr("Pause") : tr("Play"));
    _play->setIcon(kxIconManager::getIcon(isPlaying ? QStringLiteral("Pause") : QStringLiteral("Play"), QString()));
    if (_removeMarkers != nullptr)
        _removeMarkers->setEnabled(!_markers->selectedItems().isEmpty());
    showFrame(_player.frame());
}

void kxFilmPanel::showFrame(double frame)
{
    const QSignalBlocker quietSlider(_slider), quietFrame(_frame);
    _slider->setValue(int(frame));
    _frame->setValue(int(frame));
}

void kxFilmPanel::confirmFrame()
{
    // Enter on the number that stands there: something else may be on the screen.
    if (_frame->hasFocus() && !_player.isPlaying())
        _player.goTo(_frame->value());
}

void kxFilmPanel::togglePlay()
{
    if (_player.isPlaying())
        _player.stop();
    else
        _player.play();
}

void kxFilmPanel::toStart()
{
    _player.goTo(_player.range().first);
}

void kxFilmPanel::toEnd()
{
    _player.goTo(_player.range().last);
}

void kxFilmPanel::toPreviousMarker()
{
    if (const kxFilmMarkers::Marker* const marker = kxFilmMarkers::next(_shownMarkers, _player.frame(), false))
        _player.goTo(marker->frame);
}

void kxFilmPanel::toNextMarker()
{
    if (const kxFilmMarkers::Marker* const marker = kxFilmMarkers::next(_shownMarkers, _player.frame(), true))
        _player.goTo(marker->frame);
}

void kxFilmPanel::addMarker()
{
    std::vector<kxFilmMarkers::Marker> markers = _shownMarkers;
    const QString name = tr("Marker %1").arg(markers.size() + 1);
    markers.push_back({int(_player.frame()), name});
    kxFilmMarkers::set(markers, stepText("Add Marker: '%1', frame %2").arg(name).arg(int(_player.frame())));
}

void kxFilmPanel::removeMarkers()
{
    std::vector<kxFilmMarkers::Marker> markers;
    for (int i = 0; i < _markers->topLevelItemCount(); ++i)
        if (!_markers->topLevelItem(i)->isSelected())
            markers.push_back(_shownMarkers[std::size_t(i)]);
    if (markers.size() != _shownMarkers.size())
        kxFilmMarkers::set(markers, stepText("Delete Markers"));
}

void kxFilmPanel::changeMarker(QTreeWidgetItem* row)
{
    const int index = _markers->indexOfTopLevelItem(row);
    if (index < 0)
        return;
    std::vector<kxFilmMarkers::Marker> markers = _shownMarkers;
    kxFilmMarkers::Marker& marker = markers[std::size_t(index)];
    bool isNumber = false;
    const int frame = row->text(0).toInt(&isNumber);
    if (isNumber && std::abs(frame) <= kxRenderSource::LargestFrame)
        marker.frame = frame;
    if (!row->text(1).trimmed().isEmpty())
        marker.name = row->text(1).trimmed();
    kxFilmMarkers::set(markers, stepText("Change Marker: '%1', frame %2").arg(marker.name).arg(marker.frame));
    // Also where nothing came of what was typed; not while the row tells of itself.
    QMetaObject::invokeMethod(this, &kxFilmPanel::fillMarkers, Qt::QueuedConnection);
}

void kxFilmPanel::goToMarker(QTreeWidgetItem* row)
{
    const int index = _markers->indexOfTopLevelItem(row);
    if (index >= 0)
        _player.goTo(_shownMarkers[std::size_t(index)].frame);
}

void kxFilmPanel::fillMarkers()
{
    _shownMarkers = kxFilmMarkers::all();
    const QSignalBlocker quiet(_markers);
    _markers->clear();
    for (const kxFilmMarkers::Marker& marker : _shownMarkers)
    {
        auto* const row = new QTreeWidgetItem(_markers, {QString::number(marker.frame), marker.name});
        row->setFlags(row->flags() | Qt::ItemIsEditable);
        row->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
    }
    update();
}
