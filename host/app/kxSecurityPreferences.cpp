#include "kxSecurityPreferences.h"

#include <apart/kxPictures.h>
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

#include <algorithm>

namespace
{
constexpr int DigestLetters = 12; ///< that are shown; the tool tip has all
constexpr const char MemoryKey[] = "security.readerMemory", PicturesKey[] = "security.pictureMemory";
constexpr int MostGigabytes = 1024;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxSecurityPreferences", text);
}

int gigabytes(quint64 bytes)
{
    return int(bytes / kxReaderProcess::Gigabyte);
}

quint64 stored(const char* key, quint64 otherwise)
{
    const boost::any value = kxPreferences::getData().get(key);
    const int* const found = boost::any_cast<int>(&value);
    return found == nullptr || *found < 1 || *found > MostGigabytes ? otherwise
                                                                    : quint64(*found) * kxReaderProcess::Gigabyte;
}

quint64 readerMemory()
{
    return stored(MemoryKey, kxReaderProcess::Rules().memory);
}

quint64 pictureMemory()
{
    return stored(PicturesKey, kxPictures::Rules().memory);
}

QTreeWidgetItem* rowOf(const kxTrustStore::File& file)
{
    const QString name = !file.name.isEmpty() ? QFileInfo(file.name).fileName()
                         : file.isRefused     ? tr("A scene in no file")
                                              : tr("Written here, in no file yet");
    QStringList digests;
    for (auto code = file.code.rbegin(); code != file.code.rend(); ++code)
        digests << QString::fromLatin1(code->toHex());
    const QString more = digests.size() > 1 ? tr(" and %1 more").arg(digests.size() - 1) : QString();
    auto* const row = new QTreeWidgetItem({name, file.isRefused ? tr("never") : tr("may run"),
                                           QLocale().toString(file.time, QLocale::ShortFormat),
                                           digests.front().left(DigestLetters) + more});
    row->setData(0, Qt::UserRole, file.name);
    row->setData(1, Qt::UserRole, file.isRefused);
    row->setToolTip(0, Qt::convertFromPlainText(QDir::toNativeSeparators(file.name)));
    row->setToolTip(3, digests.join(QLatin1Char('\n')));
    return row;
}

kxTrustStore::File fileOf(const QTreeWidgetItem& row)
{
    return {row.data(0, Qt::UserRole).toString(), {}, {}, row.data(1, Qt::UserRole).toBool()};
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
    getData().remove(PicturesKey);
    subPreferencesGUI(_page);
    delete _page;
}

void kxSecurityPreferences::makePage()
{
    _page = new QWidget;
    auto* const layout = new QVBoxLayout(_page);
    auto* const title = new QLabel(tr("Files whose code was answered for"));
    layout->addWidget(title);
    _files = new QTreeWidget;
    _files->setObjectName(QStringLiteral("_trustedFiles"));
    _files->setAccessibleName(title->text());
    _files->setHeaderLabels({tr("File"), tr("Code"), tr("Since"), tr("Digest")});
    _files->setRootIsDecorated(false);
    _files->setUniformRowHeights(true);
    _files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _files->header()->setStretchLastSection(false);
    _files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (const int column : {1, 2, 3})
        _files->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    new kxEmptyHint(tr("No file's code may run.\n\nScenes with code that you write and save come here, and those for "
                       "which you answer \"Always for This File\" or \"Never\"."),
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
                      "is removed is asked for again; that counts at once, without OK."));
    note->setWordWrap(true);
    layout->addWidget(note);
    _memory =
        addGigabytes(tr("Memory that reading a model of another program may take"), "_readerMemory",
                     tr("Or 40 times the size of the file, where that is more. A reader that takes more is ended, and "
                        "the file isn't opened."));
    _pictures = addGigabytes(tr("Memory that all pictures of a scene may take"), "_pictureMemory",
                             tr("4 bytes a pixel when they are shown. Pictures beyond that aren't shown, which the log "
                                "says. For scenes that are opened from then on."));
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

QSpinBox* kxSecurityPreferences::addGigabytes(const QString& text, const char* name, const QString& tip)
{
    auto* const box = new QSpinBox;
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(1, MostGigabytes);
    box->setSuffix(tr(" GB"));
    box->setToolTip(tip);
    auto* const row = new QHBoxLayout;
    auto* const label = new QLabel(text);
    label->setBuddy(box);
    row->addWidget(label);
    row->addWidget(box);
    row->addStretch();
    static_cast<QVBoxLayout*>(_page->layout())->addLayout(row);
    return box;
}

void kxSecurityPreferences::updateButtons()
{
    _remove->setEnabled(!_files->selectedItems().isEmpty());
    _removeAll->setEnabled(_files->topLevelItemCount() > 0);
}

void kxSecurityPreferences::preferencesSetDefaults(bool overwrite)
{
    getData().set(MemoryKey, gigabytes(kxReaderProcess::Rules().memory), overwrite);
    getData().set(PicturesKey, gigabytes(kxPictures::Rules().memory), overwrite);
}

void kxSecurityPreferences::preferencesApply()
{
    kxReaderProcess::rules().memory = readerMemory();
    kxPictures::rules().memory = pictureMemory();
}

void kxSecurityPreferences::preferencesFromGUI()
{
    if (_page == nullptr)
        return;
    getData().set(MemoryKey, _memory->value());
    getData().set(PicturesKey, _pictures->value());
}

void kxSecurityPreferences::preferencesToGUI()
{
    if (_page == nullptr)
        return;
    _memory->setValue(gigabytes(readerMemory()));
    _pictures->setValue(gigabytes(pictureMemory()));
    listFiles();
}

void kxSecurityPreferences::listFiles()
{
    std::vector<kxTrustStore::File> selected;
    for (const QTreeWidgetItem* const row : _files->selectedItems())
        selected.push_back(fileOf(*row));
    _files->clear();
    for (const kxTrustStore::File& file : kxCodeTrust::the().files())
    {
        QTreeWidgetItem* const row = rowOf(file);
        _files->insertTopLevelItem(0, row); // the newest first
        row->setSelected(std::any_of(selected.begin(), selected.end(),
                                     [&file](const kxTrustStore::File& other) { return other.is(file); }));
    }
    updateButtons();
}

void kxSecurityPreferences::revoke(bool all)
{
    std::vector<kxTrustStore::File> files;
    for (int i = 0; i < _files->topLevelItemCount(); ++i)
        if (const QTreeWidgetItem* const row = _files->topLevelItem(i); all || row->isSelected())
            files.push_back(fileOf(*row));
    kxCodeTrust::the().revoke(files);
    listFiles();
}
