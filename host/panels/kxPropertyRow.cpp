#include "kxPropertyRow.h"

#include "kxColorButton.h"

#include <QKXSpiner.h>
#include <animation/kxAnimEngine.h>
#include <edits/kxSceneEdits.h>
#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <scene/kxScene.h>
#include <widgets/kxColors.h>

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
/// Text in the colour of what animations drive.
void markDriven(QWidget* widget, bool driven, const QString& toolTip)
{
    widget->setProperty("driven", driven);
    // By a sheet of its own: the application's would win over a palette.
    widget->setStyleSheet(driven ? QStringLiteral("color: %1;").arg(kxColors::accent().name()) : QString());
    widget->setToolTip(driven ? toolTip + QLatin1Char('\n') +
                                    kxPropertyRow::tr("Driven by an animation: the next frame writes it again. Set a "
                                                      "key to keep a value.")
                              : toolTip);
}

/// Several values: the first one's is shown.
void setDiffers(QWidget* widget, bool differs)
{
    QFont font = widget->font();
    if (font.italic() == differs)
        return;
    font.setItalic(differs);
    widget->setFont(font);
}

QHBoxLayout* rowLayout(QWidget* row)
{
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    return layout;
}
} // namespace

kxPropertyRow* kxPropertyRow::make(const std::vector<osg::FieldContainerPtr>& containers,
                                   const osg::FieldDescription& field)
{
    const kxFieldLook look = kxFieldLook::of(field.name());
    if (!look.shown || containers.empty())
        return nullptr;
    const osg::FieldValue value = field.value(*containers.front());
    if (std::holds_alternative<bool>(value))
        return new kxCheckRow(containers, field);
    if (!look.choices.isEmpty())
        return new kxChoiceRow(containers, field, false);
    if (field.name() == "material")
        return new kxChoiceRow(containers, field, true);
    if (field.isAnimatable() || std::holds_alternative<float>(value))
        return new kxNumberRow(containers, field);
    return nullptr;
}

kxPropertyRow::kxPropertyRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field)
    : _look(kxFieldLook::of(field.name())), _field(field.name())
{
    setObjectName(QString::fromStdString(field.name()));
    for (const osg::FieldContainerPtr& container : containers)
        _ids.push_back(container.getFieldContainerId());
}

std::vector<osg::FieldContainerPtr> kxPropertyRow::containers() const
{
    std::vector<osg::FieldContainerPtr> living;
    for (const unsigned int id : _ids)
    {
        const osg::FieldContainerPtr container = osg::FieldContainerFactory::the()->getContainer(id);
        if (container != osg::NullFC)
            living.push_back(container);
    }
    return living;
}

osg::FieldContainerPtr kxPropertyRow::first() const
{
    const auto living = containers();
    return living.empty() ? osg::FieldContainerPtr() : living.front();
}

const osg::FieldDescription* kxPropertyRow::description() const
{
    const osg::FieldContainerPtr container = first();
    return container == osg::NullFC ? nullptr : container->getType().field(_field);
}

osg::FieldValue kxPropertyRow::value() const
{
    const osg::FieldDescription* const field = description();
    return field == nullptr ? osg::FieldValue() : field->value(*first());
}

void kxPropertyRow::write(const osg::FieldValue& value)
{
    kxSceneEdits::setField(containers(), _field, value);
    refresh();
}

void kxPropertyRow::updateDriven()
{
    const osg::FieldDescription* const own = description();
    std::set<unsigned> driven;
    for (unsigned i = 0; own != nullptr && own->isAnimatable() && i < own->components(); ++i)
        for (const osg::FieldContainerPtr& container : containers())
        {
            // What is driven has a value of its own beside the one that it shows.
            float rest = 0;
            if (kxAnimEngine::of(*kxAnimManager::the()).rest.get(container->getId(), _field, i, rest))
                driven.insert(i);
        }
    if (driven == _driven)
        return;
    _driven = driven;
    setDriven(driven);
}

