#include "kxSecurityPreferences.h"

#include <files/apart/kxReaderProcess.h>
#include <panels/kxEmptyHint.h>
#include <trust/kxCodeTrust.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>
#include <QTextDocument>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
constexpr int DigestLetters = 12; ///< that are shown; the tool tip has all
constexpr const char MemoryKey[] = "security.readerMemory";
constexpr int MostGigabytes = 1024;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxSecurityPreferences", text);
}

int gigabytes()
{
    const boost::any value = kxPreferences::getData().get(MemoryKey);
    const int* const stored = boost::any_cast<int>(&value);
    return stored == nullptr || *stored < 1 || *stored > MostGigabytes
               ? int(kxReaderProcess::Rules().memory / kxReaderProcess::Gigabyte)
               : *stored;
}

QTreeWidgetItem* rowOf(const kxTrustStore::File& file)
{
    const QString name = file.name.isEmpty() ? tr("Written here, in no file yet") : QFileInfo(file.name).fileName();
    const QString digest = QString::fromLatin1(file.digest().toHex());
    auto* const row =
        new QTreeWidgetItem({name, QLocale().toString(file.time, QLocale::ShortFormat), digest.left(DigestLetters)});
    row->setData(0, Qt::UserRole, file.name);
    row->setToolTip(0, Qt::convertFromPlainText(QDir::toNativeSeparators(file.name)));
    row->setToolTip(2, digest);
    return row;
}
} // namespace

kxSecurityPreferences::kxSecurityPreferences() : kxPreferences(QString(), tr("Security"))
{
    makePage();
    addPreferencesGUI(_page);
}

kxSecurityPreferences::~kxSecurityPreferences()
{
    getData().remove(MemoryKey);
    subPreferencesGUI(_page);
    delete _page;
}

void kxSecurityPreferences::makePage()
{
    _page = new QWidget;
    auto* const layout = new QVBoxLayout(_page);
    auto* const title = new QLabel(tr("Files whose code may run"));
    layout->addWidget(title);
    _files = new QTreeWidget;
    _files->setObjectName(QStringLiteral("_trustedFiles"));
    _files->setAccessibleName(title->text());
    _files->setHeaderLabels({tr("File"), tr("Since"), tr("Digest")});
    _files->setRootIsDecorated(false);
    _files->setUniformRowHeights(true);
    _files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _files->header()->setStretchLastSection(false);
    _files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    _files->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    _files->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    new kxEmptyHint(tr("No file's code may run.\n\nScenes with code that you write and save come here, and those for "
                       "which you answer \"Always for This File\"."),
                    _files);
    layout->addWidget(_files, 1);
    auto* const buttons = new QHBoxLayout;
    _remove = new QPushButton(tr("Remove"));
    _remove->setObjectName(QStringLiteral("_removeTrusted"));
    _removeAll = new QPushButton(tr("Remove All"));
    _removeAll->setObjectName(QStringLiteral("_removeAllTrusted"));
    buttons->addWidget(_remove);
    buttons->addWidget(_removeAll);
    buttons->addStretch();
    layout->addLayout(buttons);
    auto* const note =
        new QLabel(tr("Code is known by what it says, not by the file's name: a file that is moved keeps "
                      "its place here, and one whose code is changed elsewhere is asked for again. What "
                      "is removed is asked for again at once."));
    note->setWordWrap(true);
    layout->addWidget(note);
    addMemory();
    QObject::connect(_files, &QTreeWidget::itemSelectionChanged, _page, [this] { updateButtons(); });
    QObject::connect(_remove, &QPushButton::clicked, _page, [this] { revoke(false); });
    QObject::connect(_removeAll, &QPushButton::clicked, _page, [this] { revoke(true); });
    QObject::connect(&kxCodeTrust::the(), &kxCodeTrust::changed, _page,
                     [this]
                     {
                         if (_page->isVisible())
                             listFiles();
                     });
    updateButtons();
}

void kxSecurityPreferences::addMemory()
{
    _memory = new QSpinBox;
    _memory->setObjectName(QStringLiteral("_readerMemory"));
    _memory->setRange(1, MostGigabytes);
    _memory->setSuffix(tr(" GB"));
    _memory->setToolTip(
        tr("Or 40 times the size of the file, where that is more. A reader that takes more is ended, and "
           "the file isn't opened."));
    auto* const row = new QHBoxLayout;
    auto* const label = new QLabel(tr("Memory that reading a model of another program may take"));
    label->setBuddy(_memory);
    row->addWidget(label);
    row->addWidget(_memory);
    row->addStretch();
    static_cast<QVBoxLayout*>(_page->layout())->addLayout(row);
}

void kxSecurityPreferences::updateButtons()
{
    _remove->setEnabled(!_files->selectedItems().isEmpty());
    _removeAll->setEnabled(_files->topLevelItemCount() > 0);
}

void kxSecurityPreferences::preferencesSetDefaults(bool overwrite)
{
    getData().set(MemoryKey, int(kxReaderProcess::Rules().memory / kxReaderProcess::Gigabyte), overwrite);
}

void kxSecurityPreferences::preferencesApply()
{
    kxReaderProcess::rules().memory = quint64(gigabytes()) * kxReaderProcess::Gigabyte;
}

void kxSecurityPreferences::preferencesFromGUI()
{
    if (_page != nullptr)
        getData().set(MemoryKey, _memory->value());
}

void kxSecurityPreferences::preferencesToGUI()
{
    if (_page == nullptr)
        return;
    _memory->setValue(gigabytes());
    listFiles();
}

void kxSecurityPreferences::listFiles()
{
    QStringList selected;
    for (const QTreeWidgetItem* const row : _files->selectedItems())
        selected << row->data(0, Qt::UserRole).toString();
    _files->clear();
    for (const kxTrustStore::File& file : kxCodeTrust::the().files())
    {
        QTreeWidgetItem* const row = rowOf(file);
        _files->insertTopLevelItem(0, row); // the newest first
        row->setSelected(selected.contains(file.name));
    }
    updateButtons();
}

void kxSecurityPreferences::revoke(bool all)
{
    QStringList names;
    for (int i = 0; i < _files->topLevelItemCount(); ++i)
        if (const QTreeWidgetItem* const row = _files->topLevelItem(i); all || row->isSelected())
            names << row->data(0, Qt::UserRole).toString();
    kxCodeTrust::the().revoke(names);
    listFiles();
}
