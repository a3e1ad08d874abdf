#include "kxSceneFixture.h"

#include <apart/kxPictures.h>
#include <app/kxCodeDialog.h>
#include <app/kxMainWindow.h>
#include <edits/kxSceneryEdits.h>
#include <files/apart/kxReaderProcess.h>
#include <files/kxSceneIO.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <journal/kxVersions.h>
#include <kxAnimFixture.h>
#include <kxFramePlayer.h>
#include <kxTexts.h>
#include <osg/FieldContainerFactory.h>
#include <panels/kxSceneryPanel.h>
#include <python/kxInterpreter.h>
#include <scene/kxScenery.h>
#include <scenery/kxSceneryStage.h>
#include <trust/kxCodeTrust.h>

#include <QtWidgets>

using namespace kxSceneFixture;
typedef std::vector<kxSequenceStep> Steps;

namespace
{
int testNumber = 0; ///< a file's code stays one for the life of the process

/// Each prints its letter.
Steps code(const char* letters)
{
    Steps steps;
    for (const char* letter = letters; *letter != 0; ++letter)
        steps.push_back({kxSequenceStep::Kind::RunPython,
                         std::string("print('") + *letter + "') # " + std::to_string(testNumber), "", 0});
    return steps;
}

std::vector<osg::NodePtr> sequences()
{
    return kxScenery::all(kxScenery::Kind::Sequence);
}
} // namespace

