#pragma once

#include <kxExport.h>

#include <QWidget>

/// The full range of frames with the detailed range in it, which is dragged by its ends and by its middle.
class KX_API QKXTimeLineRange : public QWidget
{
    Q_OBJECT
public:
    explicit QKXTimeLineRange(QWidget* parent = nullptr);
    ~QKXTimeLineRange() override;

    int startFrame() const { return _startFrame; }
    int endFrame() const { return _endFrame; }
    int rangeStartFrame() const { return _rangeStartFrame; }
    int rangeEndFrame() const { return _rangeEndFrame; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public Q_SLOTS:
    /// The full range. Values are taken as they come; a setter that changes nothing emits nothing.
    void setStartFrame(int frame);
    void setEndFrame(int frame);
    /// The detailed range; emits rangeStartChanged() or rangeEndChanged() where the value differs.
    void setRangeStartFrame(int frame);
    void setRangeEndFrame(int frame);

Q_SIGNALS:
    void rangeStartChanged(int frame);
    void rangeEndChanged(int frame);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    enum class Grip
    {
        None,
        Start,
        Middle,
        End
    };
    Grip gripAt(int x) const;
    void setHover(Grip grip);
    void setRange(int start, int end);

    int _startFrame = 0;
    int _endFrame = 50;
    int _rangeStartFrame = 0;
    int _rangeEndFrame = 25;
    Grip _grip = Grip::None;
    Grip _hover = Grip::None;
    int _pressX = 0;
    int _pressStart = 0;
    int _pressEnd = 0;
};
