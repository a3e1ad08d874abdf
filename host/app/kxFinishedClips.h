#pragma once

#include <QObject>
#include <QPointer>
#include <kxPreferences.h>
#include <osg/AnimNode.h>

#include <set>

class QComboBox;
class QWidget;

/// What becomes of the timeline's blocks that the animation wizard leaves on: its clip plays them, and they drive their
/// objects at the timeline's frames too. They go to rest, stay, or the user is asked, once the wizard has finished.
class kxFinishedClips : public QObject, public kxPreferences
{
    Q_OBJECT
public:
    enum Answer
    {
        Ask,
        RestAsItBegins,
        Leave,
        RestAsItEnds,
        RestAsTheyStand
    };
    explicit kxFinishedClips(QWidget* window);
    ~kxFinishedClips() override;

    /// Nobody is there who could answer: what would be asked stays.
    void setUnattended(bool unattended) { _isUnattended = unattended; }

    /// Hears when a wizard opens.
    bool eventFilter(QObject* watched, QEvent* event) override;

    void preferencesSetDefaults(bool overwrite) override;
    void preferencesApply() override {}
    void preferencesToGUI() override;
    void preferencesFromGUI() override;

private:
    void finished();
    void ask(unsigned int clipId);
    /// Does nothing where the answer is no rest.
    static void rest(const osg::AnimNodePtr& clip, Answer answer);
    static Answer answer();

    QWidget* _window;
    QPointer<QWidget> _page; // owned, unless a dialog that showed it has taken it along
    QComboBox* _choice = nullptr;
    std::set<unsigned int> _before; // the clips when the wizard opened
    bool _isUnattended = true;
};