void kxPropertyRow::setDriven(const std::set<unsigned>&) {}

kxNumberRow::kxNumberRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field)
    : kxPropertyRow(containers, field), _suffixes(field.suffixes())
{
    rowLayout(this);
    if (_suffixes == std::vector<std::string>{"R", "G", "B"})
    {
        _color = new kxColorButton(this);
        _color->setAccessibleName(label());
        layout()->addWidget(_color);
        connect(_color, &kxColorButton::colorPicked, this,
                [this](const osg::Vec3f& linear) { write(osg::FieldValue(linear)); });
    }
    if (_suffixes.empty())
        _suffixes = {""};
    for (unsigned i = 0; i < _suffixes.size(); ++i)
        addSpinner(i, field);
    refresh();
}

void kxNumberRow::addSpinner(unsigned component, const osg::FieldDescription& field)
{
    auto* const spinner = new QKXDoubleSpiner(this);
    const QString axis = QString::fromStdString(_suffixes[component]);
    spinner->setObjectName(QString::fromStdString(field.name()) + axis);
    spinner->setAccessibleName(axis.isEmpty() ? label() : label() + QLatin1Char(' ') + axis);
    spinner->setToolTip(spinner->accessibleName());
    spinner->setDecimals(_look.decimals);
    spinner->setSingleStep(_look.step);
    spinner->setSuffix(_look.unit);
    spinner->setRange(double(field.minimum()), double(field.maximum()));
    spinner->setMinimumWidth(46);
    spinner->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    // Three in a row have no room for arrows; the wheel and the arrow keys step.
    if (_suffixes.size() > 1)
        spinner->setButtonSymbols(QAbstractSpinBox::NoButtons);
    spinner->setRelativeOperatorHandlingMode(1);
    connect(spinner, &QKXDoubleSpiner::relativeOperatorApplied, this,
            [this, component](RelativeOperator op, double operand)
            {
                const osg::FieldDescription* const own = description();
                if (own != nullptr && own->isAnimatable())
                    kxSceneEdits::setComponent(containers(), this->field(), component, op, operand);
                else if (own != nullptr)
                {
                    double result = double(number(first(), component));
                    if (QKXDoubleSpiner::applyRelative(op, operand, result))
                        kxSceneEdits::setNumber(containers(), this->field(),
                                                std::clamp(float(result), own->minimum(), own->maximum()));
                }
                refresh();
            });
    layout()->addWidget(spinner);
    static_cast<QHBoxLayout*>(layout())->setStretchFactor(spinner, 1);
    _spinners.push_back(spinner);
}

float kxNumberRow::number(const osg::FieldContainerPtr& container, unsigned component) const
{
    const osg::FieldDescription* const own = container->getType().field(field());
    if (own->isAnimatable())
        return own->component(*container, component);
    const osg::FieldValue whole = own->value(*container);
    const float* const single = std::get_if<float>(&whole);
    return single == nullptr ? 0.0f : *single;
}

void kxNumberRow::refresh()
{
    const auto all = containers();
    if (all.empty())
        return;
    for (unsigned i = 0; i < _spinners.size(); ++i)
    {
        QKXDoubleSpiner* const spinner = _spinners[i];
        const float shown = number(all.front(), i);
        const bool differs =
            std::any_of(all.begin(), all.end(), [&](const auto& other) { return number(other, i) != shown; });
        setDiffers(spinner, differs);
        const auto* const edit = spinner->findChild<QLineEdit*>();
        if (spinner->hasFocus() && edit != nullptr && edit->isModified())
            continue;
        const QSignalBlocker blocker(spinner);
        spinner->setValue(double(shown));
    }
    if (_color != nullptr && _spinners.size() == 3)
        _color->setColor(osg::Vec3f(number(all.front(), 0), number(all.front(), 1), number(all.front(), 2)));
}

