#pragma once

#include <QAbstractTableModel>
#include <scene/kxSequenceStep.h>

#include <vector>

class kxSceneryStage;

/// The steps of one sequence: what each does, and with what. Edits are steps on the undo list.
class kxStepModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        DoesColumn,
        WithColumn,
        ColumnCount
    };
    /// The words in which a user reads a kind.
    static QString kindText(kxSequenceStep::Kind kind);
    static QString iconName(kxSequenceStep::Kind kind);

    /// `stage` outlives it.
    explicit kxStepModel(kxSceneryStage* stage, QObject* parent = nullptr);

    /// 0 for none.
    void setSequence(unsigned int nodeId);
    unsigned int sequence() const { return _sequenceId; }
    const std::vector<kxSequenceStep>& steps() const { return _steps; }

    /// After `row`, -1 in front of all. A new step names the first thing that there is.
    void insertStep(int row, kxSequenceStep::Kind kind);
    void removeStep(int row);
    /// False where there is no place for it there.
    bool moveStep(int row, int to);
    void setStep(int row, const kxSequenceStep& step);
    /// What a step of this kind can name.
    static QStringList candidates(kxSequenceStep::Kind kind);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& = {}) const override { return ColumnCount; }
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    /// `anew`: what the steps name may have gone.
    void sync(bool anew);
    void write(const std::vector<kxSequenceStep>& steps);
    QString withText(const kxSequenceStep& step) const;
    bool isMissing(const kxSequenceStep& step) const;
    /// Code that came with a file and that nobody has allowed.
    static bool isWaiting(const kxSequenceStep& step);
    static QString codeTip(const kxSequenceStep& step);

    kxSceneryStage* _stage;
    unsigned int _sequenceId = 0;
    std::vector<kxSequenceStep> _steps;
    int _current = -1; // where a run is
};
