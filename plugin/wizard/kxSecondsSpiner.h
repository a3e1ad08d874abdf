#pragma once

#include <QKXSpiner.h>

/// A field for a time in seconds that is exact enough for every frame, and shows no more digits than the time needs.
class kxSecondsSpiner : public QKXDoubleSpiner
{
    Q_OBJECT
public:
    explicit kxSecondsSpiner(QWidget* parent = nullptr);

    QString textFromValue(double value) const override;
};
