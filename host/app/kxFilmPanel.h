#pragma once

#include "kxFilmPlayer.h"

#include <QWidget>
#include <edits/kxFilmMarkers.h>

class QAction;
class QComboBox;
class QHBoxLayout;
class QKXSpiner;
class QSlider;
class QTreeWidget;
class QTreeWidgetItem;

/// Plays the film: what is played, from where to where, and its markers.
class kxFilmPanel : public QWidget
{
    Q_OBJECT
public:
    /// `stage` outlives it.
    explicit kxFilmPanel(kxSceneryStage* stage, QWidget* parent = nullptr);
    ~kxFilmPanel() override;

    kxFilmPlayer& player() { return _player; }
    /// Plays, or stops; also a key of the view.
    QAction* playAction() const { return _play; }

Q_SIGNALS:
    void fullScreenAsked();

private:
    QAction* add(QHBoxLayout* row, const QString& text, const QString& icon, const QString& name,
                 void (kxFilmPanel::*slot)());
    QKXSpiner* addField(QHBoxLayout* row, const QString& text, const QString& name);
    void makeMarkers();
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// What was typed counts; keys are the dock's from now on.
    void leaveField();
    void fillSources();
    void chooseSource(int index);
    void fillMarkers();
    void update();
    void showFrame(double frame);
    void confirmFrame();
    void togglePlay();
    void toStart();
    void toEnd();
    void toPreviousMarker();
    void toNextMarker();
    void addMarker();
    void removeMarkers();
    void changeMarker(QTreeWidgetItem* row);
    void goToMarker(QTreeWidgetItem* row);

    struct Source
    {
        osg::UInt32 clipId;
        QString text;
        bool operator==(const Source& other) const { return clipId == other.clipId && text == other.text; }
    };
    kxFilmPlayer _player;
    std::vector<Source> _clips; // as they are listed below the timeline
    std::vector<kxFilmMarkers::Marker> _shownMarkers;
    QComboBox* _source;
    QSlider* _slider;
    QKXSpiner* _frame;
    QKXSpiner* _in;
    QKXSpiner* _out;
    QTreeWidget* _markers;
    QAction* _play;
    QAction* _loop;
    QAction* _removeMarkers = nullptr;
};
