#include "kxMaterialModel.h"

#include "kxColorButton.h"

#include <edits/kxSceneEdits.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>
#include <widgets/kxColors.h>

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <map>

namespace
{
osg::Vec3f vectorOf(const osg::Color3f& color)
{
    return osg::Vec3f(color.red(), color.green(), color.blue());
}

/// A ball in the material's look, lit from the upper left: a smooth one has a small bright spot, a metal a coloured
/// one.
QPixmap swatch(const osg::UberMaterialPtr& material, int size)
{
    const qreal ratio = qApp->devicePixelRatio();
    QPixmap pixmap(QSize(size, size) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF ball = QRectF(0, 0, size, size).adjusted(2, 2, -2, -2);
    osg::Vec3f lit = vectorOf(material->getBaseColor()), shade = lit * (material->getMetallic() > 0.5f ? 0.05f : 0.18f);
    lit += vectorOf(material->getEmissive());
    shade += vectorOf(material->getEmissive());
    const float opacity = std::clamp(material->getOpacity(), 0.15f, 1.0f);
    painter.setOpacity(double(opacity));
    QRadialGradient body(ball.topLeft() + QPointF(0.36, 0.32) * ball.width(), ball.width() * 0.75);
    body.setColorAt(0, kxColorButton::toScreen(lit));
    body.setColorAt(0.45, kxColorButton::toScreen(lit * 0.72f + shade * 0.28f));
    body.setColorAt(1, kxColorButton::toScreen(shade));
    painter.setBrush(body);
    painter.drawEllipse(ball);

    const double roughness = double(std::clamp(material->getRoughness(), 0.0f, 1.0f));
    const double spot = ball.width() * (0.12 + 0.35 * roughness);
    const osg::Vec3f white(1, 1, 1);
    QColor shine = kxColorButton::toScreen(material->getMetallic() > 0.5f ? lit * 0.4f + white * 0.6f : white);
    QRadialGradient highlight(ball.topLeft() + QPointF(0.34, 0.28) * ball.width(), spot);
    shine.setAlphaF(0.92 * (1 - 0.85 * roughness));
    highlight.setColorAt(0, shine);
    shine.setAlphaF(0);
    highlight.setColorAt(1, shine);
    painter.setBrush(highlight);
    painter.drawEllipse(ball);
    return pixmap;
}

std::map<unsigned int, unsigned int> countUsers()
{
    std::map<unsigned int, unsigned int> users;
    osg::traverse(kxScene::the()->root(),
                  [&users](const osg::NodePtr& node)
                  {
                      const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
                      if (geometry != osg::NullFC)
                          ++users[geometry->getMaterial().getFieldContainerId()];
                      return osg::Action::Continue;
                  });
    return users;
}
} // namespace

kxMaterialModel::kxMaterialModel(QObject* parent) : QAbstractListModel(parent)
{
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxMaterialModel::sync);
    connect(kxScene::the(), &kxScene::appearanceChanged, this,
            [this]
            {
                if (!_rows.empty())
                    Q_EMIT dataChanged(index(0), index(int(_rows.size()) - 1), {Qt::DecorationRole});
            });
    sync();
}

void kxMaterialModel::sync()
{
    const auto& materials = kxScene::the()->materials();
    const auto idAt = [&materials](std::size_t i) { return materials[i].getFieldContainerId(); };
    // Rows that are gone or are elsewhere go; what is missing comes.
    for (int row = int(_rows.size()) - 1; row >= 0; --row)
    {
        const auto begin = materials.begin(), end = materials.end();
        const unsigned int id = _rows[std::size_t(row)].id;
        if (std::any_of(begin, end, [id](const auto& material) { return material.getFieldContainerId() == id; }))
            continue;
        beginRemoveRows({}, row, row);
        _rows.erase(_rows.begin() + row);
        endRemoveRows();
    }
    for (std::size_t row = 0; row < materials.size(); ++row)
    {
        if (row < _rows.size() && _rows[row].id == idAt(row))
            continue;
        const auto known = std::find_if(_rows.begin() + std::ptrdiff_t(std::min(row, _rows.size())), _rows.end(),
                                        [&](const Row& other) { return other.id == idAt(row); });
        if (known != _rows.end())
        {
            beginMoveRows({}, int(known - _rows.begin()), int(known - _rows.begin()), {}, int(row));
            std::rotate(_rows.begin() + std::ptrdiff_t(row), known, known + 1);
            endMoveRows();
            continue;
        }
        beginInsertRows({}, int(row), int(row));
        _rows.insert(_rows.begin() + std::ptrdiff_t(row), Row{idAt(row), QString(), 0});
        endInsertRows();
    }
    auto users = countUsers();
    for (Row& row : _rows)
    {
        row.name = QString::fromStdString(osg::living<osg::Material>(row.id)->getNodeName());
        row.users = users[row.id];
    }
    if (!_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(_rows.size()) - 1));
}

osg::MaterialPtr kxMaterialModel::material(const QModelIndex& index) const
{
    return index.isValid() && std::size_t(index.row()) < _rows.size()
               ? osg::living<osg::Material>(_rows[std::size_t(index.row())].id)
               : osg::MaterialPtr();
}

QModelIndex kxMaterialModel::indexOf(unsigned int id) const
{
    for (std::size_t i = 0; i < _rows.size(); ++i)
        if (_rows[i].id == id)
            return index(int(i));
    return QModelIndex();
}

int kxMaterialModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(_rows.size());
}

QVariant kxMaterialModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || std::size_t(index.row()) >= _rows.size())
        return QVariant();
    const Row& row = _rows[std::size_t(index.row())];
    switch (role)
    {
    case Qt::DisplayRole:
        return row.name.isEmpty() ? tr("(unnamed)") : row.name;
    case Qt::EditRole:
        return row.name;
    case Qt::ToolTipRole:
        return row.users == 0 ? tr("Shown by no object") : tr("Shown by %n surfaces", nullptr, int(row.users));
    case Qt::DecorationRole:
    {
        const osg::UberMaterialPtr uber = osg::UberMaterialPtr::dcast(osg::living<osg::Material>(row.id));
        return uber == osg::NullFC ? QVariant() : QVariant(swatch(uber, SwatchSize));
    }
    case Qt::ForegroundRole:
        return row.users == 0 ? QVariant(kxColors::dimText()) : QVariant();
    default:
        return QVariant();
    }
}

bool kxMaterialModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const osg::MaterialPtr renamed = material(index);
    if (role != Qt::EditRole || !kxSceneEdits::rename(renamed, value.toString()))
        return false;
    // Rows come and go at the next turn: a view that goes to another row writes this one on its way.
    _rows[std::size_t(index.row())].name = QString::fromStdString(renamed->getNodeName());
    Q_EMIT dataChanged(index, index);
    return true;
}

Qt::ItemFlags kxMaterialModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemNeverHasChildren
                           : Qt::NoItemFlags;
}
