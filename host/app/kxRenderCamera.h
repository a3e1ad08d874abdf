#pragma once

#include <osg/FCPtr.h>
#include <view/kxViewCamera.h>

#include <QStringList>

#include <functional>

class kxMainWindow;

/// Through whose eyes pictures are taken; one rule for the command line, the dialog and scripts: the camera that was
/// named, else that of the film at the frame (see kxFilm), else the chosen one, else none.
struct kxRenderCamera
{
    osg::NodePtr named; ///< a camera or a viewpoint; null for none
    bool film = true;   ///< a clip's own cameras count
    typedef std::function<kxViewCamera(float aspect)> Chosen;
    Chosen chosen;

    /// The view of a window. Headless nobody looks through it, but a script may have turned it: else the camera that is
    /// kept with the scene counts, else the first camera of a scene of ours, or of a script's. Empty without one, and
    /// for models, whose cameras mean something else.
    static Chosen chosenIn(kxMainWindow& window, bool isHeadless);

    /// Fills in what is seen from now; false where nobody has chosen, and the whole scene is to be framed.
    bool find(float aspect, kxViewCamera& camera) const;

    /// The cameras that the scene shows, then the viewpoints.
    struct Entry
    {
        osg::NodePtr node;
        QString name;
    };
    static std::vector<Entry> all();
    /// The first of this name, made `named`. False, and a reason with the names there are, where there is none; an
    /// empty name is none and no failure.
    bool setName(const QString& name, QString& error);
};
