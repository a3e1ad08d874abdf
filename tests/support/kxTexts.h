#pragma once

#include <kernel/kxLogModel.h>

#include <QAbstractItemModelTester>
#include <QAbstractItemView>
#include <QAbstractProxyModel>

/// What is read in the first column below `parent`, from top to bottom.
inline QStringList kxTexts(const QAbstractItemModel* model, const QModelIndex& parent = QModelIndex())
{
    QStringList texts;
    for (int row = 0; row < model->rowCount(parent); ++row)
        texts << model->index(row, 0, parent).data().toString();
    return texts;
}

/// What a view is told wrong from now on fails the test, also by the models behind the one that it shows.
inline void kxTestModel(const QAbstractItemView* view)
{
    for (QAbstractItemModel* model = view->model(); model != nullptr;)
    {
        new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest, model);
        auto* const proxy = qobject_cast<QAbstractProxyModel*>(model);
        model = proxy == nullptr ? nullptr : proxy->sourceModel();
    }
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
