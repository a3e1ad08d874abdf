#pragma once

#include "kxRenderCamera.h"
#include "kxRenderSource.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QKXSpiner;
class QLabel;
class QLineEdit;
class QPushButton;

/// Asks what to render and where to: one picture, or a range of frames as pictures or as a movie.
class kxRenderDialog : public QDialog
{
    Q_OBJECT
public:
    enum Mode
    {
        Image,
        Frames,
        Movie
    };
    /// `folder` empty: the one that was rendered to last.
    /// `isFilm`: the view shows clips through their own cameras, and so is the first proposal.
    kxRenderDialog(Mode mode, const QString& folder, const QString& name, bool isFilm, QWidget* parent);

    /// What the film is: an animation, null for the timeline, and its frames. Not for one picture.
    void propose(const osg::AnimNodePtr& clip, const kxRenderSource::Range& range);

    /// Of the pictures that were rendered last.
    static QSize lastSize();

    Mode mode() const { return _mode; }
    QString file() const;
    QSize size() const;
    kxRenderSource source() const;
    kxRenderSource::Range range() const;
    bool isTransparent() const;
    /// Without `chosen`.
    kxRenderCamera camera() const;

private:
    void choose();
    void check();
    /// Why there can be nothing of what is asked for; empty where there can.
    QString problem() const;
    /// What the user should know of what is asked for.
    QString note() const;
    void addFile(QFormLayout* form, const QString& folder, const QString& name);
    void addSize(QFormLayout* form);
    void addEnd(QFormLayout* form);
    void addRange(QFormLayout* form);
    void addClips(QFormLayout* form);
    void addCameras(QFormLayout* form, bool isFilm);
    void proposeWholeRange();
    void setRange(const kxRenderSource::Range& range);

    Mode _mode;
    QLineEdit* _file;
    QKXSpiner* _width = nullptr;
    QKXSpiner* _height = nullptr;
    std::vector<kxRenderSource::Clip> _clips;
    QComboBox* _source = nullptr; // where there are clips: the timeline, then these
    QKXSpiner* _first = nullptr;  // of a range
    QKXSpiner* _last = nullptr;
    std::vector<kxRenderCamera::Entry> _cameras;
    QComboBox* _camera = nullptr; // the film, the view, then these
    QCheckBox* _transparent;
    QLabel* _note;
    QLabel* _problem;
    QPushButton* _render = nullptr;
};
