#include <kxTexts.h>
#include <scenery/kxSequenceRunner.h>

#include <QtTest>

#include <map>

typedef kxSequenceStep::Kind Step;

namespace
{
kxSequenceStep make(Step kind, const char* name = "", const char* choice = "")
{
    return {kind, name, choice, 0};
}

kxSequenceStep wait(double seconds)
{
    return {Step::Wait, "", "", seconds};
}

/// Notes what steps do; the test moves the clock.
struct Theatre
{
    std::map<std::string, std::vector<kxSequenceStep>> sequences;
    std::map<std::string, unsigned> ids; // of those that were played
    QStringList done;
    std::map<unsigned, std::string> playing;
    double time = 100;
    kxSequenceRunner runner;
    std::function<void()> python; // what a script does

    Theatre() : runner(world()) {}
    /// What a step says that did this; of "gone" and "raise" that it failed.
    QString note(const char* what, const std::string& name)
    {
        done << QLatin1String(what) + QString::fromStdString(name);
        return name == "gone" || name == "raise" ? QString("it failed") : QString();
    }
    kxSequenceRunner::World world()
    {
        kxSequenceRunner::World w;
        w.showViewpoint = [this](const std::string& name) { return note("view ", name); };
        w.setVariant = [this](const std::string& set, const std::string& choice)
        { return note("set ", set + "/" + choice); };
        w.startClip = [this](const std::string& name, unsigned& id)
        {
            static unsigned next = 1;
            playing[id = next++] = name;
            return note("clip ", name);
        };
        w.isPlaying = [this](unsigned id) { return playing.count(id) != 0; };
        w.isEndless = [this](unsigned id) { return playing[id] == "endless"; };
        w.stopClip = [this](unsigned id)
        {
            note("stop ", playing[id]);
            playing.erase(id);
        };
        w.runPython = [this](const std::string& text, const std::string&)
        {
            if (python)
                python();
            return note("python ", text);
        };
        w.find = [this](const std::string& name, std::vector<kxSequenceStep>& steps, int&)
        {
            const auto found = sequences.find(name);
            if (found == sequences.end())
                return 0u;
            steps = found->second;
            return ids.emplace(name, unsigned(ids.size()) + 50).first->second;
        };
        w.nameOf = [this](unsigned id)
        {
            for (const auto& [name, own] : ids)
                if (own == id && sequences.count(name) != 0)
                    return name;
            return std::string();
        };
        w.now = [this] { return time; };
        return w;
    }
    void at(double seconds)
    {
        time = 100 + seconds;
        runner.update();
    }
};
} // namespace

