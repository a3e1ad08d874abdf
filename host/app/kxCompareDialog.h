#pragma once

#include "kxDocument.h"

#include <QDialog>

class kxDifferenceTree;
class QLabel;
class QPushButton;

/// What the open scene differs in from a file, as it was when the user asked last. Stays beside the other windows.
class kxCompareDialog : public QDialog
{
    Q_OBJECT
public:
    kxCompareDialog(const QString& file, kxDocument& document, QWidget* parent);

    /// Reads the file and compares. False where it can't be read: the user sees why, and all stays as it is.
    bool compare();

private:
    QString _file;
    kxDocument& _document;
    QLabel* _summary;
    kxDifferenceTree* _tree;
    QPushButton* _copy;
};
