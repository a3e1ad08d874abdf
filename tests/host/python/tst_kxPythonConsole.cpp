#include <kxAnswer.h>
#include <python/kxConsoleHistory.h>
#include <python/kxConsoleLook.h>
#include <python/kxInterpreter.h>
#include <python/kxPromptInput.h>
#include <python/kxPythonConsole.h>
#include <python/kxPythonEditor.h>
#include <python/kxPythonPrompt.h>

#include <Qsci/qscilexerpython.h>
#include <QtTest>
#include <QtWidgets>

class tst_kxPythonConsole : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(kxInterpreter::start()); }

    void historyKeepsTheDraft()
    {
        kxConsoleHistory history;
        QCOMPARE(history.previous("draft"), QString("draft"));
        for (const char* text : {"one", "two", "two", "  "})
            history.add(text);
        QCOMPARE(history.previous("draft"), QString("two"));
        QCOMPARE(history.previous("two"), QString("one"));
        QCOMPARE(history.previous("one"), QString("one"));
        QCOMPARE(history.next("one"), QString("two"));
        QCOMPARE(history.next("two"), QString("draft"));
        QCOMPARE(history.next("draft"), QString("draft"));
        for (int i = 0; i < 2 * kxConsoleHistory::Capacity; ++i)
            history.add(QString::number(i));
        QString text;
        for (int i = 0; i < 2 * kxConsoleHistory::Capacity; ++i)
            text = history.previous(text);
        QCOMPARE(text, QString::number(kxConsoleHistory::Capacity));
    }

    void typingABlock()
    {
        kxPythonPrompt prompt;
        kxPromptInput* const input = prompt.findChild<kxPromptInput*>();
        const int oneLine = input->height();
        QTest::keyClicks(input, "for i in range(2):");
        QTest::keyClick(input, Qt::Key_Home); // the line goes on at its end
        QTest::keyClick(input, Qt::Key_Return);
        QCOMPARE(input->toPlainText(), QString("for i in range(2):\n    "));
        QVERIFY(input->height() > oneLine);
        QTest::keyClicks(input, "print('i is', i)");
        QTest::keyClick(input, Qt::Key_Return);
        QCOMPARE(input->blockCount(), 3);
        QTest::keyClick(input, Qt::Key_Return); // the empty line ends the block
        QCOMPARE(input->toPlainText(), QString());
        QCOMPARE(input->height(), oneLine);
        QVERIFY2(prompt.text().endsWith(">>> for i in range(2):\n...     print('i is', i)\ni is 0\ni is 1\n"),
                 qPrintable(prompt.text()));
        QTest::keyClick(input, Qt::Key_Up);
        QCOMPARE(input->toPlainText(), QString("for i in range(2):\n    print('i is', i)"));
    }

    void tabCompletes()
    {
        kxPythonPrompt prompt;
        prompt.show();
        kxPromptInput* const input = prompt.findChild<kxPromptInput*>();
        QTest::keyClicks(input, "len(isinst");
        QTest::keyClick(input, Qt::Key_Tab);
        QCOMPARE(input->toPlainText(), QString("len(isinstance"));
        QTest::keyClick(input, Qt::Key_Tab); // the name is complete
        QCOMPARE(input->toPlainText(), QString("len(isinstance"));
        input->clear();
        QTest::keyClick(input, Qt::Key_Tab); // there is no name
        QCOMPARE(input->toPlainText(), QString("    "));
        input->clear();
        QTest::keyClicks(input, "str.is");
        QTest::keyClick(input, Qt::Key_Tab); // several fit: none is chosen
        QCOMPARE(input->toPlainText(), QString("str.is"));
        auto* const names = input->findChild<QCompleter*>()->popup();
        QVERIFY(names->isVisible() && names->model()->rowCount() > 5);
        QTest::keyClick(names, Qt::Key_Down);
        QTest::keyClick(names, Qt::Key_Return);
        QCOMPARE(input->toPlainText(), QString("str.isalnum"));
    }

    void outputFollowsItsStatement()
    {
        kxPythonPrompt prompt;
        prompt.clear();
        QVERIFY(prompt.run("print('first')"));
        QVERIFY(prompt.run("1 / 0"));
        QVERIFY(!prompt.run("if True:"));
        QVERIFY(prompt.run("import sys; sys.exit(4)"));
        const QString text = prompt.text();
        QVERIFY2(text.startsWith(">>> print('first')\nfirst\n>>> 1 / 0\nTraceback"), qPrintable(text));
        QVERIFY2(!text.contains("if True") && text.endsWith("ended with code 4.\n"), qPrintable(text));
        // Errors and output keep their colours in turn.
        const auto isError = [&prompt](const char* word)
        {
            const QTextCursor found = prompt.findChild<QPlainTextEdit*>()->document()->find(word);
            return !found.isNull() && found.charFormat().foreground().color() == kxConsoleLook::error();
        };
        for (const auto& [kind, words] : {std::make_pair(kxPythonPrompt::Error, "one "),
                                          {kxPythonPrompt::Output, "two "},
                                          {kxPythonPrompt::Error, "three "}})
            prompt.append(kind, words);
        QVERIFY(!prompt.text().contains("one")); // gathered, to be written at once
        prompt.flush();
        QVERIFY(isError("one") && !isError("two") && isError("three"));
        QVERIFY(kxInterpreter::run("print('elsewhere')").ok);
        QTRY_VERIFY(prompt.text().endsWith("elsewhere\n"));
    }

    void errorMarksItsLine()
    {
        constexpr int ErrorMarks = 1 << 1;
        kxPythonConsole console;
        console.editor()->setText("def f():\n    return [][0]\n\nf()\n");
        console.runScript();
        QCOMPARE(console.editor()->markerFindNext(0, ErrorMarks), 1);
        QVERIFY2(console.prompt()->text().contains("IndexError"), qPrintable(console.prompt()->text()));
        QCOMPARE(console.prompt()->text().count("IndexError"), 1);
        console.editor()->setText("x = 1\n");
        QCOMPARE(console.editor()->markerFindNext(0, ErrorMarks), -1);
        // What a word is can be seen.
        QSet<QRgb> colors;
        for (const int style :
             {QsciLexerPython::Default, QsciLexerPython::Comment, QsciLexerPython::Number, QsciLexerPython::Keyword,
              QsciLexerPython::DoubleQuotedString, QsciLexerPython::ClassName, QsciLexerPython::Decorator,
              QsciLexerPython::UnclosedString})
        {
            colors << console.editor()->lexer()->color(style).rgb();
            QCOMPARE(console.editor()->lexer()->font(style).family(), kxConsoleLook::font().family());
        }
        QCOMPARE(colors.size(), 8);
    }

    void scriptsOfTheEditor()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("a.py");
        kxPythonConsole console;
        const auto title = [&console] { return console.findChild<QToolBar*>()->findChild<QLabel*>()->text(); };
        QVERIFY(console.mayClose() && title().contains("New script") && !title().contains('*')); // nothing to lose
        console.editor()->setText("if True:\n    pass");
        QVERIFY(title().contains("New script *"));
        QString asked;
        kxAnswer<QMessageBox>(
            [&asked](QMessageBox& box)
            {
                asked = box.text();
                box.button(QMessageBox::Cancel)->click();
            });
        QVERIFY(!console.mayClose() && asked.contains("not saved"));
        QVERIFY(console.saveScript(file) && console.mayClose() && title().contains("a.py") && !title().contains('*'));
        console.editor()->clear();
        QVERIFY(console.openScript(file) && !console.openScript(folder.filePath("gone.py")));
        QCOMPARE(console.editor()->text(), QString("if True:\n    pass"));
        QVERIFY(console.mayClose());
        console.prompt()->append(kxPythonPrompt::Output, "something");
        for (QAction* const action : console.findChildren<QAction*>())
            if (action->text() == "Clear Output")
                action->trigger();
        QVERIFY(console.prompt()->text().isEmpty());
        console.editor()->setCursorPosition(1, 8);
        QTest::keyClick(console.editor(), Qt::Key_Return); // goes on at the same depth, four spaces
        QCOMPARE(console.editor()->text(2), QString("    "));
    }
};

QTEST_MAIN(tst_kxPythonConsole)
#include "tst_kxPythonConsole.moc"
