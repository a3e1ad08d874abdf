#include "kxRenderDialog.h"

#include "kxCommandLine.h"
#include "kxHostSettings.h"
#include "kxMovieFile.h"

#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <widgets/kxColors.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QToolButton>

namespace
{
QKXSpiner* makeSpinner(int minimum, int maximum, int value, const QString& name, const QString& text, QWidget* parent)
{
    auto* const spinner = new QKXSpiner(parent);
    spinner->setObjectName(name);
    spinner->setAccessibleName(text);
    spinner->setRange(minimum, maximum);
    spinner->setValue(value);
    return spinner;
}

/// Of names that may be long, and many.
QComboBox* makeChoice(const QString& name, const QString& text, QWidget* parent)
{
    auto* const box = new QComboBox(parent);
    box->setObjectName(name);
    box->setAccessibleName(text);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(20);
    box->setMaxVisibleItems(20);
    return box;
}

QHBoxLayout* pair(QWidget* first, const QString& between, QWidget* second)
{
    auto* const row = new QHBoxLayout;
    row->addWidget(first, 1);
    row->addWidget(new QLabel(between));
    row->addWidget(second, 1);
    return row;
}
} // namespace

kxRenderDialog::kxRenderDialog(Mode mode, const QString& folder, const QString& name, bool isFilm, QWidget* parent)
    : QDialog(parent), _mode(mode), _file(new QLineEdit(this)), _transparent(new QCheckBox(tr("Transparent"), this)),
      _note(new QLabel(this)), _problem(new QLabel(this))
{
    setObjectName(QStringLiteral("_renderDialog"));
    setWindowTitle(mode == Image ? tr("Render Image") : mode == Frames ? tr("Render Frames") : tr("Render Movie"));
    auto* const form = new QFormLayout(this);
    addFile(form, folder, name);
    addSize(form);
    if (mode != Image)
        addRange(form);
    addCameras(form, isFilm);
    form->addRow(tr("Background"), _transparent);
    addEnd(form);
    connect(_file, &QLineEdit::textChanged, this, &kxRenderDialog::check);
    connect(_transparent, &QCheckBox::toggled, this, &kxRenderDialog::check);
    check();
}

void kxRenderDialog::addFile(QFormLayout* form, const QString& folder, const QString& name)
{
    const QString start =
        folder.isEmpty() ? kxHostSettings().value(QStringLiteral("renderFolder"), QDir::homePath()).toString() : folder;
    const QString end = _mode == Image    ? QStringLiteral(".png")
                        : _mode == Frames ? QStringLiteral("_%04d.png")
                                          : QStringLiteral(".mp4");
    _file->setObjectName(QStringLiteral("_file"));
    _file->setText(QDir(start).filePath(name + end));
    _file->setMinimumWidth(360);
    auto* const browse = new QToolButton(this);
    browse->setText(QStringLiteral("..."));
    browse->setToolTip(tr("Choose a file"));
    connect(browse, &QToolButton::clicked, this, &kxRenderDialog::choose);
    auto* const row = new QHBoxLayout;
    row->addWidget(_file, 1);
    row->addWidget(browse);
    form->addRow(_mode == Frames ? tr("Files") : tr("File"), row);
}

QSize kxRenderDialog::lastSize()
{
    return kxHostSettings().value(QStringLiteral("renderSize"), QSize(1920, 1080)).toSize();
}

void kxRenderDialog::addSize(QFormLayout* form)
{
    const QSize last = lastSize();
    _width = makeSpinner(1, 16384, last.width(), QStringLiteral("_width"), tr("Width"), this);
    _height = makeSpinner(1, 16384, last.height(), QStringLiteral("_height"), tr("Height"), this);
    form->addRow(tr("Size"), pair(_width, QStringLiteral("\u00d7"), _height));
    for (const QKXSpiner* const side : {_width, _height})
        connect(side, QOverload<int>::of(&QSpinBox::valueChanged), this, &kxRenderDialog::check);
}

void kxRenderDialog::addEnd(QFormLayout* form)
{
    _note->setObjectName(QStringLiteral("_note"));
    _note->setWordWrap(true);
    if (_mode == Movie)
        form->addRow(QString(), _note);
    QPalette colors = _problem->palette();
    colors.setColor(QPalette::WindowText, kxColors::accent());
    _problem->setPalette(colors);
    _problem->setWordWrap(true);
    form->addRow(QString(), _problem);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    _render = buttons->addButton(tr("Render"), QDialogButtonBox::AcceptRole);
    _render->setObjectName(QStringLiteral("_render"));
    connect(buttons, &QDialogButtonBox::accepted, this,
            [this]
            {
                kxHostSettings stored;
                stored.setValue(QStringLiteral("renderSize"), size());
                stored.setValue(QStringLiteral("renderFolder"), QFileInfo(file()).absolutePath());
                accept();
            });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
}

void kxRenderDialog::addRange(QFormLayout* form)
{
    addClips(form);
    constexpr int Largest = kxRenderSource::LargestFrame;
    const kxRenderSource::Range range = source().range();
    _first = makeSpinner(-Largest, Largest, range.first, QStringLiteral("_first"), tr("First frame"), this);
    _last = makeSpinner(-Largest, Largest, range.last, QStringLiteral("_last"), tr("Last frame"), this);
    form->addRow(tr("Frames"), pair(_first, tr("to"), _last));
    connect(_first, QOverload<int>::of(&QSpinBox::valueChanged), this, &kxRenderDialog::check);
    connect(_last, QOverload<int>::of(&QSpinBox::valueChanged), this, &kxRenderDialog::check);
}

