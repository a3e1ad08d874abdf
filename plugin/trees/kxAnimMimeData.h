#pragma once

#include <osg/AnimNode.h>

#include <QMimeData>

#include <vector>

/// Animation nodes on their way within this process, under one format.
///
/// Holds ids, so that a node which dies during the drag drops out.
class kxAnimMimeData : public QMimeData
{
    Q_OBJECT
public:
    explicit kxAnimMimeData(const std::vector<osg::AnimNodePtr>& nodes = {}, const QString& format = QString());

    /// The living nodes, in order.
    void getNodes(std::vector<osg::AnimNodePtr>& nodes) const;

    QString format() const { return _format; }
    void setFormat(const QString& format) { _format = format; }

    QStringList formats() const override;

private:
    std::vector<unsigned int> _nodes; // field container ids
    QString _format;
};
