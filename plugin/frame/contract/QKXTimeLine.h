#pragma once

#include <kxExport.h>

#include <QColor>
#include <QMap>
#include <QWidget>

/// A ruler of frames with coloured key marks and a cursor that is dragged to scrub. Frames are whole numbers.
class KX_API QKXTimeLine : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QColor foregroundColor READ foregroundColor WRITE setForegroundColor)
    Q_PROPERTY(QColor backGradientColor1 READ backGradientColor1 WRITE setBackGradientColor1)
    Q_PROPERTY(QColor backGradientColor2 READ backGradientColor2 WRITE setBackGradientColor2)
public:
    explicit QKXTimeLine(QWidget* parent = nullptr);
    ~QKXTimeLine() override;

    int currentFrame() const { return _currentFrame; }
    int startFrame() const { return _startFrame; }
    int endFrame() const { return _endFrame; }
    /// Frames per second, for the tool tip's time; a rate that isn't above 0 shows no time.
    double fps() const { return _fps; }
    /// Marks by frame; a mark may lie between frames.
    const QMap<float, QColor>& keyFrames() const { return _keyFrames; }

    QColor foregroundColor() const { return _foregroundColor; }
    void setForegroundColor(const QColor& color);
    QColor backGradientColor1() const { return _backGradientColor1; }
    void setBackGradientColor1(const QColor& color);
    QColor backGradientColor2() const { return _backGradientColor2; }
    void setBackGradientColor2(const QColor& color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public Q_SLOTS:
    /// Any frame, also one outside the extent; currentFrameChanged() goes out where it differs.
    void setCurrentFrame(int frame);
    /// `force`: currentFrameChanged() goes out even where it is the frame already.
    void setCurrentFrame(int frame, bool force);
    /// An end at or before the start is shown as an extent of one frame; the values stay as they were set.
    void setStartFrame(int frame);
    void setEndFrame(int frame);
    void setFps(double fps);
    void setKeyFrames(const QMap<float, QColor>& keys);

Q_SIGNALS:
    void currentFrameChanged(int frame);
    /// The user has finished a change: the mouse was let go, or a key or the wheel stepped.
    void finishedSliding();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void stepBy(qint64 frames);

    int _currentFrame = 0;
    int _startFrame = 0;
    int _endFrame = 25;
    double _fps = 0;
    QMap<float, QColor> _keyFrames;
    QColor _foregroundColor = QColor(200, 200, 200);
    QColor _backGradientColor1 = QColor(45, 45, 45, 200);
    QColor _backGradientColor2 = QColor(45, 45, 45, 200);
    bool _sliding = false;
    int _hoverX = -1;   // device-independent pixels, -1 while the mouse is elsewhere
    int _wheelRest = 0; // eighths of a degree that make no whole notch yet
};