void kxRenderDialog::addClips(QFormLayout* form)
{
    _clips = kxRenderSource::clips();
    if (_clips.empty())
        return;
    _source = makeChoice(QStringLiteral("_source"), tr("Animation"), this);
    _source->addItem(tr("Timeline"));
    for (const kxRenderSource::Clip& clip : _clips)
        _source->addItem(QString(4 * clip.depth, QLatin1Char(' ')) + clip.name);
    form->addRow(tr("Animation"), _source);
    connect(_source, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &kxRenderDialog::proposeWholeRange);
}

void kxRenderDialog::addCameras(QFormLayout* form, bool isFilm)
{
    _camera = makeChoice(QStringLiteral("_camera"), tr("Camera"), this);
    _camera->addItem(tr("As in the film"));
    _camera->setItemData(0, tr("A clip's camera tracks and viewpoints, else the view"), Qt::ToolTipRole);
    _camera->addItem(tr("As in the view"));
    _cameras = kxRenderCamera::all();
    for (const kxRenderCamera::Entry& entry : _cameras)
        _camera->addItem(entry.name.isEmpty() ? tr("Camera") : entry.name);
    _camera->setCurrentIndex(isFilm ? 0 : 1);
    form->addRow(tr("Camera"), _camera);
}

void kxRenderDialog::propose(const osg::AnimNodePtr& clip, const kxRenderSource::Range& range)
{
    if (_first == nullptr)
        return;
    for (std::size_t i = 0; i < _clips.size(); ++i)
        if (_clips[i].node == clip)
            _source->setCurrentIndex(int(i) + 1);
    setRange(range);
}

void kxRenderDialog::proposeWholeRange()
{
    setRange(source().range());
}

void kxRenderDialog::setRange(const kxRenderSource::Range& range)
{
    _first->setValue(range.first);
    _last->setValue(range.last);
}

void kxRenderDialog::choose()
{
    const QString filter = _mode == Movie ? kxMovieFile::filter() : tr("Pictures (*.png *.jpg *.exr)");
    const QString chosen = QFileDialog::getSaveFileName(this, windowTitle(), file(), filter);
    if (!chosen.isEmpty())
        _file->setText(chosen);
}

QString kxRenderDialog::problem() const
{
    const bool several = _mode == Frames && _last->value() > _first->value();
    QString problem = _mode == Movie ? kxMovieFile::problem(file(), isTransparent())
                                     : kxFramePattern::problem(file(), several, isTransparent());
    if (problem.isEmpty() && _mode != Image && _last->value() < _first->value())
        problem = tr("the last frame stands before the first");
    if (problem.isEmpty() && !QFileInfo(file()).absoluteDir().exists())
        problem = tr("there is no such folder");
    if (problem.isEmpty() && _mode == Movie)
        problem = kxMovieFile::missing();
    return problem;
}

QString kxRenderDialog::note() const
{
    const double rate = kxAnimManager::the()->fps();
    const int step = kxMovieFile::step(file(), rate);
    const int frames = (range().last - range().first) / step + 1;
    const QLocale locale;
    QStringList parts(tr("%n frames, %1 s at %2 frames a second", nullptr, frames)
                          .arg(locale.toString(frames * step / rate, 'f', 2), locale.toString(rate / step, 'g', 5)));
    if (step > 1)
        parts << tr("A GIF shows no more in a second: of %n frames it holds one.", nullptr, step);
    const QSize pictures = kxMovieFile::pictureSize(file(), size());
    if (pictures != size())
        parts << tr("An MP4 has even sides: %1 \u00d7 %2.").arg(pictures.width()).arg(pictures.height());
    if (QFileInfo::exists(file()))
        parts << tr("The file is there, and will be replaced.");
    return parts.join(QLatin1Char('\n'));
}

void kxRenderDialog::check()
{
    QString said = problem();
    if (!said.isEmpty())
        said[0] = said[0].toUpper();
    _problem->setText(said);
    _problem->setVisible(!said.isEmpty());
    _note->setText(said.isEmpty() && _mode == Movie ? note() : QString());
    _note->setVisible(said.isEmpty() && _mode == Movie);
    _render->setEnabled(said.isEmpty());
}

QString kxRenderDialog::file() const
{
    return _file->text();
}

QSize kxRenderDialog::size() const
{
    return QSize(_width->value(), _height->value());
}

kxRenderSource kxRenderDialog::source() const
{
    const int clip = _source == nullptr ? -1 : _source->currentIndex() - 1;
    return clip < 0 ? kxRenderSource() : kxRenderSource(_clips[std::size_t(clip)].node);
}

kxRenderSource::Range kxRenderDialog::range() const
{
    return _first == nullptr ? kxRenderSource::Range{} : kxRenderSource::Range{_first->value(), _last->value()};
}

kxRenderCamera kxRenderDialog::camera() const
{
    kxRenderCamera camera;
    const int index = _camera->currentIndex();
    camera.film = index == 0;
    if (index > 1)
        camera.named = _cameras[std::size_t(index - 2)].node;
    return camera;
}

bool kxRenderDialog::isTransparent() const
{
    return _transparent->isChecked();
}
