#pragma once

#include <kxExport.h>

#include <QStringList>

/// What a process that reads strangers' files can still do. It is put on by that process, when its libraries are loaded
/// and before the first byte is read, and can't be taken off.
///
/// Then: nothing is opened for writing, no code is loaded, no process is started nor another one reached, no network,
/// no devices. Files are read in some places alone where the kernel can tell them apart (Landlock, Linux 5.13); else in
/// all.
namespace kxSandbox
{
struct Limits
{
    quint64 memory = 0;           ///< bytes by which the process may grow
    quint64 processorSeconds = 0; ///< from its start; SIGXCPU ends it then; 0 for no limit
    quint64 written = 0;          ///< bytes of a file
};

/// `readable`: files, and folders with all that lies below; nothing can be opened where there are none. Empty, or why
/// it can't be put on.
KX_API QString enter(const Limits& limits, const QStringList& readable);
/// Has Qt load what reads pictures, which can't be loaded afterwards.
KX_API void loadPictureReaders();
} // namespace kxSandbox
