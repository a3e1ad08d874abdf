#include "kxVersionsDialog.h"

#include "kxFileDialogs.h"
#include "kxVersionKeeper.h"

#include <panels/kxVersionModel.h>
#include <panels/kxVersionView.h>

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace
{
constexpr QSize FirstSize(820, 520);
constexpr int ListWidth = 250;

QString nameOf(const kxVersionStore::Document& document)
{
    const QString name = QFileInfo(document.path).fileName();
    if (document.isNeverSaved)
        return name.isEmpty() ? kxVersionsDialog::tr("Never saved")
                              : kxVersionsDialog::tr("%1 (never saved)").arg(name);
    // Where the index was lost the folder tells, without the digest behind the name.
    return name.isEmpty() ? kxVersionsDialog::tr("%1 (which file is unknown)")
                                .arg(QFileInfo(document.folder).fileName().section(QLatin1Char('-'), 0, -2))
                          : name;
}
} // namespace

kxVersionsDialog::kxVersionsDialog(kxVersionKeeper* keeper, QWidget* parent)
    : QDialog(parent), _keeper(keeper), _list(new QListWidget(this)), _path(new QLabel(this)),
      _view(new kxVersionView(tr("No versions were kept of this scene."), this))
{
    setObjectName(QStringLiteral("_versionsDialog"));
    setWindowTitle(tr("Versions of a File"));
    setAttribute(Qt::WA_DeleteOnClose);
    _list->setObjectName(QStringLiteral("_versionDocuments"));
    _list->setAccessibleName(tr("Scenes that have versions"));
    _view->setObjectName(QStringLiteral("_versionsOfFile"));
    _path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    _path->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* const side = new QWidget(this);
    auto* const sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(0, 0, 0, 0);
    sideLayout->addWidget(_path);
    sideLayout->addWidget(_view);
    auto* const splitter = new QSplitter(this);
    splitter->addWidget(_list);
    splitter->addWidget(side);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ListWidth, FirstSize.width() - ListWidth});
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* const file = buttons->addButton(tr("Choose File..."), QDialogButtonBox::ActionRole);
    file->setObjectName(QStringLiteral("_chooseVersionFile"));
    _saveAs = buttons->addButton(tr("Save As..."), QDialogButtonBox::ActionRole);
    _open = buttons->addButton(tr("Open"), QDialogButtonBox::ActionRole);
    _open->setObjectName(QStringLiteral("_openVersion"));
    _open->setToolTip(tr("Opens the version as a scene that isn't saved; the file stays as it is"));
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(splitter);
    layout->addWidget(buttons);
    resize(FirstSize);

    connect(_list, &QListWidget::currentRowChanged, this, &kxVersionsDialog::showDocument);
    connect(_view, &kxVersionView::currentVersionChanged, this, &kxVersionsDialog::update);
    connect(_view, &kxVersionView::chosen, this, &kxVersionsDialog::openVersion);
    connect(file, &QPushButton::clicked, this, &kxVersionsDialog::choose);
    connect(_open, &QPushButton::clicked, this, [this] { openVersion(_view->current()); });
    connect(_saveAs, &QPushButton::clicked, this, &kxVersionsDialog::saveAs);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
}

void kxVersionsDialog::fill()
{
    _documents = kxVersionStore::documents();
    for (const kxVersionStore::Document& document : _documents)
    {
        auto* const item =
            new QListWidgetItem(tr("%1\n%2 \u00b7 %3")
                                    .arg(nameOf(document), document.last.toString(QStringLiteral("yyyy-MM-dd hh:mm")),
                                         document.count == 1 ? tr("1 version") : tr("%1 versions").arg(document.count)),
                                _list);
        item->setToolTip(QDir::toNativeSeparators(document.path));
    }
    if (_documents.empty())
        showDocument(-1);
    else
        _list->setCurrentRow(0);
}

void kxVersionsDialog::showDocument(int row)
{
    _view->versions()->follow(nullptr);
    _store.reset();
    if (row < 0 || row >= int(_documents.size()))
    {
        _path->setText(tr("No scene has versions yet."));
        return update();
    }
    const kxVersionStore::Document& document = _documents[std::size_t(row)];
    _store = std::make_unique<kxVersionStore>(document.folder);
    _view->versions()->follow(_store.get());
    _view->setCurrentIndex(_view->versions()->index(0, 0));
    const bool isGone = !document.path.isEmpty() && !QFileInfo::exists(document.path);
    const QString place = document.path.isEmpty() ? document.folder : document.path;
    _path->setText(QDir::toNativeSeparators(place) + (isGone ? tr(" (the file is gone)") : QString()));
    _path->setToolTip(_path->text());
    update();
}

void kxVersionsDialog::showFile(const QString& path)
{
    const QString folder = kxVersionStore::folderOf(path);
    for (std::size_t i = 0; i < _documents.size(); ++i)
        if (_documents[i].folder == folder)
            return _list->setCurrentRow(int(i));
    _list->setCurrentRow(-1);
    _path->setText(tr("No versions were kept of %1.").arg(QDir::toNativeSeparators(path)));
}

void kxVersionsDialog::choose()
{
    const QString file = kxFileDialogs::askForScene(static_cast<QMainWindow*>(parentWidget()));
    if (!file.isEmpty())
        showFile(file);
}

void kxVersionsDialog::openVersion(qint64 number)
{
    if (_store != nullptr && number != 0 &&
        _keeper->open(*_store, number, _documents[std::size_t(_list->currentRow())].path))
        close();
}

void kxVersionsDialog::saveAs()
{
    if (_store != nullptr && _view->current() != 0)
        _keeper->saveAs(*_store, _view->current(), nameOf(_documents[std::size_t(_list->currentRow())]));
}

void kxVersionsDialog::update()
{
    _open->setEnabled(_view->current() != 0);
    _saveAs->setEnabled(_view->current() != 0);
}
