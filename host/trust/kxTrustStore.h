#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QSet>
#include <QString>

#include <functional>
#include <vector>

/// The code that may run for good, and that which never may, file by file, in one file beside the settings that all
/// runs of the application share.
///
/// What another run wrote counts at once. Where it can't be written, that is said, and this run goes on with what it
/// would have written.
class kxTrustStore
{
public:
    /// A file whose code was allowed or refused, or that was saved here.
    struct File
    {
        QString name;                 ///< its path; empty for all that was written here and isn't saved
        QDateTime time;               ///< of the last change
        std::vector<QByteArray> code; ///< digests, also of what stood in it before; the newest last
        bool isRefused = false;       ///< one name may have both

        bool is(const File& other) const { return name == other.name && isRefused == other.isRefused; }
    };

    bool contains(const QByteArray& code);
    bool isRefused(const QByteArray& code);
    /// True where the file of this name has all of this, and what isn't saved has none of it.
    bool holds(const QString& name, const std::vector<QByteArray>& code);
    /// The newest last.
    const std::vector<File>& files();

    /// What stood under the empty name is `name`'s from now on.
    void add(const QString& name, const std::vector<QByteArray>& code);
    void refuse(const QString& name, const std::vector<QByteArray>& code);
    void remove(const std::vector<File>& files);

private:
    void refresh();
    void read();
    void change(const std::function<void()>& edit);
    bool write();
    File& fileOf(const QString& name, bool isRefused);
    /// What one kind gets the other one loses.
    void put(const QString& name, bool isRefused, const std::vector<QByteArray>& code);

    QString _path;  // that was read
    QString _stamp; // as it lay there
    std::vector<File> _files;
    QSet<QByteArray> _code, _refused;
    bool _isWarned = false; // that nothing can be written
};
