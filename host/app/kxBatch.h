#pragma once

#include "kxCommandLine.h"

#include <functional>

class kxMainWindow;
class kxRenderJob;
class kxRenderSource;
struct kxScriptResult;

/// What the command line asks for: opens the scene, runs the scripts, goes to the frame, writes files; in this order.
///
/// One line of plain text on the standard output for each file written; what failed is in the log.
class kxBatch
{
public:
    kxBatch(kxMainWindow* window, const kxCommandLine& line) : _window(window), _line(line) {}

    /// The exit code: that of a script that left with one; 1 where a file failed, a script raised, or nothing was
    /// rendered that should have been. What comes after the first failure isn't done.
    int run();

private:
    int work();
    /// Where a window would offer to recover the scene that is opened.
    void tellOfLeftovers() const;
    int runScripts();
    /// A script that is no file.
    kxScriptResult runAs(const QString& name, const std::function<kxScriptResult()>& run);
    /// Says why a script failed.
    static int codeOf(const kxScriptResult& result, const QString& script);
    bool exportScene();
    bool render();
    bool renderPictures(kxRenderJob& job, const kxRenderSource& source);
    bool renderMovie(kxRenderJob& job, const kxRenderSource& source);
    bool takeScreenshot();
    static bool failed(const QString& reason);
    void wrote(const QString& file) const;

    kxMainWindow* _window;
    const kxCommandLine& _line;
};