/// Code that comes with a file, in the window of who opens it.
class tst_kxCodeTrust : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(kxInterpreter::start()); }

    void init()
    {
        ++testNumber;
        _folder.reset(new QTemporaryDir);
        qputenv("KX_SETTINGS_DIR", QFile::encodeName(_folder->path()));
        clear();
        _window.reset(new kxMainWindow);
        _window->finishLayout();
        _window->document().dialogs() = kxDocument::Dialogs();
        _window->document().newScene();
        _window->show();
        kxLogModel::the().clear();
    }

    void cleanup() { _window.reset(); }

    void answers_data()
    {
        kxColumns<QString, QString, bool, QString>("button", "now", "asks", "later");
        kxRow("none", "", "", true, "");
        kxRow("never", "_trustNever", "", false, "");
        kxRow("this time", "_trustThisTime", "ab", false, "");
        kxRow("always", "_trustAlways", "ab", false, "ab");
    }

    void answers()
    {
        QFETCH(QString, button);
        QFETCH(QString, later);
        const QString path = stranger("door.kxs", "ab");
        open(path);
        QCOMPARE(ran(), QString());
        QVERIFY(isAsking() && text("_trustText").contains("This scene holds code: 2 sequence steps in Python"));
        QVERIFY(text("_trustText").contains("delete your files"));
        QCOMPARE(kxLogged().filter("'door.kxs' holds code").size(), 1);
        if (!button.isEmpty())
        {
            bar()->findChild<QPushButton*>(button)->click();
            QVERIFY(_window->statusBar()->currentMessage().startsWith("Code of 'door.kxs' "));
        }
        QTEST(ran(), "now");
        QTEST(isAsking(), "asks");
        const bool isRefused = button == "_trustNever";
        QCOMPARE(bar()->isVisible(), button.isEmpty() || isRefused);
        if (isRefused)
            QCOMPARE(text("_trustText"), QString("Code of this file doesn't run."));
        _window->findChild<QAction*>("_actionCodeofThisScene")->trigger(); // asks again
        QTEST(isAsking() ? QString() : QString("ab"), "now");

        // A file that was moved is the same one; one that somebody changed isn't.
        const QString moved = _folder->filePath("moved.kxs");
        QVERIFY(QFile::rename(path, moved));
        open(moved);
        QCOMPARE(ran(), later);
        QCOMPARE(isAsking(), later.isEmpty() && !isRefused);
        open(stranger("door.kxs", "ac"));
        QCOMPARE(ran(), later.left(1));
        QVERIFY(isAsking());
        if (!isRefused)
            return;
        open(moved);
        _window->openPreferences("Security"); // takes it back
        const auto* const list = _window->findChild<QTreeWidget*>("_trustedFiles");
        QCOMPARE(list->topLevelItem(0)->text(1), QString("never"));
        QFile stored(_folder->filePath("trusted.json"));
        QVERIFY(stored.open(QIODevice::ReadOnly) &&
                stored.readAll().contains(list->topLevelItem(0)->text(3).left(12).toUtf8()));
        _window->findChild<QAbstractButton*>("_removeAllTrusted")->click();
        QVERIFY(isAsking() && kxLogged().filter("is asked for again").size() == 1);
    }

    void whatIsWrittenHereRuns()
    {
        kxSceneryEdits::addSequence(code("a"));
        QVERIFY(_window->document().saveTo(_folder->filePath("own.kxs")));
        kxSceneryEdits::setSteps(sequences().front(), code("ba"));
        QCOMPARE(ran(), QString("ba"));
        recover("own.kxs");
        QVERIFY(ran() == "ba" && !bar()->isVisible());
        kxFileReport lost(_folder->filePath("lost.kxs"));
        QVERIFY(kxSceneIO::save(lost.file(), lost));
        open(_folder->filePath("own.kxs"));
        QCOMPARE(ran(), QString("a"));
        QVERIFY(_window->document().openCopy(lost.file(), "own.kxs"));
        QVERIFY(ran() == "ba" && !bar()->isVisible());

        // What was written in a scene without a file becomes the file's.
        _window->document().startOver();
        kxSceneryEdits::addSequence(code("c"));
        _window->openPreferences("Security");
        const auto* const list = _window->findChild<QTreeWidget*>("_trustedFiles");
        QCOMPARE(kxTexts(list->model()), QStringList({"Written here, in no file yet", "own.kxs"}));
        QVERIFY(_window->document().saveTo(_folder->filePath("third.kxs")));
        QCOMPARE(kxTexts(list->model()), QStringList({"third.kxs", "own.kxs"}));
        QAbstractButton* const remove = _window->findChild<QAbstractButton*>("_removeTrusted");
        QVERIFY(!remove->isEnabled());
        list->topLevelItem(0)->setSelected(true);
        remove->click();
        QVERIFY(ran().isEmpty() && bar()->isVisible());
        open(_folder->filePath("own.kxs"));
        QCOMPARE(ran(), QString("a"));
        _window->findChild<QAbstractButton*>("_removeAllTrusted")->click();
        QVERIFY(ran().isEmpty() && bar()->isVisible() && list->topLevelItemCount() == 0);
    }

    void whatAnotherRunRefusedStaysRefused()
    {
        QFile stored(_folder->filePath("trusted.json"));
        QVERIFY(stored.open(QIODevice::WriteOnly));
        const QByteArray digest = kxSceneCode::digest(code("a")[0].name).toHex();
        stored.write("{\"files\": [{\"name\": \"/x/door.kxs\", \"refused\": [\"" + digest + "\"]}]}");
        stored.close();
        kxSceneryEdits::addSequence(code("ab"));
        kxScene::the()->flush();
        QVERIFY(ran() == "b" && bar()->isVisible() && !isAsking());
        bar()->findChild<QPushButton*>("_trustAgain")->click();
        QVERIFY(isAsking());
        bar()->findChild<QPushButton*>("_trustAlways")->click();
        QCOMPARE(ran(), QString("ab"));
    }

    void readersMayTakeMemory()
    {
        _window->openPreferences("Security");
        _window->findChild<QSpinBox*>("_readerMemory")->setValue(3);
        _window->findChild<QSpinBox*>("_pictureMemory")->setValue(5);
        _window->findChild<QDialog*>("_preferencesDialog")->accept();
        QCOMPARE(kxReaderProcess::rules().memory, 3 * kxReaderProcess::Gigabyte);
        QCOMPARE(kxPictures::rules().memory, 5 * kxReaderProcess::Gigabyte);
        _window->openPreferences("Security");
        _window->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->click();
        _window->findChild<QDialog*>("_preferencesDialog")->accept();
        QCOMPARE(kxReaderProcess::rules().memory, kxReaderProcess::Rules().memory);
        QCOMPARE(kxPictures::rules().memory, kxPictures::Rules().memory);
    }

    void anImportWaitsAlone()
    {
        const QString path = stranger("door.kxs", "bc");
        kxSceneryEdits::addSequence(code("a"), "Own");
        QVERIFY(_window->document().importFile(path));
        QCOMPARE(ran(), QString("a"));
        QVERIFY(text("_trustText").contains("What was imported from 'door.kxs' holds code: 2 "));
        QString reason;
        const qint64 version = kxVersions::the().keep("with the door", reason);
        kxHistory::the().undo();
        kxScene::the()->flush();
        QVERIFY(!bar()->isVisible() && ran() == "a");
        kxFileReport report(path);
        QVERIFY(version != 0 && kxVersions::the().goTo(version, report));
        kxScene::the()->flush();
        QVERIFY(bar()->isVisible() && ran() == "a" && sequences().size() == 2);
        kxLogModel::the().clear();
        recover("");
        QVERIFY(!kxLogged().join(QString()).contains("''"));
        QVERIFY(bar()->isVisible() && ran() == "a" && sequences().size() == 2);

        // Nothing that is done to it lets it run; what is put beside it does.
        const osg::NodePtr there = sequences().back();
        kxSceneryEdits::setSteps(there, code("dc"));
        kxSceneryEdits::addSequence(kxScenery::steps(there));
        kxSceneryEdits::duplicate({there});
        QCOMPARE(ran(), QString("a"));
        kxSceneryEdits::setSteps(there, code("dce"));
        QCOMPARE(ran(), QString("ae"));
        kxScene::the()->flush(); // the answer is for what the question named
        bar()->findChild<QPushButton*>("_trustThisTime")->click();
        kxSceneryEdits::setSteps(there, code("fce")); // from something that may run this time only
        QCOMPARE(ran(), QString("afcedcdc"));
        QVERIFY(_window->document().saveTo(_folder->filePath("both.kxs")));
        open(_folder->filePath("both.kxs"));
        QCOMPARE(ran(), QString("ae"));
    }

    void whatAFileBroughtStaysItsOwn_data()
    {
        kxColumns<QString>("goes");
        for (const char* goes : {"sequence", "scene", "trusting"})
            QTest::newRow(goes) << goes;
    }

    /// Steps that a script or the clipboard keeps while their scene goes.
    void whatAFileBroughtStaysItsOwn()
    {
        QFETCH(QString, goes);
        const QString path = stranger("door.kxs", "ab");
        if (goes == "trusting")
            kxCodeTrust::the().setTrusting(true);
        open(path);
        const Steps steps = kxScenery::steps(sequences().front());
        if (goes == "sequence")
            kxSceneryEdits::remove({sequences().front()});
        else
            _window->document().startOver();
        kxSceneryEdits::addSequence(steps, "Merged");
        kxSceneryEdits::addSequence(code("c"));
        kxCodeTrust::the().setTrusting(false);
        QVERIFY(_window->document().saveTo(_folder->filePath("merged.kxs")));
        open(_folder->filePath("merged.kxs"));
        QCOMPARE(ran(), QString("c"));
        bar()->findChild<QPushButton*>("_trustAlways")->click();
        QCOMPARE(ran(), QString("abc"));
    }

    void whatIsSkippedIsSaidOnceAPlay()
    {
        open(stranger("door.kxs", "ab"));
        const osg::AnimNodePtr clip = kxAnimFixture::clip("clip", {kxAnimFixture::trigger("Door", 1, false, false)});
        kxAnimManager::the()->addToClipStructure(clip);
        kxLogModel::the().clear();
        const kxTriggers::Playing playing(kxAnimFixture::engine().triggers);
        kxFramePlaybackParams params;
        params.end = 9;
        for (int play = 0; play < 2; ++play)
        {
            kxFramePlayer::the()->start(params, true, this);
            for (const double frame : {0, 40, 0, 40, 0, 40})
            {
                kxAnimManager::the()->evaluateByFrame(clip, frame, false, true, true);
                _window->stage()->runner().update();
            }
            kxFramePlayer::the()->stop(this);
            const QStringList lines = kxLogged();
            QVERIFY2(lines.size() == 1 && lines[0].contains("\"Door\", step 1: skipped"), qPrintable(lines.join('|')));
        }
    }

    void theCodeIsShown()
    {
        open(stranger("door.kxs", "ab"));
        bar()->findChild<QPushButton*>("_trustShow")->click();
        auto* const dialog = _window->findChild<kxCodeDialog*>();
        auto* const list = dialog->findChild<QListWidget*>();
        QCOMPARE(kxTexts(list->model()), QStringList({"Door, step 1 (skipped)", "Door, step 2 (skipped)"}));
        list->setCurrentRow(1);
        QCOMPARE(dialog->findChild<QPlainTextEdit*>()->toPlainText().toStdString(), code("b")[0].name);
        kxSceneryPanel* const scenery = _window->findChild<kxSceneryPanel*>();
        scenery->select(sequences().front().getFieldContainerId());
        const QModelIndex step = scenery->findChild<QAbstractItemView*>("_stepList")->model()->index(1, 1);
        QVERIFY(step.data(Qt::ToolTipRole).toString().startsWith("Skipped") && step.data(Qt::ForegroundRole).isValid());
        auto* const always = dialog->findChild<QPushButton*>("_codeAlways");
        QVERIFY(always->isVisible());
        always->click();
        QVERIFY(!always->isVisible());
        QVERIFY(step.data(Qt::ToolTipRole).toString().startsWith("print('b')") &&
                !step.data(Qt::ForegroundRole).isValid());
        QCOMPARE(kxTexts(list->model()), QStringList({"Door, step 1", "Door, step 2"}));
        // Nothing hides from who reads it.
        QCOMPARE(kxCodeDialog::readable("a\t\n\u00e9\xe2\x80\xae"
                                        "b\r\xe2\x80\x8b\xf0\x9f\x98\x80"),
                 QString::fromUtf8("a\t\n\u00e9<U+202e>b<U+000d><U+200b>\xf0\x9f\x98\x80"));
        QCOMPARE(kxCodeDialog::readable("\ufe0f\u034f\u00a0\u3164\u20dd\U000e0100 \u4e2d"),
                 QString::fromUtf8("<U+fe0f><U+034f><U+00a0><U+3164><U+20dd><U+e0100> \u4e2d"));
    }

    /// What runs is what was shown, whatever its first line says of its letters.
    void whatIsShownRuns()
    {
        Steps steps = code("a");
        steps[0].name += "\n# coding: utf-7\n# +AAo-print('h')";
        steps.insert(steps.begin(),
                     {kxSequenceStep::Kind::RunPython, "# coding: unicode_escape\n#\\x0aprint('h')", "", 0});
        Steps far = code("f");
        far[0].name.insert(0, std::string(200000, ' ') + '\n'); // out of sight
        steps.push_back(far[0]);
        open(stranger("door.kxs", steps));
        kxLogModel::the().clear();
        bar()->findChild<QPushButton*>("_trustAlways")->click();
        QCOMPARE(ran(), QString("a"));
        QVERIFY(kxLogged()[0].contains("Step 3 of the sequence \"Door\" is longer"));
    }

