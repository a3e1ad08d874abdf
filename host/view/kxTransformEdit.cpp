#include "kxTransformEdit.h"

#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>
#include <scene/kxScene.h>

#include <QQuaternion>

#include <algorithm>
#include <cmath>

using Values = kxTransformCommand::Values;

namespace
{
QVector3D toQt(const osg::Vec3f& v)
{
    return QVector3D(v.x(), v.y(), v.z());
}
osg::Vec3f toOsg(const QVector3D& v)
{
    return osg::Vec3f(v.x(), v.y(), v.z());
}

/// Right angles between the columns of a matrix, as far as it has some.
std::array<QVector3D, 3> rightAngled(const QMatrix4x4& matrix)
{
    std::array<QVector3D, 3> axes = {QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(0, 0, 1)};
    const QVector3D x = matrix.column(0).toVector3D().normalized();
    const QVector3D z = QVector3D::crossProduct(x, matrix.column(1).toVector3D()).normalized();
    if (!x.isNull() && !z.isNull())
        axes = {x, QVector3D::crossProduct(z, x), z};
    return axes;
}

bool standsBelowAnother(const osg::NodePtr& node, const std::vector<osg::NodePtr>& nodes)
{
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](const osg::NodePtr& other)
                       { return other != osg::NullFC && other != node && kxNodeUtils::hasParent(node, other); });
}

float determinant(const QMatrix4x4& m)
{
    return QVector3D::dotProduct(QVector3D::crossProduct(m.column(0).toVector3D(), m.column(1).toVector3D()),
                                 m.column(2).toVector3D());
}
} // namespace

kxTransformEdit::kxTransformEdit(const std::vector<osg::NodePtr>& nodes)
{
    for (const osg::NodePtr& node : nodes)
    {
        const osg::TransformPtr core =
            node == osg::NullFC ? osg::TransformPtr() : osg::TransformPtr::dcast(node->getCore());
        if (core == osg::NullFC || !kxNodePermission::allows(node, kxScenegraphTypes::Move) ||
            standsBelowAnother(node, nodes) ||
            std::any_of(_targets.begin(), _targets.end(), [&](const Target& t) { return t.coreId == core->getId(); }))
            continue;
        Target target;
        target.coreId = core->getId();
        target.before = target.last = Values::of(*core);
        target.above = kxSceneMath::worldMatrix(node->getParent());
        bool invertible = false;
        target.aboveInverse = target.above.inverted(&invertible);
        if (!invertible)
            continue;
        target.axes = rightAngled(target.above * core->getMatrix());
        _targets.push_back(target);
        _pivot += worldPlace(target);
    }
    if (!_targets.empty())
        _pivot /= float(_targets.size());
}

bool kxTransformEdit::isInScene() const
{
    return std::all_of(_targets.begin(), _targets.end(),
                       [](const Target& target)
                       {
                           const auto core = osg::living<osg::Transform>(target.coreId);
                           return core != osg::NullFC &&
                                  std::any_of(core->getParents().begin(), core->getParents().end(),
                                              [](const osg::NodePtr& node) { return kxScene::the()->contains(node); });
                       });
}

QVector3D kxTransformEdit::worldPlace(const Target& target) const
{
    return target.above.map(toQt(target.before.translation));
}

std::array<QVector3D, 3> kxTransformEdit::axes(bool local) const
{
    if (local && !_targets.empty())
        return _targets.back().axes;
    return {QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(0, 0, 1)};
}

Values kxTransformEdit::changed(const Target& target, const kxGizmoChange& change) const
{
    Values result = target.before;
    const QVector3D place = worldPlace(target);
    const bool isPivot = _targets.size() == 1;
    switch (change.kind)
    {
    case kxGizmoChange::Translate:
        result.translation = toOsg(toQt(target.before.translation) + target.aboveInverse.mapVector(change.translation));
        break;
    case kxGizmoChange::Rotate:
    {
        if (!isPivot)
        {
            const QQuaternion turn = QQuaternion::fromAxisAndAngle(change.axis, change.degrees);
            result.translation = toOsg(target.aboveInverse.map(_pivot + turn.rotatedVector(place - _pivot)));
        }
        // The same turn in the coordinates above the object; a mirror above it turns the other way round.
        const float side = determinant(target.above) < 0 ? -1.0f : 1.0f;
        const QVector3D axis = target.aboveInverse.mapVector(change.axis).normalized();
        // fmod: half of a great angle would lose its digits.
        const QQuaternion turn = QQuaternion::fromAxisAndAngle(axis, side * std::fmod(change.degrees, 720.0f));
        float w, x, y, z;
        kxSceneMath::quaternionFromEuler(target.before.rotation, w, x, y, z);
        const QQuaternion q = turn * QQuaternion(w, x, y, z);
        result.rotation = kxSceneMath::eulerFromQuaternion(q.scalar(), q.x(), q.y(), q.z(), target.last.rotation);
        break;
    }
    case kxGizmoChange::Scale:
        for (int i = 0; i < 3; ++i)
            result.scale[std::size_t(i)] = target.before.scale[std::size_t(i)] * change.factors[i];
        if (change.isUniform && !isPivot)
            result.translation = toOsg(target.aboveInverse.map(_pivot + (place - _pivot) * change.factors.x()));
        break;
    case kxGizmoChange::None:
        break;
    }
    return result;
}

bool kxTransformEdit::apply(const kxGizmoChange& change)
{
    if (change.kind == kxGizmoChange::None || _targets.empty() || !isInScene())
        return false;
    std::vector<kxTransformCommand::Entry> entries;
    for (const Target& target : _targets)
    {
        const Values values = changed(target, change);
        if (!osg::isFinite(values.translation) || !osg::isFinite(values.rotation) || !osg::isFinite(values.scale))
            return false;
        entries.push_back({target.coreId, target.before, values});
    }
    bool anyNew = false;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        anyNew = anyNew || !(entries[i].after == _targets[i].last);
        _targets[i].last = entries[i].after;
    }
    if (!anyNew)
        return false;
    const bool several = _targets.size() > 1;
    const auto core = osg::living<osg::Transform>(_targets.front().coreId);
    const std::string name = several ? std::string() : core->getParents().front()->getNodeName();
    const QString what = several        ? QStringLiteral("%1 Objects").arg(_targets.size())
                         : name.empty() ? QStringLiteral("1 Object")
                                        : QString::fromStdString(name);
    osg::BitVector mask = osg::Transform::TranslationFieldMask;
    QString text = QStringLiteral("Move %1");
    if (change.kind == kxGizmoChange::Rotate)
    {
        text = QStringLiteral("Rotate %1");
        mask = osg::Transform::EulerRotationFieldMask | (several ? mask : osg::BitVector());
    }
    else if (change.kind == kxGizmoChange::Scale)
    {
        text = QStringLiteral("Scale %1");
        mask = osg::Transform::ScaleFieldMask | (several && change.isUniform ? mask : osg::BitVector());
    }
    kxUndoStack::get(0).add(new kxTransformCommand(text.arg(what), std::move(entries), mask));
    return true;
}
