#pragma once

#include <QObject>
#include <QStringList>

/// The scenes that were opened and saved last, newest first, kept between two starts.
class kxRecentFiles : public QObject
{
    Q_OBJECT
public:
    static constexpr int Most = 10;

    explicit kxRecentFiles(QObject* parent = nullptr);

    /// Absolute paths.
    const QStringList& files() const { return _files; }
    /// Puts it first, under its absolute path, wherever it was; what is beyond `Most` goes.
    void add(const QString& file);
    void remove(const QString& file);
    void clear();
    /// From here on no file is taken up or forgotten: for runs without a user.
    void freeze() { _isFrozen = true; }

Q_SIGNALS:
    void changed();

private:
    void store();
    QStringList _files;
    bool _isFrozen = false;
};
