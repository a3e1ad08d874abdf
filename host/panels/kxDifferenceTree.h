#pragma once

#include <files/text/kxSceneDifference.h>

#include <QTreeWidget>

/// What two scenes differ in, a group for each object, clip or material. The second one is the open scene: rows that
/// are selected select what they tell of, where that is an object or a material of the scene.
class kxDifferenceTree : public QTreeWidget
{
    Q_OBJECT
public:
    /// `hint` stands where there is no difference.
    explicit kxDifferenceTree(const QString& hint, QWidget* parent = nullptr);

    void setDifference(const kxSceneDifference& difference);
    /// "3 differences in 2 things"; empty for none.
    QString summary() const;
    /// The lines of the selected rows, of all where none is; a group brings its lines.
    QString text() const;
    void copy() const;

private:
    void selectInScene() const;
    int _lines = 0;
};
