#include "kxSceneFixture.h"

#include <app/kxDocument.h>
#include <journal/kxHistory.h>
#include <journal/kxVersions.h>
#include <kxTexts.h>
#include <osg/AnimAttachments.h>

using namespace kxSceneFixture;

/// Whether something is lost, and what a save writes over.
class tst_kxDocument : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        clear();
        _document.reset(new kxDocument);
        _answer = kxDocument::Cancel;
        _asked.clear();
        _chosen.clear();
        _document->dialogs().askToSave = [this](const QString& name)
        {
            _asked << name;
            return _answer;
        };
        _document->dialogs().askForPath = [this](const QString&) { return _chosen; };
        _document->newScene();
    }

    void mayLeave_data()
    {
        kxColumns<int, QString, bool, bool>("answer", "chosen", "leaves", "file");
        QTest::newRow("saves") << int(kxDocument::Save) << "a.kxs" << true << true;
        QTest::newRow("saves, then chooses no file") << int(kxDocument::Save) << "" << false << false;
        QTest::newRow("saves where it can't") << int(kxDocument::Save) << "no/such/folder/a.kxs" << false << false;
        QTest::newRow("doesn't save") << int(kxDocument::Discard) << "" << true << false;
        QTest::newRow("goes back") << int(kxDocument::Cancel) << "" << false << false;
    }

    void mayLeave()
    {
        QFETCH(int, answer);
        QFETCH(QString, chosen);
        QFETCH(bool, leaves);
        QFile::remove(path("a.kxs"));
        QVERIFY(_document->mayLeave() && _asked.isEmpty()); // nothing to lose
        edit();
        _answer = kxDocument::Answer(answer);
        _chosen = chosen.isEmpty() ? QString() : _folder.filePath(chosen);
        QCOMPARE(_document->newScene(), leaves);
        QCOMPARE(_asked.size(), 1);
        QCOMPARE(kxScene::the()->root()->getNChildren(), leaves ? 0u : 1u);
        QCOMPARE(_document->isUnsaved(), !leaves);
        QTEST(QFile::exists(path("a.kxs")), "file");
    }

    void takenBack_data()
    {
        kxColumns<QString>("work");
        for (const char* const work : {"open", "import", "save", "export"})
            kxRow(work, work);
    }

    /// In the middle or at the end: the scene, its history and all files are as they were.
    void takenBack()
    {
        QFETCH(QString, work);
        addObject("Saved");
        QVERIFY(_document->saveTo(path("taken.kxs")) && _document->exportTo(path("taken.glb")));
        edit();
        QCoreApplication::processEvents();
        const auto run = [&]
        {
            return work == "open"     ? _document->openFile(path("taken.kxs"))
                   : work == "import" ? _document->importFile(path("taken.kxs"))
                   : work == "save"   ? _document->saveTo(path("taken.kxs"))
                                      : _document->exportTo(path("taken.glb"));
        };
        const auto state = [this]
        {
            QStringList all(QDir(_folder.path()).entryList(QDir::AllEntries | QDir::Hidden));
            for (const char* const name : {"taken.kxs", "taken.glb"})
            {
                QFile file(path(name));
                all << QString::fromLatin1(file.open(QIODevice::ReadOnly) ? file.readAll().toHex() : QByteArray());
            }
            all << QString::number(kxHistory::the().count()) << QString::number(kxScene::the()->root()->getNChildren());
            return all << _document->path() << QString::number(_document->isUnsaved());
        };
        const QStringList before = state();
        _answer = kxDocument::Discard;
        QStringList told;
        double last = 0;
        _document->dialogs().tell = [&told](const QString& text) { told << text; };
        _document->dialogs().showError = [&told](const QString& text, const kxFileReport&)
        { told << "error: " + text; };
        for (const double end : {0.0, 1.0})
        {
            _document->dialogs().goesOn = [end](const QString&, double share) { return share < end; };
            QVERIFY(!run());
            QCOMPARE(state(), before);
        }
        QVERIFY2(told.size() == 2 && told[0].contains("aken.") && told[0] == told[1] && told[0].contains("Cancelled"),
                 qPrintable(told.join('\n')));
        _document->dialogs().goesOn = [&last](const QString&, double share)
        {
            last = share < last ? 2 : share;
            return true;
        };
        QVERIFY(run() && state() != before);
        QCOMPARE(last, 1.0);
    }

    void whatMakesUnsaved()
    {
        const osg::NodePtr node = addObject("Node");
        animate(node);
        QCoreApplication::processEvents();
        QVERIFY(_document->saveTo(path("b.kxs")));
        QCoreApplication::processEvents();
        QVERIFY(!_document->isUnsaved());

        kxSelection::the().selectNodes({node});
        kxAnimManager::the()->setCurrentFrame(12, true, true); // writes into the object
        QCoreApplication::processEvents();
        QVERIFY(!_document->isUnsaved());

        kxSceneEdits::rename(node, "Other");
        QVERIFY(_document->isUnsaved());
        stack()->undo();
        QVERIFY(!_document->isUnsaved());
        stack()->redo();
        QVERIFY(_document->isUnsaved() && _document->save() && !_document->isUnsaved());
        stack()->undo(); // back over the place of the save
        QVERIFY(_document->isUnsaved());
        stack()->redo();

        // A bar that is dragged: an edit of an animation that is no step.
        std::vector<osg::AnimNodePtr> curves;
        kxAnimManager::the()->getChannelCurveNodes(node, curves);
        QCOMPARE(curves.size(), std::size_t(1));
        curves[0]->moveBy(1, 0);
        osg::markChanged(curves[0], osg::AnimNode::OffsetFieldMask);
        QCoreApplication::processEvents();
        QVERIFY(_document->isUnsaved());
        stack()->undo();
        stack()->redo();
        QVERIFY(_document->isUnsaved()); // steps don't take it back

        QVERIFY(_document->save() && !_document->isUnsaved());
        osg::markChanged(node->findAttachment<osg::AnimAttachment>(), osg::AnimAttachmentBase::AnimationRootFieldMask);
        QCoreApplication::processEvents();
        QVERIFY(!_document->isUnsaved()); // a mark alone changes nothing
        node->subAttachment(node->findAttachment<osg::AnimAttachment>());
        osg::markChanged(node, osg::AttachmentContainer::AttachmentsFieldMask);
        QVERIFY(_document->isUnsaved()); // an animation that left an object beside the stack
        kxHistory::the().undo();
        QVERIFY(!_document->isUnsaved());

        // The saved state went with the steps that led on from another one.
        QVERIFY(_document->save() && !_document->isUnsaved());
        stack()->undo();
        kxSceneEdits::rename(node, "Third");
        stack()->setIndex(0);
        QVERIFY(_document->isUnsaved());
    }

    void posesAreNamed()
    {
        const osg::NodePtr door = addObject("Door"), other = addObject("Other");
        animate(door);
        const auto core = osg::TransformPtr::dcast(door->getCore());
        const auto setX = [&](double x) { kxSceneEdits::setComponent({core}, "translation", 0, RelativeSet, x); };
        const auto said = [](const char* words)
        {
            QCoreApplication::processEvents();
            return kxLogged().filter(QLatin1String(words)).filter(QStringLiteral("'Door'")).size();
        };
        kxAnimManager::the()->setCurrentFrame(6, true, true);
        said("");
        kxSceneEdits::setComponent({core}, "translation", 1, RelativeSet, 4); // no curve moves it
        kxSceneEdits::setComponent({other->getCore()}, "translation", 0, RelativeSet, 4);
        QVERIFY(said("animated") == 0 && _document->saveTo(path("p.kxs")) && said("keyed") == 0);
        setX(7);
        QCOMPARE(said("is lost at the next frame"), 1);
        setX(8);
        QCOMPARE(said("animated"), 0); // once
        kxSelection::the().selectNodes({other});
        QCOMPARE(said("animated"), 0);
        core->setTranslation(osg::Vec3f(9, 4, 0)); // as scripts do
        osg::markChanged(core, osg::Transform::TranslationFieldMask);
        QCOMPARE(said("animated"), 1);
        QVERIFY(_document->save());
        QCOMPARE(said("Saved without"), 1);
        QString reason;
        kxFileReport report{QString()};
        const qint64 version = kxVersions::the().keep(QString(), reason);
        QVERIFY(kxVersions::the().goTo(version, report));
        QCOMPARE(said("No version has"), 1);
        QVERIFY(_document->save() && said("Saved without") == 0);
    }

    void settingsMakeUnsaved()
    {
        kxAnimManager& manager = *kxAnimManager::the();
        const auto unsavedBy = [&](auto set, auto other, auto present)
        {
            _asked.clear();
            _answer = kxDocument::Cancel;
            kxScene::the()->flush();
            QSignalSpy changed(_document.data(), &kxDocument::changed); // what the title follows
            (manager.*set)(other);
            QVERIFY(_document->isUnsaved() && !_document->mayLeave() && _asked.size() == 1);
            kxScene::the()->flush();
            QVERIFY(changed.size() == 1 && _document->isUnsaved());
            kxHistory::the().undo();
            QVERIFY(changed.size() == 2 && !_document->isUnsaved());
            kxHistory::the().redo();
            QVERIFY(_document->saveTo(path("s.kxs")) && !_document->isUnsaved());
            (manager.*set)(present);
            QVERIFY(_document->isUnsaved());
            _answer = kxDocument::Discard;
            QVERIFY(_document->openFile(path("s.kxs")));
            kxScene::the()->flush();
            QVERIFY(!_document->isUnsaved());
            (manager.*set)(present);
            QVERIFY(_document->save());
        };
        unsavedBy(&kxAnimManager::setFPS, 30.0, 24.0);
        unsavedBy(&kxAnimManager::setPlaybackFPS, -1.0, 24.0);
        unsavedBy(&kxAnimManager::setFullRangeEnd, 80, 50);
        unsavedBy(&kxAnimManager::setDetailedRangeStart, 7, 0);
        unsavedBy(&kxAnimManager::setLoopTimeline, false, true);
    }

    void sourceOfAnotherProgramIsNotSavedOver()
    {
        edit();
        _answer = kxDocument::Discard; // an export saves nothing
        QVERIFY(_document->exportTo(path("g.glb")) && _document->isUnsaved());
        QVERIFY(_document->openFile(path("g.glb")));
        QCOMPARE(_document->path(), QString());
        QCOMPARE(_document->name(), QString("g.glb"));
        QString proposed;
        _document->dialogs().askForPath = [&proposed](const QString& proposal)
        {
            proposed = proposal;
            return QString();
        };
        QVERIFY(!_document->save());
        QCOMPARE(proposed, path("g"));
    }

private:
    QString path(const char* name) const { return _folder.filePath(QString::fromLatin1(name)); }
    static void edit() { kxSceneEdits::addNode(kxSceneEdits::makeNode(osg::Transform::create(), "N"), {}, "Add"); }

    QTemporaryDir _folder;
    QScopedPointer<kxDocument> _document;
    QStringList _asked;
    kxDocument::Answer _answer = kxDocument::Cancel;
    QString _chosen;
};

QTEST_MAIN(tst_kxDocument)
#include "tst_kxDocument.moc"
