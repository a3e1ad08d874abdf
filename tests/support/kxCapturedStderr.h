#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>
#include <unistd.h>

/// Takes the standard error stream for as long as it lives.
class kxCapturedStderr
{
public:
    kxCapturedStderr()
    {
        _file.open();
        std::fflush(stderr);
        _kept = dup(STDERR_FILENO);
        dup2(_file.handle(), STDERR_FILENO);
    }
    ~kxCapturedStderr()
    {
        std::fflush(stderr);
        dup2(_kept, STDERR_FILENO);
        close(_kept);
    }
    kxCapturedStderr(const kxCapturedStderr&) = delete;
    kxCapturedStderr& operator=(const kxCapturedStderr&) = delete;

    /// What was written so far.
    QByteArray text()
    {
        std::fflush(stderr);
        QFile written(_file.fileName());
        return written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
    }

private:
    QTemporaryFile _file;
    int _kept = -1;
};