class tst_kxSequenceRunner : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxLogModel::the().clear(); }

    void stepsFollowTheClock()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::ShowViewpoint, "1"), wait(2), make(Step::SetVariant, "D", "x"), wait(0),
                            make(Step::ShowViewpoint, "2")};
        QVERIFY(t.runner.start("a"));
        QVERIFY(t.done.isEmpty()); // never inside of the call, which may come out of an evaluation
        t.at(0);
        QCOMPARE(t.done, QStringList({"view 1"}));
        QCOMPARE(t.runner.currentStep("a"), 1);
        t.sequences["a"].clear(); // an edit doesn't disturb what runs
        t.at(1.99);
        QCOMPARE(t.done.size(), 1);
        t.at(2);
        QCOMPARE(t.done, QStringList({"view 1", "set D/x", "view 2"}));
        QVERIFY(t.runner.running().empty() && t.runner.currentStep("a") == -1 && t.runner.start("a"));
    }

    void nestedSequencesAreWaitedFor()
    {
        Theatre t;
        t.sequences["outer"] = {make(Step::PlaySequence, "inner"), make(Step::ShowViewpoint, "after"),
                                make(Step::PlaySequence, "inner")};
        t.sequences["inner"] = {wait(1), make(Step::PlaySequence, "core"), wait(1)};
        t.sequences["core"] = {make(Step::ShowViewpoint, "deep")};
        t.runner.start("outer");
        t.at(0);
        QVERIFY(t.done.isEmpty());
        QCOMPARE(t.runner.currentStep("inner"), 0);
        t.at(1);
        QCOMPARE(t.done, QStringList({"view deep"}));
        t.at(2);
        QCOMPARE(t.done, QStringList({"view deep", "view after"}));
        t.at(3);
        t.at(4);
        QCOMPARE(t.done, QStringList({"view deep", "view after", "view deep"}));
        QVERIFY(t.runner.running().empty() && kxLogged().isEmpty());

        for (int i = 1; i <= 64; ++i)
            t.sequences[std::to_string(i)] = {make(Step::PlaySequence, std::to_string(i + 1).c_str())};
        t.sequences["65"] = {make(Step::ShowViewpoint, "deepest")};
        t.runner.start("1");
        t.at(5);
        QVERIFY(t.done.size() == 3 && kxLogged().value(0).contains("64 deep"));
        t.runner.start("2");
        t.at(6);
        QCOMPARE(t.done.last(), QString("view deepest"));
    }

    void clipsAreWaitedFor()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::StartClip, "s"), make(Step::PlayClip, "p"), make(Step::ShowViewpoint, "after"),
                            make(Step::PlayClip, "endless"), make(Step::ShowViewpoint, "end")};
        t.runner.start("a");
        t.at(0);
        t.at(50);
        QCOMPARE(t.done, QStringList({"clip s", "clip p"}));
        t.playing.erase(std::prev(t.playing.end()));
        t.at(51);
        QCOMPARE(t.done, QStringList({"clip s", "clip p", "view after", "clip endless", "view end"}));
        QVERIFY(t.runner.running().empty());
        QCOMPARE(t.playing.size(), std::size_t(2)); // at the natural end, what was only started plays on
    }

    void badStepsAreSkippedAndNamed()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::ShowViewpoint, "gone"), make(Step::PlayClip, "gone"),
                            make(Step::RunPython, "raise"), make(Step::PlaySequence, "gone"),
                            make(Step::ShowViewpoint, "good")};
        QVERIFY(!t.runner.start("gone"));
        QVERIFY(kxLogged().value(0).contains("\"gone\""));
        t.runner.start("a");
        t.at(0);
        const QStringList log = kxLogged();
        QCOMPARE(log.size(), 4);
        for (int i = 0; i < log.size(); ++i)
            QVERIFY2(log[i].startsWith(QStringLiteral("Sequence \"a\", step %1: ").arg(i + 1)), qPrintable(log[i]));
        QCOMPARE(t.done.last(), QString("view good"));
    }

    void noSequencePlaysItself()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::PlaySequence, "a"), make(Step::PlaySequence, "b")};
        t.sequences["b"] = {make(Step::PlaySequence, "a"), make(Step::ShowViewpoint, "b")};
        t.runner.start("a");
        t.at(0);
        QCOMPARE(t.done, QStringList({"view b"}));
        const QStringList log = kxLogged();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[0].contains("play itself") && log[1].startsWith("Sequence \"b\", step 1: "));

        // A trigger that comes again and again starts it once.
        t.sequences["w"] = {make(Step::PlaySequence, "v")};
        t.sequences["v"] = {wait(1)};
        QVERIFY(t.runner.start("w"));
        t.at(0);
        QVERIFY(!t.runner.start("w") && !t.runner.start("v"));
        QCOMPARE(kxLogged().size(), 2);
        t.at(2);
        QVERIFY(t.runner.start("v"));
    }

    /// One turn does a part of it: the user may stop it.
    void sequencesOfSequencesLeaveTheUserTheirTurn()
    {
        Theatre t;
        for (char name = 'a'; name < 'k'; ++name)
            t.sequences[std::string(1, name)] =
                std::vector<kxSequenceStep>(10, make(Step::PlaySequence, std::string(1, char(name + 1)).c_str()));
        t.sequences["k"] = {make(Step::ShowViewpoint, "one of many")};
        QVERIFY(t.runner.start("a"));
        t.at(0);
        QVERIFY(t.done.size() > 100 && t.runner.running().size() == 1);
        QVERIFY(t.runner.stop("a"));
    }

    void stopEndsWhatPlays()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::StartClip, "s"), make(Step::PlayClip, "p"), make(Step::ShowViewpoint, "never")};
        t.sequences["b"] = {wait(1), make(Step::ShowViewpoint, "b")};
        t.runner.start("a");
        t.runner.start("b");
        t.at(0);
        QVERIFY(t.runner.stop("a") && !t.runner.stop("a") && !t.runner.stop(""));
        QVERIFY(t.playing.empty());
        t.at(1);
        QCOMPARE(t.done, QStringList({"clip s", "clip p", "stop s", "stop p", "view b"}));
        QVERIFY(t.runner.running().empty());
    }

    void stepsMayStartAndStop()
    {
        Theatre t;
        t.sequences["a"] = {make(Step::RunPython, "x"), make(Step::ShowViewpoint, "never")};
        t.sequences["b"] = {make(Step::ShowViewpoint, "b")};
        t.python = [&t]
        {
            t.runner.update(); // an event loop inside of the script
            t.runner.start("b");
            t.runner.stopAll();
            t.runner.start("b");
        };
        t.runner.start("a");
        t.at(0);
        QCOMPARE(t.done, QStringList({"python x", "view b"}));
        QVERIFY(t.runner.running().empty());
    }

    void deletedSequencesEnd()
    {
        Theatre t;
        const auto begin = [&t]
        {
            t.sequences["outer"] = {make(Step::StartClip, "c"), make(Step::PlaySequence, "inner"),
                                    make(Step::ShowViewpoint, "after")};
            t.sequences["inner"] = {wait(9), make(Step::ShowViewpoint, "never")};
            t.done.clear();
            QVERIFY(t.runner.start("outer"));
            t.at(0);
            QCOMPARE(t.done, QStringList({"clip c"}));
        };
        begin();
        t.sequences.erase("inner");
        t.at(1);
        QCOMPARE(t.done, QStringList({"clip c", "view after"}));
        QVERIFY(kxLogged().join(' ').contains("\"inner\" was deleted") && t.runner.running().empty());
        begin();
        t.sequences.erase("outer");
        QSignalSpy changed(&t.runner, &kxSequenceRunner::changed);
        t.at(1);
        QCOMPARE(t.done, QStringList({"clip c", "stop c"}));
        QVERIFY(t.runner.running().empty() && changed.size() == 1);
        t.at(20);
        QCOMPARE(t.done.size(), 2);
        begin();
        t.sequences["new"] = t.sequences["outer"]; // another name is no deletion
        t.sequences.erase("outer");
        t.ids["new"] = t.ids["outer"];
        t.at(1);
        QCOMPARE(t.runner.running(), std::vector<std::string>{"new"});
        QVERIFY(t.runner.stop("new"));
    }
};

QTEST_GUILESS_MAIN(tst_kxSequenceRunner)
#include "tst_kxSequenceRunner.moc"
