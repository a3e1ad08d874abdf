#pragma once

#include <kernel/kxLogModel.h>

#include <QAbstractItemModel>

/// What is read in the first column below `parent`, from top to bottom.
inline QStringList kxTexts(const QAbstractItemModel* model, const QModelIndex& parent = QModelIndex())
{
    QStringList texts;
    for (int row = 0; row < model->rowCount(parent); ++row)
        texts << model->index(row, 0, parent).data().toString();
    return texts;
}

/// The lines of the log since the last call.
inline QStringList kxLogged()
{
    QStringList texts;
    for (const kxLogEntry& entry : kxLogModel::the().entries())
        texts << entry.text;
    kxLogModel::the().clear();
    return texts;
}
