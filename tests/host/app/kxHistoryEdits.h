#pragma once

#include <app/kxCommandLine.h>
#include <kernel/kxHostHooks.h>
#include <osg/SceneCores.h>

#include <QDialog>
#include <QList>
#include <QMainWindow>
#include <QRandomGenerator>
#include <QTimer>
#include <QWizard>

#include <functional>
#include <memory>
#include <vector>

class kxApplication;
class QGraphicsScene;
class QTreeWidget;
class QTreeWidgetItem;
struct kxPictureView;

/// Edits of all kinds as the user makes them in the application with its tools.
namespace kxHistoryEdits
{
/// The application with its docks; dialogs that ask are answered.
class Application
{
public:
    Application();
    ~Application();
    /// A scene of three objects with blocks, clips and a sequence.
    static bool makeScene();

    std::function<QDialog::DialogCode()> answer;

private:
    kxCommandLine _line;
    std::unique_ptr<kxApplication> _application;
    std::unique_ptr<kxPictureView> _picture;
    QTimer _dialogs;
};

template <class T>
T* widget(const char* name)
{
    return kxHostHooks::the().mainWindow()->findChild<T*>(QString::fromLatin1(name));
}

void turns();
void invoke(QObject* object, const char* slot);
QList<QTreeWidgetItem*> rows(QTreeWidget* tree);

/// Chooses where an edit leaves a choice.
struct Chance
{
    QRandomGenerator random;
    int below(int count) { return int(random.bounded(std::max(1, count))); }
};

struct Edit
{
    const char* name;
    /// False where there is nothing to edit.
    std::function<bool(Chance&)> run;
    /// Makes that there is.
    std::function<bool(Chance&)> prepare = [](Chance&) { return true; };
};

/// Each one entry of the history.
std::vector<Edit> ofOneEntry();
/// And those that change nothing that a file holds, or not by one entry; saves go into `folder`.
std::vector<Edit> ofAll(const QString& folder);

/// A bar of the shown clip by the middle of its node, in pixels of the view; the drag goes by whole frames. One that
/// was dropped on another still glides back then. `held` is called before the mouse is released.
bool dropBar(
    Chance& chance, double grip, int frames, int which = -1, const std::function<void()>& held = [] {});
bool barsRest(const QGraphicsScene* scene);
/// A line as at the prompt; `n` in it is any number.
std::function<bool(Chance&)> line(const char* text);
/// An object at two places; the wizard is left open on its second page.
bool captureOf(const osg::NodePtr& object, Chance& chance);
bool leaveWizard(QWizard::WizardButton button);
} // namespace kxHistoryEdits
