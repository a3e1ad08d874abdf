#pragma once

#include <QAbstractListModel>
#include <osg/SceneCores.h>

#include <vector>

/// The materials of the scene, in order, with a swatch each.
///
/// Follows structureChanged() row by row, so that views keep their selection.
class kxMaterialModel : public QAbstractListModel
{
    Q_OBJECT
public:
    static constexpr int SwatchSize = 30; ///< device-independent pixels

    explicit kxMaterialModel(QObject* parent = nullptr);

    osg::MaterialPtr material(const QModelIndex& index) const;
    QModelIndex indexOf(unsigned int id) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

public Q_SLOTS:
    void sync();

private:
    struct Row
    {
        unsigned int id;
        QString name;
        unsigned int users; // surfaces that show it
    };
    std::vector<Row> _rows;
};
