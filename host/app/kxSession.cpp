#include "kxSession.h"

#include "kxDocument.h"

#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxVersions.h>
#include <kernel/kxPreferencesStore.h>
#include <kxLog.h>

#include <QCoreApplication>
#include <QDir>

QString kxSession::folder()
{
    return kxPreferencesStore::settingsFolder() + QStringLiteral("/sessions");
}

kxSession::kxSession(bool isKept)
{
    const QString name = QStringLiteral("%1-%2")
                             .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")))
                             .arg(QCoreApplication::applicationPid());
    if (isKept)
    {
        _own.reset(new kxLeftover(folder() + QLatin1Char('/') + name));
        if (!QDir().mkpath(_own->_folder) || !_own->_lock->tryLock(0))
        {
            QDir().rmdir(_own->_folder);
            kxLog::warning(tr("Changes can't be recovered after a crash: '%1' can't be written.").arg(folder()));
            _own.reset();
        }
    }
    start();
}

void kxSession::start()
{
    kxJournal::the().start(_own == nullptr ? QString() : _own->journal());
    if (_own != nullptr && kxJournal::the().hasFailed())
        _own->clear(); // what it could write is no scene
}

void kxSession::startAnew(bool isOtherScene)
{
    if (!kxJournal::the().hasFailed())
        return;
    if (_own != nullptr)
        _own->clear();
    if (isOtherScene) // the history of this one speaks of the journal in memory
        start();
}

kxSession::~kxSession()
{
    kxJournal::the().stop();
    if (_own != nullptr)
        _own->remove();
}

void kxSession::follow(const kxDocument& document)
{
    _document = &document;
    connect(&kxHistory::the(), &kxHistory::rested, this, &kxSession::describe);
    connect(&document, &kxDocument::changed, this, &kxSession::describe);
    connect(&document, &kxDocument::opened, this,
            [this]
            {
                _taken.reset();
                startAnew(true);
            });
    connect(&document, &kxDocument::saved, this,
            [this]
            {
                if (_taken != nullptr)
                    std::exchange(_taken, nullptr)->remove();
                startAnew(false);
            });
    describe();
}

void kxSession::describe()
{
    if (kxJournal::the().isPending())
        return; // a drag goes on, or a script
    const kxHistory& history = kxHistory::the();
    kxJournal::Description description{_document->source(), _takenText, _takenTime, history.isSaved(),
                                       kxVersions::the().neverSavedFolder()};
    if (description.isSaved)
        _takenText.clear();
    int last = history.index() - 1;
    while (last >= 0 && history.entry(last).isSelection)
        --last;
    if (last >= 0)
    {
        description.text = history.entry(last).text();
        description.time = history.entry(last).time;
    }
    kxJournal::the().describe(description);
}

bool kxSession::takeOver(kxLeftover& leftover)
{
    _takenText = leftover._text;
    _takenTime = leftover._time;
    describe(); // before the other one is gone
    const bool isKept = _own != nullptr && !kxJournal::the().hasFailed();
    if (isKept)
        leftover.remove();
    else
        _taken = std::make_unique<kxLeftover>(std::move(leftover));
    return isKept;
}
