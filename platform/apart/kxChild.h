#pragma once

#include <kxExport.h>

#include <QStringList>

#include <sys/types.h>
#include <vector>

/// A program of ours in a process of its own.
///
/// It gets the descriptors that it is given, as 3, 4 and so on, no other one, and of the environment only what says
/// where libraries are and in which letters. It ends with this object, and with this process (see endWithParent()).
class KX_API kxChild
{
public:
    kxChild() = default;
    ~kxChild() { kill(); }
    kxChild(const kxChild&) = delete;
    kxChild& operator=(const kxChild&) = delete;

    /// The first of its descriptors in the program.
    static constexpr int FirstDescriptor = 3;

    /// `program` lies beside the library of the platform, or is an absolute path. Empty, or why it can't be started.
    QString start(const QString& program, const QStringList& arguments, const std::vector<int>& descriptors);
    bool isRunning() const { return _process > 0; }
    /// Asks without waiting; true from the end on.
    bool hasEnded();
    /// Processor time that it has taken; 0 where it isn't running.
    double processorSeconds() const;
    /// At once. Nothing where it isn't running.
    void kill();
    /// True where it ended by itself with this code.
    bool hasEndedWith(int code) const;
    bool hasEndedBy(int signal) const;
    /// How it ended, as "it crashed (Segmentation fault)"; empty where it ended well.
    QString reason() const;

    /// In the program: it ends when the process does that started it, whose number was handed over.
    static void endWithParent(qint64 parent);

private:
    pid_t _process = 0;
    int _status = 0;      ///< as waitpid() gives it
    bool _isLost = false; ///< somebody else has taken the status
};
