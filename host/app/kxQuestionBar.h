#pragma once

#include <QFrame>

#include <functional>

class QHBoxLayout;
class QLabel;
class QPushButton;

/// A question above the view that waits for its answer while the work goes on.
class kxQuestionBar : public QFrame
{
    Q_OBJECT
public:
    /// Stands above `view`, which stands in a column. Names are made of `name`, as "_nameBar".
    kxQuestionBar(const QString& name, QWidget* view);

    /// Stays away, whatever is asked.
    void holdBack(bool isHeld);

protected:
    /// An answer, from left to right. The keys go to the view after it.
    QPushButton* addAnswer(const QString& text, const char* name, const QString& tip,
                           const std::function<void()>& work);
    QHBoxLayout* answers() { return _answers; }
    /// Away where `text` is empty.
    void ask(const QString& text);

private:
    QWidget* _view;
    QLabel* _text;
    QHBoxLayout* _answers;
    bool _isHeld = false;
};