private:
    QWidget* bar() const { return _window->findChild<QWidget*>("_trustBar"); }
    bool isAsking() const { return bar()->findChild<QWidget*>("_trustNever")->isVisible(); }
    QString text(const char* label) const { return _window->findChild<QLabel*>(label)->text(); }
    void open(const QString& path) { QVERIFY(_window->document().openFile(path)); }

    /// A file that somebody else made; the open scene is empty then.
    QString stranger(const char* name, const char* letters) { return stranger(name, code(letters)); }
    QString stranger(const char* name, const Steps& steps)
    {
        _window->document().startOver();
        kxSceneryEdits::addSequence({}, "Door");
        osg::SceneSequencePtr::dcast(sequences().front()->getCore())->setSteps(kxScenery::stepTexts(steps));
        kxFileReport report(_folder->filePath(name));
        if (!kxSceneIO::save(report.file(), report))
            qFatal("%s", qPrintable(report.message()));
        _window->document().startOver();
        return report.file();
    }

    /// The scene as a crash leaves it.
    void recover(const char* name)
    {
        const QString journal = _folder->filePath("journal.db");
        QFile::remove(journal);
        kxJournal::the().start(journal);
        kxJournal::the().stop();
        _window->document().startOver();
        kxRecovery recovery(journal);
        QVERIFY(_window->document().openRecovered(recovery, *name == 0 ? QString() : _folder->filePath(name)));
    }

    /// What all sequences print, each run once.
    QString ran()
    {
        QString all;
        const int listener = kxInterpreter::addListener([&all](kxInterpreter::Stream, const std::string& written)
                                                        { all += QString::fromStdString(written).trimmed(); });
        for (const osg::NodePtr& sequence : sequences())
        {
            _window->stage()->run(sequence);
            _window->stage()->runner().update();
        }
        kxInterpreter::removeListener(listener);
        return all;
    }

    std::unique_ptr<QTemporaryDir> _folder;
    std::unique_ptr<kxMainWindow> _window;
};

QTEST_MAIN(tst_kxCodeTrust)
#include "tst_kxCodeTrust.moc"
