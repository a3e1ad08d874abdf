#include "kxCompareDialog.h"

#include <files/kxSceneIO.h>
#include <files/scene/kxSceneContent.h>
#include <panels/kxDifferenceTree.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

kxCompareDialog::kxCompareDialog(const QString& file, kxDocument& document, QWidget* parent)
    : QDialog(parent), _file(file), _document(document), _summary(new QLabel(this)),
      _tree(new kxDifferenceTree(tr("No difference.\n\nThe open scene holds what the file holds."), this))
{
    setObjectName(QStringLiteral("_compareDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Compared With %1").arg(QFileInfo(file).fileName()));
    _summary->setObjectName(QStringLiteral("_summary"));
    _summary->setToolTip(QDir::toNativeSeparators(file));
    _summary->setTextFormat(Qt::PlainText);
    _summary->setWordWrap(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    _copy = buttons->addButton(tr("Copy"), QDialogButtonBox::ActionRole);
    _copy->setObjectName(QStringLiteral("_copyDifferences"));
    _copy->setToolTip(tr("Takes the selected lines to the clipboard, all where none is selected"));
    auto* const again = buttons->addButton(tr("Compare Again"), QDialogButtonBox::ActionRole);
    again->setObjectName(QStringLiteral("_compareAgain"));
    for (QPushButton* const button : {_copy, again})
        button->setAutoDefault(false);
    connect(_copy, &QPushButton::clicked, _tree, &kxDifferenceTree::copy);
    connect(again, &QPushButton::clicked, this, &kxCompareDialog::compare);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(_summary);
    layout->addWidget(_tree, 1);
    layout->addWidget(buttons);
    resize(640, 560);
}

bool kxCompareDialog::compare()
{
    const kxDocument::Dialogs& dialogs = _document.dialogs();
    const auto busy = [&dialogs](const QString& what)
    {
        if (dialogs.busy)
            dialogs.busy(what);
    };
    busy(tr("Comparing with %1...").arg(QFileInfo(_file).fileName()));
    kxSceneContent content;
    kxFileReport report(_file);
    const bool isRead = kxSceneIO::readContent(_file, content, report);
    if (isRead)
        _tree->setDifference(kxSceneDifference::between(content, kxSceneContent::ofScene()));
    busy(QString());
    report.log();
    if (!isRead)
    {
        if (dialogs.showError)
            dialogs.showError(tr("The file can't be compared"), report);
        return false;
    }
    const QString found = _tree->summary();
    const QString name = QFileInfo(_file).fileName();
    _summary->setText(found.isEmpty() ? tr("%1 and the open scene are equal").arg(name)
                                      : tr("From %1 to the open scene: %2").arg(name, found));
    _copy->setEnabled(!found.isEmpty());
    return true;
}
