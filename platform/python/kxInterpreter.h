#pragma once

#include <kxExport.h>

#include <functional>
#include <string>
#include <vector>

/// What became of a piece of script.
struct kxScriptResult
{
    bool ok = true;      ///< nothing was raised, or the script left by SystemExit with code 0
    bool exited = false; ///< the script left by SystemExit
    int exitCode = 0;    ///< of SystemExit; 1 where another exception came out
    std::string trace;   ///< UTF-8, ends with a line break; empty unless an exception other than SystemExit came out
};

/// The application's one Python interpreter. Main thread only, which holds the interpreter's lock all the time, but for
/// what a script calls that lets go of it, and that may turn the event loop: each function here takes the lock.
///
/// All scripts share one namespace, that of `__main__`. An error ends the script, never the application.
class KX_API kxInterpreter
{
public:
    /// Holds the interpreter's lock while it lives, for code that calls Python itself. One may stand in another's life;
    /// does nothing before Python starts.
    class KX_API Lock
    {
    public:
        Lock();
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        int _state; // of Python's, -1 for none
    };

    enum Stream
    {
        Output,
        Error
    };
    /// Gets UTF-8 as scripts write it, in pieces of any length, and the traces that go to the log. Always called on the
    /// main thread.
    typedef std::function<void(Stream stream, const std::string& text)> Listener;
    /// The code of a script that BrokenPipeError ended because nobody reads the process's streams any more: what a
    /// shell says of a program that SIGPIPE ended.
    static constexpr int Unread = 141;

    /// Starts Python and runs the registered script modules through both levels. Later calls do nothing. False, with
    /// the reason in the log, where Python can't start. It is never shut down.
    static bool start();
    static bool isRunning();
    /// Lets modules be imported that entered the list of built-in modules after the start; before it this does nothing.
    static void adoptBuiltInModules();

    /// Runs a text. A trace goes to the log too. `name` stands for the text in traces.
    static kxScriptResult run(const std::string& text, const std::string& name = "<script>");
    /// Runs a file, with its path as `__file__` and `sys.argv[0]` and its folder on the module path; "-" is the
    /// standard input.
    static kxScriptResult runFile(const std::string& path);
    /// Runs a text with "-c" as `sys.argv[0]`.
    static kxScriptResult runCommand(const std::string& text);
    /// Runs what is typed in the terminal until its end, and keeps the lines in the file `history`. Where the standard
    /// input is no terminal, it is a script.
    static kxScriptResult runPrompt(const std::string& history);
    /// For runFile(), runCommand() and runPrompt(): what follows the name in `sys.argv`.
    static void setArguments(const std::vector<std::string>& arguments);
    /// Runs what was typed at a prompt; values of expressions are shown. Where `text` is the beginning of a statement,
    /// `*needsMore` becomes true and nothing runs. A trace is in the result only: the prompt shows it.
    static kxScriptResult runInteractive(const std::string& text, bool* needsMore);
    /// The names in the script namespace that the dotted name `text` may go on as.
    static std::vector<std::string> complete(const std::string& text);

    /// From here on interrupt() does what it says; `taken` is called when a script gets KeyboardInterrupt. This takes
    /// the handler of SIGINT.
    static void heedInterrupts(void (*taken)());
    /// For handlers of signals: the script that runs gets KeyboardInterrupt for SIGINT, SystemExit with 128 + `signal`
    /// for others, when Python goes on. Does nothing where none runs.
    static void interrupt(int signal);
    /// From here on scripts get an OSError where the process's own streams don't take what they write. Else that counts
    /// for nothing, since a console shows it.
    static void needStreams();
    /// `listener` gets what scripts write, beside the process's own streams, until it is removed by the number that
    /// this gives.
    static int addListener(Listener listener);
    static void removeListener(int number);
};