void kxNumberRow::setDriven(const std::set<unsigned>& components)
{
    for (unsigned i = 0; i < _spinners.size(); ++i)
        markDriven(_spinners[i], components.count(i) != 0, _spinners[i]->accessibleName());
}

kxCheckRow::kxCheckRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field)
    : kxPropertyRow(containers, field), _box(new QCheckBox(this))
{
    rowLayout(this)->addWidget(_box);
    _box->setObjectName(QString::fromStdString(field.name()) + QStringLiteral("Box"));
    _box->setAccessibleName(label());
    connect(_box, &QCheckBox::clicked, this, [this](bool checked) { write(osg::FieldValue(checked)); });
    refresh();
}

void kxCheckRow::refresh()
{
    const osg::FieldDescription* const own = description();
    if (own == nullptr)
        return;
    const osg::FieldValue shown = own->value(*first());
    const auto all = containers();
    const bool mixed = std::any_of(all.begin(), all.end(),
                                   [&](const osg::FieldContainerPtr& other)
                                   { return std::get<bool>(own->value(*other)) != std::get<bool>(shown); });
    const QSignalBlocker blocker(_box);
    _box->setCheckState(mixed ? Qt::PartiallyChecked : std::get<bool>(shown) ? Qt::Checked : Qt::Unchecked);
    _box->setTristate(mixed); // a click never leads back to it
}

void kxCheckRow::setDriven(const std::set<unsigned>& components)
{
    markDriven(_box, !components.empty(), label());
    _box->setText(components.empty() ? QString() : tr("animated"));
}

kxChoiceRow::kxChoiceRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field,
                         bool materials)
    : kxPropertyRow(containers, field), _materials(materials), _box(new QComboBox(this))
{
    rowLayout(this)->addWidget(_box);
    _box->setObjectName(QString::fromStdString(field.name()) + QStringLiteral("Box"));
    _box->setAccessibleName(label());
    _box->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    if (!_materials)
        _box->addItems(_look.choices);
    connect(_box, QOverload<int>::of(&QComboBox::activated), this,
            [this](int index)
            {
                if (!_materials)
                    return write(osg::FieldValue(osg::UInt32(index)));
                const unsigned int id = _box->itemData(index).toUInt();
                write(osg::FieldValue(osg::FieldContainerFactory::the()->getContainer(id)));
            });
    refresh();
}

void kxChoiceRow::fillMaterials()
{
    const auto& materials = kxScene::the()->materials();
    bool same = _box->count() == int(materials.size()) + 1;
    for (std::size_t i = 0; same && i < materials.size(); ++i)
        same = _box->itemData(int(i) + 1).toUInt() == materials[i].getFieldContainerId() &&
               _box->itemText(int(i) + 1) == QString::fromStdString(kxMaterials::getName(materials[i]));
    if (same)
        return;
    _box->clear();
    _box->addItem(tr("None"), 0u);
    for (const osg::MaterialPtr& material : materials)
        _box->addItem(kxScenegraph::getMaterialIcon(material), QString::fromStdString(kxMaterials::getName(material)),
                      material.getFieldContainerId());
}

void kxChoiceRow::refresh()
{
    const QSignalBlocker blocker(_box);
    const osg::FieldValue shown = value();
    if (_materials)
    {
        fillMaterials();
        const auto* const reference = std::get_if<osg::FieldContainerPtr>(&shown);
        _box->setCurrentIndex(reference == nullptr ? 0 : _box->findData(reference->getFieldContainerId()));
        if (reference != nullptr && *reference != osg::NullFC) // it may have another colour now
            _box->setItemIcon(_box->currentIndex(), kxScenegraph::getMaterialIcon(osg::MaterialPtr::dcast(*reference)));
    }
    else if (const auto* const number = std::get_if<osg::UInt32>(&shown))
        _box->setCurrentIndex(int(*number));
    const auto all = containers();
    setDiffers(_box,
               std::any_of(all.begin(), all.end(),
                           [&](const osg::FieldContainerPtr& other) { return description()->value(*other) != shown; }));
}
