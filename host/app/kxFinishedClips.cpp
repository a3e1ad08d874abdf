#include "kxFinishedClips.h"

#include "kxRenderSource.h"

#include <edits/kxSceneryEdits.h>
#include <osg/FieldContainerFactory.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QWizard>

namespace
{
constexpr const char Key[] = "film.finishedClips";
} // namespace

kxFinishedClips::kxFinishedClips(QWidget* window)
    : QObject(window), kxPreferences(QString(), tr("Film")), _window(window), _page(new QWidget)
{
    auto* const form = new QFormLayout(_page);
    _choice = new QComboBox;
    _choice->setObjectName(QStringLiteral("_finishedClips"));
    _choice->addItems({tr("Ask"), tr("Switch them off, objects as the clip begins"), tr("Leave them on"),
                       tr("Switch them off, objects as the clip ends"), tr("Switch them off, objects as they stand")});
    form->addRow(tr("Blocks of the wizard's clips"), _choice);
    auto* const note = new QLabel(tr("The wizard leaves the blocks that it made switched on. Its clip plays them, and "
                                     "without it they drive their objects at the timeline's frames. Switched off, they "
                                     "are at rest."));
    note->setWordWrap(true);
    form->addRow(note);
    addPreferencesGUI(_page);
    qApp->installEventFilter(this);
}

kxFinishedClips::~kxFinishedClips()
{
    getData().remove(Key);
    subPreferencesGUI(_page);
    delete _page;
}

bool kxFinishedClips::eventFilter(QObject* watched, QEvent* event)
{
    auto* const wizard =
        event->type() == QEvent::Show && !event->spontaneous() ? qobject_cast<QWizard*>(watched) : nullptr;
    if (wizard == nullptr)
        return false;
    _before.clear();
    for (const kxRenderSource::Clip& clip : kxRenderSource::clips())
        _before.insert(clip.node.getFieldContainerId());
    // The clip is made by others who hear of it first.
    connect(wizard, &QDialog::accepted, this, &kxFinishedClips::finished,
            Qt::ConnectionType(Qt::QueuedConnection | Qt::UniqueConnection));
    return false;
}

void kxFinishedClips::finished()
{
    for (const kxRenderSource::Clip& clip : kxRenderSource::clips())
    {
        if (_before.count(clip.node.getFieldContainerId()) != 0 || kxSceneryEdits::restless(clip.node).empty())
            continue;
        rest(clip.node, answer());
        if (answer() == Ask && !_isUnattended)
            ask(clip.node.getFieldContainerId());
        return; // one that holds the others comes first
    }
}

void kxFinishedClips::rest(const osg::AnimNodePtr& clip, Answer answer)
{
    typedef kxSceneryEdits::Stand Stand;
    if (answer == Ask || answer == Leave || clip == osg::NullFC)
        return;
    kxSceneryEdits::rest(clip, answer == RestAsItBegins ? Stand::Begin
                               : answer == RestAsItEnds ? Stand::End
                                                        : Stand::Present);
}

void kxFinishedClips::ask(unsigned int clipId)
{
    const auto clip = osg::living<osg::AnimNode>(clipId);
    auto* const box = new QMessageBox(QMessageBox::Question, tr("Clip Finished"),
                                      tr("The clip \"%1\" is made. The blocks that it plays are on in the timeline "
                                         "too, and drive their objects there.\n\n"
                                         "Switch them off? The objects then stand as the clip begins, as it ends, or "
                                         "as they stand now.")
                                          .arg(QString::fromStdString(clip->getNodeName())),
                                      QMessageBox::NoButton, _window);
    box->setObjectName(QStringLiteral("_clipFinished"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* const begin = box->addButton(tr("As It Begins"), QMessageBox::AcceptRole);
    QPushButton* const end = box->addButton(tr("As It Ends"), QMessageBox::AcceptRole);
    QPushButton* const present = box->addButton(tr("As They Stand"), QMessageBox::AcceptRole);
    box->addButton(tr("Leave On"), QMessageBox::RejectRole);
    box->setDefaultButton(begin);
    auto* const always = new QCheckBox(tr("Always, without asking (Preferences > Film)"));
    box->setCheckBox(always);
    connect(box, &QMessageBox::buttonClicked, this,
            [clipId, begin, end, present, always](QAbstractButton* button)
            {
                const Answer answer = button == begin     ? RestAsItBegins
                                      : button == end     ? RestAsItEnds
                                      : button == present ? RestAsTheyStand
                                                          : Leave;
                rest(osg::living<osg::AnimNode>(clipId), answer);
                if (always->isChecked())
                    getData().set(Key, int(answer), true);
            });
    box->setModal(false);
    box->show();
}

kxFinishedClips::Answer kxFinishedClips::answer()
{
    const boost::any value = getData().get(Key);
    const int* const stored = boost::any_cast<int>(&value);
    return stored == nullptr || *stored < Ask || *stored > RestAsTheyStand ? Ask : Answer(*stored);
}

void kxFinishedClips::preferencesSetDefaults(bool overwrite)
{
    getData().set(Key, int(Ask), overwrite);
}

void kxFinishedClips::preferencesToGUI()
{
    if (_page != nullptr)
        _choice->setCurrentIndex(answer());
}

void kxFinishedClips::preferencesFromGUI()
{
    if (_page != nullptr)
        getData().set(Key, _choice->currentIndex());
}
