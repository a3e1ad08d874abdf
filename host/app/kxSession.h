#pragma once

#include "kxLeftover.h"

#include <QObject>

class kxDocument;

/// This run of the application among others: the folder with its journal, held by a lock that ends with the process.
///
/// Ends the journal and removes the folder when it goes; so a folder without a living process is what a crash left.
class kxSession : public QObject
{
    Q_OBJECT
public:
    /// Where all runs have their folders.
    static QString folder();

    /// Starts the journal: in a folder, or in memory where `isKept` is false, or no folder can be made, which is said.
    explicit kxSession(bool isKept);
    ~kxSession() override;

    /// The journal says from now on of which scene it is, and what was changed last.
    void follow(const kxDocument& document);
    /// What `leftover` held is the open scene. It is gone where this run's journal has it. Else this gives false, and
    /// it is held until the scene is saved; where that never happens, it is offered again.
    bool takeOver(kxLeftover& leftover);

private:
    void start();
    /// A journal that ended early says nothing of what was saved or opened since.
    void startAnew(bool isOtherScene);
    void describe();

    const kxDocument* _document = nullptr; // not owned
    std::unique_ptr<kxLeftover> _own;      // null without a folder
    std::unique_ptr<kxLeftover> _taken;    // what the open scene came from, where nothing else has it
    QString _takenText;                    // what was changed last before the scene was recovered
    QDateTime _takenTime;
};
