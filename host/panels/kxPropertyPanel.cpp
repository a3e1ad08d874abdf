#include "kxPropertyPanel.h"

#include "kxPropertyRow.h"

#include <QKXCollapsibleFrame.h>
#include <edits/kxSceneEdits.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <widgets/kxColors.h>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
const osg::FieldContainerType* commonType(const std::vector<osg::FieldContainerPtr>& containers)
{
    const osg::FieldContainerType* type = &containers.front()->getType();
    for (const osg::FieldContainerPtr& container : containers)
        while (!container->getType().isDerivedFrom(*type))
            type = type->getParent();
    return type;
}

/// The fields that `type` adds to its parent's.
std::vector<const osg::FieldDescription*> ownFields(const osg::FieldContainerType& type)
{
    std::vector<const osg::FieldDescription*> own;
    for (const osg::FieldDescription& field : type.fields())
        if (type.getParent() == nullptr || type.getParent()->field(field.name()) == nullptr)
            own.push_back(&field);
    return own;
}

QString titleOf(const osg::FieldContainerType& type)
{
    const std::string name = type.getName();
    if (name == "Geometry")
        return kxPropertyPanel::tr("Surface");
    if (name == "UberMaterial")
        return kxPropertyPanel::tr("Material");
    return kxFieldLook::words(name);
}
} // namespace

kxPropertyPanel::kxPropertyPanel(QWidget* parent)
    : QWidget(parent), _scroll(new QScrollArea(this)),
      _hint(new QLabel(tr("Select an object in the view or in the tree, or a material, to see its values."), this))
{
    setObjectName(QStringLiteral("_properties"));
    _scroll->setWidgetResizable(true);
    _scroll->setFrameShape(QFrame::NoFrame);
    _scroll->setFocusPolicy(Qt::NoFocus); // it follows the field with the focus
    _scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    _hint->setAlignment(Qt::AlignCenter);
    _hint->setWordWrap(true);
    _hint->setContentsMargins(16, 16, 16, 16);
    QPalette colors = _hint->palette();
    colors.setColor(QPalette::WindowText, kxColors::disabledText());
    _hint->setPalette(colors);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_hint);
    layout->addWidget(_scroll);

    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, [this] { showKind(kxSelection::Nodes); });
    connect(&kxSelection::the(), &kxSelection::materialsChanged, this, [this] { showKind(kxSelection::Materials); });
    connect(&kxSelection::the(), &kxSelection::selectedAgain, this,
            [this](kxSelection::Kind kind)
            {
                if (kind != _kind)
                    showKind(kind);
            });
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxPropertyPanel::follow);
    connect(kxScene::the(), &kxScene::appearanceChanged, this, &kxPropertyPanel::refresh);
    connect(&kxAnimationService::the(), &kxAnimationService::changed, this, &kxPropertyPanel::markDriven);
    _rebuild.setSingleShot(true);
    _rebuild.setInterval(0);
    connect(&_rebuild, &QTimer::timeout, this,
            [this]
            {
                if (isVisible() && _stale)
                    rebuild();
            });
    rebuild();
}

kxPropertyPanel::~kxPropertyPanel()
{
    if (_name != nullptr)
        _name->disconnect(this); // it loses the focus when the base deletes it, and this panel is gone then
}

void kxPropertyPanel::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (_stale)
        rebuild();
    else
        refresh();
}

void kxPropertyPanel::showKind(kxSelection::Kind kind)
{
    // An empty selection of the other kind hides nothing.
    if (kind != _kind && kxSelection::the().ids(kind).empty())
        return;
    _kind = kind;
    rebuildLater();
}

/// A script may select thousands of times before anyone sees the panel, and what an event loop's own turn replaces is
/// deleted by the next, also where a script turns it.
void kxPropertyPanel::rebuildLater()
{
    _stale = true;
    if (!_rebuild.isActive())
        _rebuild.start();
}

std::vector<unsigned int> kxPropertyPanel::parts() const
{
    std::vector<unsigned int> ids = kxSelection::the().ids(_kind);
    if (_kind == kxSelection::Materials)
        return ids;
    for (const osg::NodePtr& node : kxSelection::the().nodes())
    {
        ids.push_back(node->getCore().getFieldContainerId());
        const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
        if (geometry != osg::NullFC)
            ids.push_back(geometry->getMaterial().getFieldContainerId());
    }
    return ids;
}

void kxPropertyPanel::follow()
{
    if (!isVisible())
        _stale = true;
    else if (parts() != _parts)
        rebuildLater();
    else
        refresh();
}

void kxPropertyPanel::refresh()
{
    if (!isVisible() || _stale)
        return;
    if (_kind == kxSelection::Nodes && parts() != _parts)
        return rebuildLater(); // another material, say
    for (kxPropertyRow* const row : _rows)
        row->refresh();
    markDriven();
    if (_name != nullptr && !_name->isModified() && !_named.empty())
    {
        const auto named = osg::living<osg::AttachmentContainer>(_named.front());
        if (named != osg::NullFC)
            _name->setText(QString::fromStdString(named->getNodeName()));
    }
}

