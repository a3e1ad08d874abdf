#include "kxCodeTrust.h"

#include <QFileInfo>
#include <kxLog.h>
#include <osg/ChangeList.h>
#include <scene/Scenery.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <utility>

namespace
{
std::vector<QByteArray> digestsOf(const std::vector<kxSceneCode>& code)
{
    std::vector<QByteArray> digests;
    digests.reserve(code.size());
    for (const kxSceneCode& piece : code)
        digests.push_back(kxSceneCode::digest(piece.text));
    return digests;
}

QString called(const QString& file)
{
    return file.isEmpty() ? kxCodeTrust::tr("the unsaved scene")
                          : QStringLiteral("'%1'").arg(QFileInfo(file).fileName());
}

bool isIn(const std::vector<QByteArray>& digests, const QByteArray& digest)
{
    return std::find(digests.begin(), digests.end(), digest) != digests.end();
}
} // namespace

/// Notes that steps changed, which changes neither the shape nor the look of a scene.
class kxCodeTrust::Watch : public osg::ChangeListener
{
public:
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector&) override
    {
        isStale = isStale || container->getType().isDerivedFrom(osg::SceneSequence::_type);
    }

    bool isStale = false;
};

kxCodeTrust& kxCodeTrust::the()
{
    // Never destroyed: the scene's listeners aren't either.
    static kxCodeTrust* const trust = new kxCodeTrust;
    return *trust;
}

kxCodeTrust::kxCodeTrust()
{
    auto* const watch = new Watch;
    if (osg::ChangeList* const list = osg::WinThreadBase::getCurrentChangeList())
        list->addListener(watch);
    connect(kxScene::the(), &kxScene::structureChanged, this, [watch] { watch->isStale = true; });
    connect(kxScene::the(), &kxScene::appearanceChanged, this, // follows structureChanged()
            [this, watch]
            {
                if (std::exchange(watch->isStale, false))
                    follow(_source);
            });
}

bool kxCodeTrust::mayRun(const std::string& text)
{
    const QByteArray digest = kxSceneCode::digest(text);
    return _isTrusting || _thisTime.contains(digest) || _store.contains(digest);
}

void kxCodeTrust::follow(const QString& file)
{
    const std::vector<QByteArray> before = digestsOf(_waiting);
    _waiting.clear();
    for (kxSceneCode& piece : kxSceneCode::of(kxScene::the()->sceneryRoot()))
    {
        const QByteArray digest = kxSceneCode::digest(piece.text);
        if (!_store.contains(digest))
            _foreign.insert(digest);
        if (mayRun(piece.text))
            continue;
        _isAsking = _isAsking || (!isIn(before, digest) && !_store.isRefused(digest));
        _origins.emplace(digest, file);
        _waiting.push_back(std::move(piece));
    }
    _isAsking = _isAsking && !_waiting.empty();
    Q_EMIT changed();
}

QString kxCodeTrust::originOf(const kxSceneCode& piece) const
{
    return _origins.at(kxSceneCode::digest(piece.text));
}

QString kxCodeTrust::question() const
{
    return whatWaits() + QLatin1Char(' ') +
           tr("It can read, change and delete your files, with all your rights, and is skipped until you allow it.");
}

QString kxCodeTrust::whatWaits() const
{
    QStringList imports;
    bool isOwn = false;
    for (const kxSceneCode& piece : _waiting)
    {
        const QString file = originOf(piece), name = QFileInfo(file).fileName();
        isOwn = isOwn || file == _source;
        if (file != _source && !imports.contains(name))
            imports << name;
    }
    const QString summary = kxSceneCode::summary(_waiting.size());
    if (imports.isEmpty())
        return tr("This scene holds code: %1.").arg(summary);
    imports.sort();
    const QString names = QStringLiteral("'%1'").arg(imports.join(QStringLiteral("', '")));
    return (isOwn ? tr("This scene and what was imported from %1 hold code: %2.")
                  : tr("What was imported from %1 holds code: %2."))
        .arg(names, summary);
}

void kxCodeTrust::tell(const QString& file) const
{
    const auto count = std::size_t(std::count_if(_waiting.begin(), _waiting.end(),
                                                 [&](const kxSceneCode& piece) { return originOf(piece) == file; }));
    if (count == 0)
        return;
    QString name = called(file);
    name[0] = name[0].toUpper();
    const QString summary = kxSceneCode::summary(count);
    if (!_isUnattended && !_isAsking)
        return kxLog::info(tr("%1 holds code that you refused, and that doesn't run: %2.").arg(name, summary));
    kxLog::warning((_isUnattended ? tr("%1 holds code, which is skipped: %2. --trust lets it run.")
                                  : tr("%1 holds code: %2. It doesn't run until you say so, above the view."))
                       .arg(name, summary));
}

void kxCodeTrust::opened(const QString& path, const QString& source)
{
    _thisTime.clear();
    _origins.clear();
    _waiting.clear();
    _isAsking = false;
    _path = path;
    _source = source;
    imported(source);
}

void kxCodeTrust::imported(const QString& file)
{
    follow(file);
    tell(file);
}

void kxCodeTrust::answer(Answer answer)
{
    std::map<QString, std::vector<QByteArray>> code;
    QStringList said;
    for (const kxSceneCode& piece : _waiting)
    {
        bool isWhole = true;
        kxSceneCode::readable(piece.text, isWhole);
        if (isWhole || answer == Never)
            code[originOf(piece)].push_back(kxSceneCode::digest(piece.text));
        else
        {
            said << tr("Step %1 of the sequence \"%2\" is longer than what can be shown of it (%n characters), so "
                       "it isn't allowed.",
                       nullptr, kxSceneCode::MostShown)
                        .arg(piece.step)
                        .arg(QString::fromStdString(piece.sequence));
            kxLog::warning(said.back());
        }
    }
    for (const auto& [file, digests] : code)
    {
        if (answer == Always)
            _store.add(file, digests);
        else if (answer == ThisTime)
            _thisTime.unite(QSet<QByteArray>(digests.begin(), digests.end()));
        else
            _store.refuse(file, digests);
        said << (answer == Always     ? tr("Code of %1 may run from now on.")
                 : answer == ThisTime ? tr("Code of %1 may run until another scene is opened.")
                                      : tr("Code of %1 doesn't run, and isn't asked for again."))
                    .arg(called(file));
        kxLog::info(said.back());
    }
    _isAsking = false;
    follow(_source);
    Q_EMIT answered(said.join(QLatin1Char(' ')));
}

void kxCodeTrust::ask()
{
    _isAsking = !_waiting.empty();
    Q_EMIT changed();
}

void kxCodeTrust::revoke(const std::vector<kxTrustStore::File>& files)
{
    _store.remove(files);
    for (const kxTrustStore::File& file : files)
        kxLog::info((file.isRefused ? tr("Code of %1 is asked for again.") : tr("Code of %1 may no longer run."))
                        .arg(called(file.name)));
    _waiting.clear(); // whatever was answered
    follow(_source);
}

void kxCodeTrust::setTrusting(bool trusts)
{
    if (_isTrusting && !trusts) // what is open stays as it was
        for (const QByteArray& digest : digestsOf(kxSceneCode::of(kxScene::the()->sceneryRoot())))
            _thisTime.insert(digest);
    _isTrusting = trusts;
    follow(_source);
}

bool kxCodeTrust::isForeign(const QByteArray& digest)
{
    return (_foreign.contains(digest) || _store.isRefused(digest)) && !_store.contains(digest);
}

void kxCodeTrust::saved(const QString& file)
{
    std::vector<QByteArray> code;
    for (const QByteArray& digest : digestsOf(kxSceneCode::of(kxScene::the()->sceneryRoot())))
        if (_store.contains(digest) && !isIn(code, digest))
            code.push_back(digest);
    for (auto& [digest, origin] : _origins)
        if (origin == _source)
            origin = file;
    _path = _source = file;
    if (!_store.holds(file, code))
        _store.add(file, code);
    Q_EMIT changed();
}

void kxCodeTrust::written(const std::vector<kxSequenceStep>& before, const std::vector<kxSequenceStep>& after)
{
    const std::vector<kxSceneCode> old = kxSceneCode::of(before), now = kxSceneCode::of(after);
    const std::vector<QByteArray> kept = digestsOf(now);
    follow(_source); // the scene may have got code that nobody has told of yet
    bool isOfFile = false, mayRunAll = true;
    for (const kxSceneCode& piece : old)
        if (const QByteArray digest = kxSceneCode::digest(piece.text); isForeign(digest) && !isIn(kept, digest))
        {
            isOfFile = true;
            mayRunAll = mayRunAll && mayRun(piece.text);
        }
    std::vector<QByteArray> written;
    for (const QByteArray& digest : kept)
        if (!isForeign(digest) && !isIn(written, digest) && !_store.contains(digest))
            written.push_back(digest);
    if (!isOfFile && !written.empty())
        _store.add(_path, written);
    else if (isOfFile && mayRunAll)
        _thisTime.unite(QSet<QByteArray>(written.begin(), written.end()));
    Q_EMIT changed();
}