void kxPropertyPanel::rebuild()
{
    _stale = false;
    _rows.clear();
    _name = nullptr;
    _named.clear();
    _parts = parts();
    auto* const page = new QWidget;
    auto* const layout = new QVBoxLayout(page);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(4);
    const auto nodes = kxSelection::the().nodes();
    const auto materials = kxSelection::the().materials();
    const bool empty = _kind == kxSelection::Nodes ? nodes.empty() : materials.empty();
    if (_kind == kxSelection::Nodes && !empty)
        fillNodes(nodes, page);
    else if (!empty)
    {
        const Containers all(materials.begin(), materials.end());
        addHead(all, tr("%n materials", nullptr, int(all.size())), kxScenegraph::getMaterialIcon(materials.front()),
                page);
        addSections(all, QString(), page);
    }
    layout->addStretch(1);
    QKXCollapsibleFrame::fixLayouts(page, fontMetrics().horizontalAdvance(QStringLiteral("Field of view___")), nullptr);
    const int kept = _scroll->verticalScrollBar()->value();
    // A row may be on the stack: an edit of its own can lead here.
    if (QWidget* const old = _scroll->takeWidget())
    {
        old->hide();
        old->deleteLater();
    }
    _scroll->setWidget(page);
    _scroll->verticalScrollBar()->setValue(kept);
    // There is no scroll bar for the width: whatever became of the window, no field is cut off.
    _scroll->setMinimumWidth(page->minimumSizeHint().width() + _scroll->verticalScrollBar()->sizeHint().width());
    _scroll->setVisible(!empty);
    _hint->setVisible(empty);
    markDriven();
}

void kxPropertyPanel::fillNodes(const std::vector<osg::NodePtr>& nodes, QWidget* page)
{
    const Containers all(nodes.begin(), nodes.end());
    Containers cores, materials;
    for (const osg::NodePtr& node : nodes)
    {
        const osg::NodeCorePtr core = node->getCore();
        if (core != osg::NullFC && std::find(cores.begin(), cores.end(), core) == cores.end())
            cores.push_back(core);
        const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(core);
        const osg::MaterialPtr material = geometry == osg::NullFC ? osg::MaterialPtr() : geometry->getMaterial();
        if (material != osg::NullFC && std::find(materials.begin(), materials.end(), material) == materials.end())
            materials.push_back(material);
    }
    addHead(all, tr("%n objects", nullptr, int(all.size())),
            kxScenegraph::getNodeIcon(nodes.front()->getCore(), nodes.front(), false), page);
    addSection(all, osg::Node::_type, tr("Object"), page);
    if (!cores.empty())
        addSections(cores, QString(), page);
    if (materials.size() == 1)
        addSections(materials, QString::fromStdString(kxMaterials::getName(osg::MaterialPtr::dcast(materials.front()))),
                    page);
}

void kxPropertyPanel::addHead(const Containers& named, const QString& several, const QIcon& icon, QWidget* page)
{
    auto* const head = new QWidget(page);
    auto* const layout = new QHBoxLayout(head);
    layout->setContentsMargins(2, 2, 2, 4);
    auto* const picture = new QLabel(head);
    picture->setPixmap(icon.pixmap(kxPlatform::getMediumIconSize()));
    layout->addWidget(picture);
    if (named.size() > 1)
        layout->addWidget(new QLabel(several, head), 1);
    else
    {
        _named = {named.front().getFieldContainerId()};
        const auto container = osg::AttachmentContainerPtr::dcast(named.front());
        _name = new QLineEdit(QString::fromStdString(container->getNodeName()), head);
        _name->setObjectName(QStringLiteral("_name"));
        _name->setAccessibleName(tr("Name"));
        layout->addWidget(_name, 1);
        connect(_name, &QLineEdit::editingFinished, this,
                [this]
                {
                    if (_name == nullptr || !_name->isModified() || _named.empty())
                        return;
                    _name->setModified(false);
                    kxSceneEdits::rename(osg::living<osg::AttachmentContainer>(_named.front()), _name->text());
                    refresh();
                });
    }
    page->layout()->addWidget(head);
}

void kxPropertyPanel::addSections(const Containers& containers, const QString& suffix, QWidget* page)
{
    std::vector<const osg::FieldContainerType*> types;
    for (const osg::FieldContainerType* type = commonType(containers); type != nullptr; type = type->getParent())
        types.insert(types.begin(), type);
    for (const osg::FieldContainerType* const type : types)
        addSection(containers, *type,
                   suffix.isEmpty() ? titleOf(*type) : titleOf(*type) + QStringLiteral(": ") + suffix, page);
}

void kxPropertyPanel::addSection(const Containers& containers, const osg::FieldContainerType& type,
                                 const QString& title, QWidget* page)
{
    auto* const content = new QWidget;
    auto* const grid = new QGridLayout(content);
    grid->setContentsMargins(6, 4, 4, 6);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    for (const osg::FieldDescription* const field : ownFields(type))
    {
        kxPropertyRow* const row = kxPropertyRow::make(containers, *field);
        if (row == nullptr)
            continue;
        auto* const label = new QLabel(row->label(), content);
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        const int line = grid->rowCount();
        grid->addWidget(label, line, 0);
        grid->addWidget(row, line, 1);
        _rows.push_back(row);
    }
    if (grid->count() == 0)
    {
        delete content;
        return;
    }
    auto* const frame = new QKXCollapsibleFrame(page);
    frame->addPage(content, title);
    page->layout()->addWidget(frame);
}

void kxPropertyPanel::markDriven()
{
    if (_stale || !isVisible())
        return;
    for (kxPropertyRow* const row : _rows)
        row->updateDriven();
}
